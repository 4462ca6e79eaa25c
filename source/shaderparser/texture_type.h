// Names of texture types such as TextureSampler_2D_RGBA_F32_LINEAR.
#pragma once

#include <optional>

#include "shader_pieces.h"

namespace norvi {

/// The texture that a type name describes, without name and access. Nothing for a name that is malformed, has
/// an unknown dimension or filter. Channels and format that do not go together are an illegal-argument error.
Result<std::optional<KernelTextureEntry>> ReadTextureType(std::string_view typeName);

/// What a pixel format consists of.
struct PixelFormatParts {
    UInt32 channelCount = 0; ///< 1 to 4
    std::string_view format; ///< at the end of ids: "f32", "f16", "u8", "u16", "u32" or "s32"
};

/// The parts of a format that GetPixelFormat gives; none for any other type.
PixelFormatParts GetPixelFormatParts(const DataType& pixelFormat);

/// The framework's pixel format for 1 to 4 channels in the format "F32", "F16", "U8", "U16", "U32" or "S32";
/// no type for any other pair.
DataType GetPixelFormat(size_t channelCount, std::string_view format);

} // namespace norvi
