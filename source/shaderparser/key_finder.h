// A fast answer to the question that nearly every line answers with no: does any macro stand in it?
#pragma once

#include <array>

#include <norvi/host/types.h>

namespace norvi {

/// Looks for many keys at once. A window as long as the shortest key moves over the text; the two characters
/// at its end tell how far it can move without passing a key by (the method of Wu and Manber, 1994), so that
/// most characters are not even looked at.
class KeyFinder {
  public:
    /// @param keys of two characters or more; must outlive the finder.
    explicit KeyFinder(BaseArray<std::string_view> keys);

    bool FindsAny(std::string_view text) const {
        for (size_t end = window_; end <= text.size();) {
            const UChar shift = shifts_[Hash(text[end - 2], text[end - 1])];
            if (shift == 0 && IsKeyAt(text.substr(end - window_))) [[unlikely]]
                return true;
            end += shift + size_t{shift == 0};
        }
        return false;
    }

  private:
    static constexpr size_t NoKeys = size_t{1} << 62;

    /// Tells all pairs of letters and underscores apart.
    static size_t Hash(char first, char second) {
        return (static_cast<UChar>(first) & 63u) << 6 | (static_cast<UChar>(second) & 63u);
    }
    bool IsKeyAt(std::string_view text) const;

    BaseArray<std::string_view> keys_;
    size_t window_ = NoKeys;
    std::array<UChar, 4096> shifts_;
};

} // namespace norvi
