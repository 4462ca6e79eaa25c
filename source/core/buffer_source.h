// Values that a buffer can be filled from.
#pragma once

#include <norvi/host/array.h>

namespace norvi {

/// Memory of elements inside a Data, which must outlive it.
struct BufferSource {
    const void* first = nullptr;
    Int count = 0;
    DataType elementType; ///< empty for a null reference
    Bool isStorable =
        true; ///< false: a reference to something else than an array, which is passed over quietly

    Int GetByteCount() const { return elementType ? count * elementType->size : 0; }
};

/// The elements of a buffer are copied by their bytes: a type that this does not suit is an illegal argument.
Result<void> CheckBufferElement(DataType elementType);

/// Reads a BaseArray, a Block (whose stride is not used), an Array or a reference to one. Anything else is an
/// illegal argument.
Result<BufferSource> ReadBufferSource(const Data& data);

} // namespace norvi
