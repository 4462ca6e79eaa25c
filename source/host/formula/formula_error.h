// Errors of formulas.
#pragma once

#include <norvi/host/formula.h>

namespace norvi {

/// "Formula error at column @: @" for the byte at `position` of `formula`.
Failure FormulaError(std::string_view formula, size_t position, std::string_view reason,
                     SourceLocation at = SourceLocation::Current());

/// The column, in characters from 1, of the byte at `position`.
Int GetColumn(std::string_view formula, size_t position);

/// A piece of a formula in quotes for a message: shortened, and with a code in place of what would not show.
String Quote(std::string_view text);

/// "; did you mean "@"?" with the candidate that is nearest to `name`, or nothing if none is near.
String DidYouMean(std::string_view name, const std::vector<std::string_view>& candidates);

} // namespace norvi
