// Numbers that fit another numeric type exactly.
#pragma once

#include <norvi/host/data.h>

namespace norvi {

/// Is `type` one of the integer and floating point types that ConvertNumberExactly knows.
Bool IsNumber(DataType type);

/// The number at `value` as a value of `target`, if that has exactly the same value; else nothing. Both types
/// must be numbers. NaN fits every floating point type.
std::optional<Data> ConvertNumberExactly(DataType source, const void* value, DataType target);

} // namespace norvi
