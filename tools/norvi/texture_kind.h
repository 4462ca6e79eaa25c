// The kinds of textures that kernels can have as parameters.
#pragma once

#include <norvi/texture_records.h>

namespace norvi {

struct TextureKind {
    const char* name; ///< as in the kernel's text, behind "TextureSampler_": "2D_RGBA_F32_LINEAR"
    DataType type;    ///< of the parameter
    Int dimensions;
    Int channels;
    TextureFormat format;
    Bool isLinear;

    /// Bytes that the program stores of one channel.
    Int GetChannelSize() const { return format == TextureFormat::U8 ? 1 : 4; }
    /// How a size is written: "WxH".
    const char* GetSizeForm() const;
};

/// Null for types that are no textures.
const TextureKind* FindTextureKind(DataType type);

} // namespace norvi
