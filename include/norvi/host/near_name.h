// Suggestions for misspelt names, for error messages of everything that looks a name up.
#pragma once

#include <norvi/host/types.h>

namespace norvi {

/// The candidate that was probably meant by `name`: the one with the fewest edits (a character inserted,
/// removed or replaced, or two neighbours swapped; difference of ASCII case counts nothing), the first of
/// them where several are equally near. Empty if none is near enough: one edit for names of 2 to 5 bytes,
/// two for 6 to 8, three for more; names of one byte, and of more than 64, are matched by case alone.
///
/// Cost: the length of `name` times the length of the candidate, for each candidate of nearly that length.
String SuggestNearName(std::string_view name, const std::vector<std::string_view>& candidates);

} // namespace norvi
