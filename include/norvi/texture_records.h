// The record that describes a texture on its way into a program.
#pragma once

#include <norvi/host/types.h>

namespace norvi {

/// How one channel of a texel is stored. The numbers are fixed: sampler keys are computed from them.
enum class TextureFormat : UInt32 { U8 = 0, S8 = 1, U16 = 2, S16 = 3, U32 = 4, S32 = 5, F16 = 6, F32 = 7 };

inline constexpr UInt32 WRAP_REPEAT = 0; ///< the texture tiles
inline constexpr UInt32 WRAP_CLAMP = 1;  ///< clamp to the edge texel
inline constexpr UInt32 WRAP_BORDER = 2; ///< out of range yields `_borderColor`
inline constexpr UInt32 WRAP_NONE = 3;   ///< the coordinate is used as it stands

/// Description and payload of one texture.
struct TextureBindData {
    const UChar* _data = nullptr; ///< texels, not owned; null: a zero-filled store of `_size` bytes is made
    Int _size = 0;                ///< bytes of the payload
    Vec3<UInt32> _dimensions{1, 1, 1};
    TextureFormat _format = TextureFormat::F32;
    UInt32 _numChannels = 4;          ///< 1 to 4
    Bool _normalizeValues = false;    ///< integer texels are mapped to 0..1 (unsigned) or -1..1 (signed)
    UInt32 _sampleLinear = 0;         ///< 1: linear filtering; every other value: point sampling
    UChar _normalizedCoordinates = 0; ///< non-zero: float coordinates are in 0..1; zero: in texels
    UChar _srgb = 0;                  ///< non-zero: decoded channels pass through the sRGB decode
    UInt32 _wrapU = WRAP_REPEAT;
    UInt32 _wrapV = WRAP_REPEAT;
    UInt32 _wrapW = WRAP_REPEAT;
    Float32 _borderColor[4]{};
};

} // namespace norvi
