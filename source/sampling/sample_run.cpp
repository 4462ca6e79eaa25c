#include "sampling/sample_run.h"

#if defined(__x86_64__)
#include "sampling/sample_run_avx2.h"
#endif

namespace norvi {

namespace {

#if defined(__x86_64__)
const bool hasAvx2 = __builtin_cpu_supports("avx2") != 0;
#endif

/// Takes as many samples as it can and gives their number.
template <int Dims, int Channels>
Int SampleManyAtOnce([[maybe_unused]] Float32* results, [[maybe_unused]] const Float32* coordinates,
                     [[maybe_unused]] Int count, [[maybe_unused]] const TextureSamplerDataHelper& texture) {
#if defined(__x86_64__)
    using Run = avx2::SampleRun<Dims, Channels>;
    const SamplingData& data = texture.samplingData;
    // Indices of such a large store wrap round.
    const bool isHuge = data._lastTexel == std::numeric_limits<UInt32>::max();
    if (hasAvx2 && data._flags.IsLinear() && !isHuge) {
        const Int done = count - count % Run::Width;
        Run::Run(results, coordinates, done, texture);
        return done;
    }
#endif
    return 0;
}

} // namespace

template <int Dims, int Channels>
void SampleRunPlain(void* results, const void* coordinates, Int count, Int32 layer,
                    const TextureSamplerDataHelper* texture) {
    auto* result = static_cast<Float32*>(results);
    auto* position = static_cast<const Float32*>(coordinates);
    const Int done = layer == 0 ? SampleManyAtOnce<Dims, Channels>(result, position, count, *texture) : 0;
    SampleRunOneByOne<Dims, Channels>(result + done * Channels, position + done * Dims, count - done, layer,
                                      texture);
}

#define NORVI_SAMPLE_RUN(dims, channels)                                                                     \
    template void SampleRunPlain<dims, channels>(void*, const void*, Int, Int32,                             \
                                                 const TextureSamplerDataHelper*);
#define NORVI_SAMPLE_RUNS(channels)                                                                          \
    NORVI_SAMPLE_RUN(1, channels) NORVI_SAMPLE_RUN(2, channels) NORVI_SAMPLE_RUN(3, channels)
NORVI_SAMPLE_RUNS(1)
NORVI_SAMPLE_RUNS(2)
NORVI_SAMPLE_RUNS(3)
NORVI_SAMPLE_RUNS(4)

} // namespace norvi
