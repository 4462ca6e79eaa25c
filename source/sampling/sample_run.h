// Runs of samples.
#pragma once

#include <norvi/texture_records.h>

namespace norvi {

/// Calls the sample function once for each. (A TextureRunFunction.)
template <int Dims, int Channels>
void SampleRunOneByOne(void* results, const void* coordinates, Int count, Int32 layer,
                       const TextureSamplerDataHelper* texture) {
    auto* result = static_cast<UChar*>(results);
    auto* position = static_cast<const UChar*>(coordinates);
    for (Int i = 0; i < count; ++i) {
        texture->sampleFunction(result, position, layer, &texture->samplingData);
        result += Channels * sizeof(Float32);
        position += Dims * sizeof(Float32);
    }
}

/// Of textures that hold plain floats: several at a time where the processor can. (A TextureRunFunction.)
template <int Dims, int Channels>
void SampleRunPlain(void* results, const void* coordinates, Int count, Int32 layer,
                    const TextureSamplerDataHelper* texture);

} // namespace norvi
