// Which combinations of dimensions, format, channels and filter a texture may have, and their functions.
#pragma once

#include <norvi/texture_records.h>

namespace norvi {

struct SamplerFunctions {
    TextureFunction sample = nullptr;
    TextureFunction load = nullptr;
    TextureRunFunction sampleRun = nullptr;
};

struct SamplerCombination {
    UInt32 key = 0;
    SamplerFunctions plain;
    SamplerFunctions srgb; ///< where texels pass through the sRGB decode
};

/// Bits 0-1: dimensions, 2-4: format, 5-6: channels less one, 7: is it filtered. Formats and channels out of
/// range run into the other bits.
constexpr UInt32 MakeSamplerKey(UInt32 dimensions, TextureFormat format, UInt32 numChannels, bool isLinear) {
    return (dimensions + 32 * (numChannels - 1)) | 4 * static_cast<UInt32>(format) | (isLinear ? 128u : 0u);
}

/// The combination with this key, or null where it is not allowed.
const SamplerCombination* FindSamplerCombination(UInt32 key);

/// The functions of `combination` for this storage. Channels outside 1 to 4, then an unknown format (large
/// numbers of which run into the key of another one) are illegal-state errors.
Result<const SamplerFunctions*> ChooseFunctions(const SamplerCombination& combination, TextureFormat format,
                                                UInt32 numChannels, Bool srgb) noexcept;

} // namespace norvi
