#include "formula_error.h"

#include <algorithm>

#include <fmt/format.h>

#include <norvi/host/near_name.h>

namespace norvi {

namespace {

bool IsContinuation(char c) {
    return (static_cast<UChar>(c) & 0xC0) == 0x80;
}

} // namespace

Failure FormulaError(std::string_view formula, size_t position, std::string_view reason, SourceLocation at) {
    return IllegalArgumentError(
        fmt::format("Formula error at column {}: {}", GetColumn(formula, position), reason), at);
}

Int GetColumn(std::string_view formula, size_t position) {
    const std::string_view before = formula.substr(0, position);
    return static_cast<Int>(before.size()) - std::count_if(before.begin(), before.end(), IsContinuation) + 1;
}

String Quote(std::string_view text) {
    constexpr size_t LongestShown = 40;
    String quoted = "\"";
    for (const char c : text.substr(0, LongestShown)) {
        // What is not plain ASCII may not even be valid UTF-8, and a message must be.
        if (c >= ' ' && c <= '~')
            quoted += c;
        else
            quoted += fmt::format("\\x{:02X}", static_cast<UChar>(c));
    }
    return quoted + (text.size() > LongestShown ? "...\"" : "\"");
}

String DidYouMean(std::string_view name, const std::vector<std::string_view>& candidates) {
    const String suggestion = SuggestNearName(name, candidates);
    return suggestion.empty() ? suggestion : fmt::format("; did you mean \"{}\"?", suggestion);
}

} // namespace norvi
