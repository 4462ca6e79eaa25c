#include <norvi/host/dictionary.h>

namespace norvi {

void DataDictionary::Set(Data key, Data value) {
    Contents& contents = MakeWritable();
    if (const auto found = contents.positions.find(key); found != contents.positions.end()) {
        contents.entries[found->second].value = std::move(value);
        return;
    }
    // Room is made before the index learns of the entry, so that a failed allocation leaves both as they
    // were.
    if (contents.entries.size() == contents.entries.capacity())
        contents.entries.reserve(2 * contents.entries.size() + 4);
    contents.positions.emplace(key, contents.entries.size());
    contents.entries.push_back({std::move(key), std::move(value)});
}

void DataDictionary::Erase(const Data& key) {
    if (!Contains(key))
        return;
    Contents& contents = MakeWritable();
    const auto found = contents.positions.find(key);
    const std::size_t position = found->second;
    contents.positions.erase(found);
    contents.entries.erase(contents.entries.begin() + static_cast<std::ptrdiff_t>(position));
    for (auto& [otherKey, otherPosition] : contents.positions)
        if (otherPosition > position)
            --otherPosition;
}

const Data* DataDictionary::Find(const Data& key) const {
    if (!contents_)
        return nullptr;
    const auto found = contents_->positions.find(key);
    return found == contents_->positions.end() ? nullptr : &contents_->entries[found->second].value;
}

Result<Data> DataDictionary::Get(const Data& key, SourceLocation at) const {
    if (const Data* value = Find(key))
        return *value;
    return MissingEntry(key, at);
}

Failure DataDictionary::MissingEntry(const Data& key, SourceLocation at) {
    return NotFoundError(Format("no entry for key '@'", key), at);
}

DataDictionary::Contents& DataDictionary::MakeWritable() {
    if (!contents_)
        contents_ = std::make_shared<Contents>();
    else if (contents_.use_count() > 1)
        contents_ = std::make_shared<Contents>(*contents_);
    return *contents_;
}

} // namespace norvi
