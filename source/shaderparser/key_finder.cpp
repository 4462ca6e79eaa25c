#include "key_finder.h"

#include <algorithm>

namespace norvi {

KeyFinder::KeyFinder(BaseArray<std::string_view> keys) : keys_(std::move(keys)) {
    for (std::string_view key : keys_)
        window_ = std::min(window_, key.size());
    shifts_.fill(static_cast<UChar>(std::min<size_t>(window_ - 1, 255)));
    for (std::string_view key : keys_)
        for (size_t i = 0; i + 1 < window_; ++i) {
            UChar& shift = shifts_[Hash(key[i], key[i + 1])];
            shift = std::min(shift, static_cast<UChar>(std::min<size_t>(window_ - 2 - i, 255)));
        }
}

bool KeyFinder::IsKeyAt(std::string_view text) const {
    return std::any_of(keys_.begin(), keys_.end(), [&](std::string_view key) {
        return text.front() == key.front() && text.starts_with(key);
    });
}

} // namespace norvi
