#include "norvi/argument_text.h"

#include <charconv>

#include <norvi/host/near_name.h>
#include <norvi/host/text.h>

namespace norvi {

namespace {

template <typename T>
std::optional<T> ParseWhole(std::string_view text) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return value;
}

} // namespace

std::optional<Int> ParseInt(std::string_view text) {
    return ParseWhole<Int>(text);
}

std::optional<Number> ParseNumber(std::string_view text) {
    return ParseWhole<Number>(text);
}

BaseArray<String> SplitText(std::string_view text, char separator) {
    BaseArray<String> parts;
    for (std::size_t end = text.find(separator); end != text.npos; end = text.find(separator)) {
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.emplace_back(text);
    return parts;
}

Result<Assignment> ParseAssignment(const char* option, const String& text) {
    const auto sign = text.find('=');
    if (sign == text.npos || sign == 0 || sign + 1 == text.size())
        return IllegalArgumentError(Format("@ '@' is not NAME=VALUE", option, text));
    return Assignment{text.substr(0, sign), text.substr(sign + 1)};
}

Failure ArgumentError(const char* option, const String& text, const String& reason, SourceLocation at) {
    return IllegalArgumentError(Format("@ '@': @", option, text, reason), at);
}

String SuggestText(const String& name, const BaseArray<String>& candidates) {
    if (candidates.empty())
        return {};
    const String near = SuggestNearName(name, {candidates.begin(), candidates.end()});
    if (!near.empty())
        return Format("; did you mean '@'?", near);
    String text = "; there is ";
    for (std::size_t i = 0; i < candidates.size(); ++i)
        text += (i ? ", " : "") + candidates[i];
    return text;
}

} // namespace norvi
