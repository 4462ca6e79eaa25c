// The first contents of a buffer: zeros, numbers by a rule, an array or a picture.
#pragma once

#include <norvi/host/array.h>

#include "norvi/run_plan.h"

namespace norvi {

struct BufferContents {
    Int count = 0;
    Int margin = 0;       ///< elements behind the last one, filled with MarginByte
    BaseArray<Int> shape; ///< of the elements, slowest dimension first
    UntypedArray elements;
};

/// What a margin holds: as a number of any type nothing that a kernel is likely to write.
inline constexpr std::byte MarginByte{0xc5};

/// Makes the contents, with a margin for `invocations` that index the buffer without looking at its size.
/// Errors quote the argument.
Result<BufferContents> LoadBufferContents(const PlannedBuffer& buffer, Int invocations);

} // namespace norvi
