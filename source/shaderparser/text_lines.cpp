#include "text_lines.h"

#include <algorithm>
#include <cstring>

namespace norvi {

namespace {

/// Length of the UTF-8 character that `text` starts with; 0 if it starts with none. Overlong forms,
/// surrogates and numbers above U+10FFFF are no characters.
size_t CharacterLength(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<UChar>(text[i]); };
    const UChar first = byte(0);
    if (first < 0x80)
        return 1;
    const size_t length = first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
    if (length == 0 || text.size() < length)
        return 0;
    for (size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    const UChar least = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const UChar most = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    return byte(1) >= least && byte(1) <= most ? length : 0;
}

/// Length of the part at the front that is ASCII, found eight bytes at a time.
size_t AsciiLength(std::string_view text) {
    size_t length = 0;
    for (UInt64 word; length + sizeof word <= text.size(); length += sizeof word) {
        std::memcpy(&word, text.data() + length, sizeof word);
        if (word & 0x8080808080808080u)
            break;
    }
    return length;
}

/// Length of the part at the front that is well-formed.
size_t WellFormedLength(std::string_view text) {
    size_t position = 0;
    while (position < text.size()) {
        position += AsciiLength(text.substr(position));
        for (const size_t end = std::min(position + 8, text.size()); position < end;) {
            const size_t length = CharacterLength(text.substr(position));
            if (length == 0)
                return position;
            position += length;
        }
    }
    return position;
}

} // namespace

std::string_view Trim(std::string_view text) {
    while (!text.empty() && IsSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

Words SplitAt(std::string_view text, std::string_view separator) {
    Words parts;
    for (size_t found = text.find(separator); found != text.npos && parts.Append(text.substr(0, found));
         found = text.find(separator))
        text.remove_prefix(found + separator.size());
    parts.Append(text);
    return parts;
}

std::string_view Without(std::string_view text, size_t front, size_t back) {
    return front + back >= text.size() ? std::string_view() : text.substr(front, text.size() - front - back);
}

std::string_view Between(std::string_view text, size_t begin, size_t end) {
    return begin < std::min(end, text.size()) ? text.substr(begin, end - begin) : std::string_view();
}

DecodedText::DecodedText(std::string_view bytes) : text_(bytes) {
    static constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF", replacement = "\xEF\xBF\xBD";
    if (text_.starts_with(byteOrderMark))
        text_.remove_prefix(byteOrderMark.size());
    size_t good = WellFormedLength(text_);
    if (good == text_.size())
        return;
    for (std::string_view rest = text_; !rest.empty(); good = WellFormedLength(rest)) {
        repaired_.append(rest.substr(0, good));
        if (good < rest.size())
            repaired_.append(replacement);
        rest.remove_prefix(std::min(good + 1, rest.size()));
    }
    text_ = repaired_;
}

LineReader::LineReader(std::string_view text) {
    const std::string_view trimmed = Trim(text);
    if (!trimmed.empty())
        leadingLines_ = std::count(text.data(), trimmed.data(), '\n');
    next_ = trimmed.data() ? trimmed.data() : "";
    end_ = next_ + trimmed.size();
}

} // namespace norvi
