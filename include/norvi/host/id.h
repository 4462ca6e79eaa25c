// Names that programs, classes and kernels are known by.
#pragma once

#include <functional>

#include <norvi/host/result.h>

namespace norvi {

/// A name with its hash: the key of classes and registries, and of the shading languages.
class Id {
  public:
    Id() = default;
    Id(std::string_view text) : text_(text), hash_(Hash(text)) {}
    Id(const char* text) : Id(std::string_view(text)) {}
    Id(const String& text) : Id(std::string_view(text)) {}

    const String& ToString() const { return text_; }
    Bool IsEmpty() const { return text_.empty(); }
    /// 48 bits: polynomial hash of the bytes with factor 31 below bit 44, the length above.
    UInt64 GetHashCode() const { return hash_; }

    static UInt64 Hash(std::string_view text);

    bool operator==(const Id& other) const { return hash_ == other.hash_ && text_ == other.text_; }

  private:
    String text_;
    UInt64 hash_ = 0;
};

/// An interned name: two InternedIds are equal if they are the same entry of one process-wide table. As cheap
/// to copy and compare as a pointer. Creating one is thread-safe; entries live as long as the process.
class InternedId {
  public:
    /// The empty id.
    constexpr InternedId() = default;
    /// Interns `text`; the empty text gives the empty id, and so does a lack of memory (use Create to tell
    /// them apart).
    InternedId(std::string_view text) noexcept;
    InternedId(const char* text) noexcept : InternedId(std::string_view(text)) {}
    InternedId(const String& text) noexcept : InternedId(std::string_view(text)) {}

    static Result<InternedId> Create(std::string_view text) noexcept;

    const String& ToString() const;
    Bool IsEmpty() const { return text_ == nullptr; }
    std::size_t GetHashCode() const { return std::hash<const void*>()(text_); }

    bool operator==(const InternedId&) const = default;

  private:
    const String* text_ = nullptr;
};

} // namespace norvi

template <>
struct std::hash<norvi::Id> {
    std::size_t operator()(const norvi::Id& id) const noexcept { return id.GetHashCode(); }
};

template <>
struct std::hash<norvi::InternedId> {
    std::size_t operator()(const norvi::InternedId& id) const noexcept { return id.GetHashCode(); }
};
