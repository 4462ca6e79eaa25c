// Pieces of command line arguments: numbers, NAME=VALUE, and what an error about a name suggests.
#pragma once

#include <optional>

#include <norvi/host/result.h>

namespace norvi {

/// Numbers of arguments and of element conversions: wide enough for every 64-bit integer.
using Number = long double;

/// The whole text as a decimal integer; nothing for any other text and for one outside 64 bits.
std::optional<Int> ParseInt(std::string_view text);
/// The whole text as a number, "inf" and "nan" included; nothing for any other text.
std::optional<Number> ParseNumber(std::string_view text);

/// The parts between separators; an empty text is one empty part.
BaseArray<String> SplitText(std::string_view text, char separator);

struct Assignment {
    String name;
    String value;
};

/// Takes "NAME=VALUE" apart at the first '='. Neither part may be empty.
/// @param option for the error: "--fill 'x' is not NAME=VALUE".
Result<Assignment> ParseAssignment(const char* option, const String& text);

/// An error of an argument: "--grid '0': the reason".
Failure ArgumentError(const char* option, const String& text, const String& reason,
                      SourceLocation at = SourceLocation::Current());

/// The end of a sentence about an unknown name: "; did you mean 'feed'?", or, when no candidate is near,
/// "; there is u, v, feed", or nothing without candidates.
String SuggestText(const String& name, const BaseArray<String>& candidates);

} // namespace norvi
