// Arrays in .npy files, the format in which numpy saves one array: a header in text, then the bare elements.
// (Format: numpy.lib.format, versions 1.0 and 2.0.)
#pragma once

#include "norvi/element_type.h"

namespace norvi {

struct NpyArray {
    const ScalarType* scalar = nullptr;
    BaseArray<Int> shape; ///< slowest dimension first; none for a single value
    BaseArray<std::byte> bytes;

    Int GetCount() const;
};

/// What is read: little-endian numbers of the types in ScalarTypes, slowest dimension first ("C order").
/// Anything else, a header that is no header, and a file whose length is not what the header says, are
/// illegal-argument errors that name the file and the reason. No more memory is taken than the file is long.
Result<NpyArray> ReadNpy(const String& path) noexcept;
/// As ReadNpy, from the bytes of a file. Errors do not name a file.
Result<NpyArray> ParseNpy(std::string_view bytes) noexcept;

/// Writes a file of version 1.0, to a temporary file first, so that a failure leaves what was there before.
/// @param elements as many as the shape holds
Result<void> WriteNpy(const String& path, const ScalarType& scalar, const BaseArray<Int>& shape,
                      const void* elements) noexcept;

} // namespace norvi
