#include "sampling/sampler_functions.h"

#include "sampling/sample_run.h"
#include "sampling/sampler.h"

namespace norvi {

namespace {

/// A point texture is read at whole coordinates through both functions.
template <typename Output, int Dims, TextureFormat Format>
constexpr SamplerCombination Point(bool isLinear = false) {
    using Plain = Sampler<Output, Dims, TexelLayout<Format, 1>>;
    SamplerCombination row{MakeSamplerKey(Dims, Format, 1, isLinear), {}, {}};
    row.plain = row.srgb = {&Plain::Load, &Plain::Load, nullptr};
    if constexpr (Format == TextureFormat::F32) {
        using Srgb = Sampler<Output, Dims, TexelLayout<Format, 1, false, true>>;
        row.srgb = {&Srgb::Load, &Srgb::Load, nullptr};
    }
    return row;
}

/// Both float formats are stored alike.
template <int Dims, int Channels, TextureFormat Format>
constexpr SamplerCombination Linear() {
    using Output = FloatOutput<Channels>;
    using Plain = Sampler<Output, Dims, TexelLayout<TextureFormat::F32, Channels>>;
    using Srgb = Sampler<Output, Dims, TexelLayout<TextureFormat::F32, Channels, false, true>>;
    return {MakeSamplerKey(Dims, Format, Channels, true),
            {&Plain::Sample, &Plain::Load, &SampleRunPlain<Dims, Channels>},
            {&Srgb::Sample, &Srgb::Load, &SampleRunOneByOne<Dims, Channels>}};
}

#define NORVI_POINT(Output, format)                                                                          \
    Point<Output, 1, TextureFormat::format>(), Point<Output, 2, TextureFormat::format>(),                    \
        Point<Output, 3, TextureFormat::format>()
#define NORVI_LINEAR(channels)                                                                               \
    Linear<1, channels, TextureFormat::F16>(), Linear<2, channels, TextureFormat::F16>(),                    \
        Linear<3, channels, TextureFormat::F16>(), Linear<1, channels, TextureFormat::F32>(),                \
        Linear<2, channels, TextureFormat::F32>(), Linear<3, channels, TextureFormat::F32>()

constexpr SamplerCombination combinations[] = {
    NORVI_POINT(IntegerOutput<UChar>, U8),
    NORVI_POINT(FloatOutput<1>, F32),
    // The one integer texture that asks for a filter, and gets none.
    Point<IntegerOutput<Int32>, 3, TextureFormat::S32>(true),
    NORVI_LINEAR(1),
    NORVI_LINEAR(2),
    NORVI_LINEAR(3),
    NORVI_LINEAR(4),
};

} // namespace

const SamplerCombination* FindSamplerCombination(UInt32 key) {
    for (const SamplerCombination& combination : combinations)
        if (combination.key == key)
            return &combination;
    return nullptr;
}

Result<const SamplerFunctions*> ChooseFunctions(const SamplerCombination& combination, TextureFormat format,
                                                UInt32 numChannels, Bool srgb) noexcept {
    if (numChannels < 1 || numChannels > 4)
        return IllegalStateError("Illegal state: Invalid channel count");
    if (static_cast<UInt32>(format) > static_cast<UInt32>(TextureFormat::F32))
        return IllegalStateError("Illegal state: Invalid format");
    return srgb ? &combination.srgb : &combination.plain;
}

} // namespace norvi
