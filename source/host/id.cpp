#include <norvi/host/id.h>

#include <mutex>
#include <unordered_set>

namespace norvi {

namespace {

// Entries are nodes, so their addresses hold while the table grows. Never destroyed: ids in static storage
// may be read after it would have been.
struct InternTable {
    std::mutex mutex;
    std::unordered_set<String> texts;
};

InternTable& Table() {
    static auto* table = new InternTable;
    return *table;
}

const String* Intern(std::string_view text) {
    InternTable& table = Table();
    std::lock_guard lock(table.mutex);
    return &*table.texts.emplace(text).first;
}

} // namespace

UInt64 Id::Hash(std::string_view text) {
    constexpr UInt64 lowerBits = (UInt64{1} << 44) - 1;
    UInt64 hash = 0;
    for (char c : text)
        hash = hash * 31 + static_cast<UChar>(c);
    return (hash & lowerBits) | ((text.size() & 15) << 44);
}

InternedId::InternedId(std::string_view text) noexcept {
    if (auto created = Create(text))
        *this = *created;
}

Result<InternedId> InternedId::Create(std::string_view text) noexcept {
    return CatchOutOfMemory([&]() -> Result<InternedId> {
        InternedId id;
        if (!text.empty())
            id.text_ = Intern(text);
        return id;
    });
}

const String& InternedId::ToString() const {
    static const String empty;
    return text_ ? *text_ : empty;
}

} // namespace norvi
