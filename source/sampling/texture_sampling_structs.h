// What the description of a texture means: types of elements, formats of pixels, bytes.
#pragma once

#include <norvi/texture_records.h>

namespace norvi {

/// The type of one channel as it is stored on the processor.
Result<DataType> GetElementType(TextureFormat format) noexcept;

/// The id of the framework's pixel format for this storage. A combination that has none is an
/// illegal-argument error.
Result<String> GetPixelFormatId(TextureFormat format, UInt32 numChannels) noexcept;

/// The format that a card stores a texture in, whose support for reading and writing 16-bit and 8-bit formats
/// may be missing: the wider one of the same kind where it needs one, else `format` itself.
TextureFormat PromoteTextureFormat(TextureFormat format, Bool readWrite16bit, Bool readWrite8bit);

} // namespace norvi
