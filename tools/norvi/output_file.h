// Results of a run as files.
#pragma once

#include <norvi/host/array.h>

#include "norvi/run_arguments.h"

namespace norvi {

/// What can be found out before the result is there: that the folder exists and can be written to, and that a
/// picture of `count` elements of `type` with `shape` has the size that was asked for. Errors quote the
/// argument's file.
Result<void> CheckOutput(const OutputArgument& output, DataType type, const BaseArray<Int>& shape);

/// Writes elements of `type` to the file of step `step`. An array is of shape `shape`, with one more
/// dimension for the components of vectors and matrices, and for the bytes of structs.
Result<void> WriteOutput(const OutputArgument& output, Int step, DataType type, const BaseArray<Int>& shape,
                         const void* elements);

} // namespace norvi
