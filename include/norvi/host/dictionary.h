// A copy-on-write dictionary from Data to Data.
#pragma once

#include <unordered_map>

#include <norvi/host/data.h>

namespace norvi {

/// Maps keys to values and keeps the order of insertion. Copying shares the contents; a writer first makes
/// its own copy if they are shared. Not synchronised. Allocation failures throw std::bad_alloc (see Data).
class DataDictionary {
  public:
    struct Entry {
        Data key;
        Data value;
    };

    Bool IsEmpty() const { return !contents_ || contents_->entries.empty(); }
    Int GetCount() const { return contents_ ? static_cast<Int>(contents_->entries.size()) : 0; }

    /// Enters `value` under `key`, replacing what stands there.
    void Set(Data key, Data value);
    /// Removes the entry of `key`, if there is one.
    void Erase(const Data& key);
    /// Removes everything. Others that share the contents keep theirs.
    void Clear() { contents_.reset(); }

    /// The value of `key`, or null. The pointer holds until the next change.
    const Data* Find(const Data& key) const;
    /// The value of `key`, or a not-found error that names the key.
    Result<Data> Get(const Data& key, SourceLocation at = SourceLocation::Current()) const;
    /// As Get, for a value that must be a T: another type is an illegal-state error.
    template <typename T>
    Result<T> GetAs(const Data& key, SourceLocation at = SourceLocation::Current()) const {
        if (const Data* value = Find(key))
            return value->GetAs<T>(at);
        return MissingEntry(key, at);
    }
    Bool Contains(const Data& key) const { return Find(key) != nullptr; }

    const Entry* begin() const { return contents_ ? contents_->entries.data() : nullptr; }
    const Entry* end() const { return begin() + GetCount(); }

  private:
    struct Contents {
        BaseArray<Entry> entries;
        std::unordered_map<Data, std::size_t> positions;
    };

    static Failure MissingEntry(const Data& key, SourceLocation at);
    Contents& MakeWritable();

    std::shared_ptr<Contents> contents_;
};

} // namespace norvi
