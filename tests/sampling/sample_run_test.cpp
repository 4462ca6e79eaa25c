// Runs of samples: the same as single samples, on a machine with AVX2 or not.
#include "sampling/sample_run.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <random>

#include "sampling/kernelinterface_texture.h"
#include "support/results.h"

namespace norvi {

namespace {

constexpr Int MaxCount = 203;

Float32 RandomPosition(std::mt19937& random, Float32 extent) {
    const auto within = [&](Float32 low, Float32 high) {
        return std::uniform_real_distribution<Float32>(low, high)(random);
    };
    switch (random() % 8) {
    case 0: // texel edges and centres, far beyond both ends
        return static_cast<Float32>(static_cast<int>(random() % 4001) - 2000) * 0.5f;
    case 1: // the sum with 1 rounds
        return std::nextafter(std::floor(within(0, extent)) + 0.5f, -1e9f);
    case 2: // any float
        return std::bit_cast<Float32>(static_cast<UInt32>(random()));
    case 3:
        return within(-3 * extent, 4 * extent);
    default:
        return within(0.5f, extent - 0.5f);
    }
}

class SampleRunTest : public testing::TestWithParam<std::tuple<int, UInt32, bool>> {};

TEST_P(SampleRunTest, IsTheSingleSamplesToTheLastBit) {
    const auto [dimensions, channels, srgb] = GetParam();
    std::mt19937 random(7);
    TextureBindData bind;
    bind._dimensions = {37, dimensions > 1 ? 16u : 1, dimensions > 2 ? 9u : 1};
    bind._numChannels = channels;
    bind._sampleLinear = 1;
    bind._srgb = srgb;
    bind._borderColor[0] = bind._borderColor[2] = -5;
    std::vector<Float32> texels(bind._dimensions.x * bind._dimensions.y * bind._dimensions.z * channels);
    for (Float32& texel : texels)
        texel = std::uniform_real_distribution<Float32>(-1, 1)(random);
    bind._data = reinterpret_cast<const UChar*>(texels.data());
    bind._size = static_cast<Int>(texels.size() * sizeof(Float32));
    for (UInt32 wraps = 0; wraps < 64; ++wraps)
        for (const bool areNormalized : {false, true}) {
            bind._wrapU = wraps & 3;
            bind._wrapV = wraps >> 2 & 3;
            bind._wrapW = wraps >> 4;
            bind._normalizedCoordinates = areNormalized;
            const auto entry = MakeSamplerEntry(bind);
            ASSERT_OK(entry);
            const TextureSamplerDataHelper& texture = entry->helper;
            const Int count = random() % MaxCount;
            // Exactly as large as needed, so that a sanitizer sees what is read or written beyond.
            const auto positions = std::make_unique<Float32[]>(count * dimensions);
            const auto results = std::make_unique<Float32[]>(count * channels);
            for (Int i = 0; i < count * dimensions; ++i) {
                const int axis = static_cast<int>(i) % dimensions;
                const auto extent = static_cast<Float32>(axis == 0 ? 37 : axis == 1 ? 16 : 9);
                positions[i] = RandomPosition(random, extent) / (areNormalized ? extent : 1.0f);
            }
            const int layer = wraps == 5 ? 1 : 0;
            texture.sampleRunFunction(results.get(), positions.get(), count, layer, &texture);
            for (Int i = 0; i < count; ++i) {
                Float32 single[4];
                texture.sampleFunction(single, &positions[i * dimensions], layer, &texture.samplingData);
                ASSERT_EQ(std::memcmp(single, &results[i * channels], channels * sizeof(Float32)), 0)
                    << "sample " << i << " of " << count << ", wrap " << wraps;
            }
        }
}

INSTANTIATE_TEST_SUITE_P(Textures, SampleRunTest,
                         testing::Combine(testing::Values(1, 2, 3), testing::Values(1u, 2u, 3u, 4u),
                                          testing::Bool()));

/// Parts of their names on x86, ARM, RISC-V and POWER.
constexpr const char* FusedInstructions[] = {"fmadd", "fmsub", "fnmadd", "fnmsub",
                                             "fmla",  "fmls",  "xsmadd", "xvmadd"};

TEST(SamplerCode, HoldsNoFusedMultiplyAdd) {
    const String command = NORVI_OBJDUMP " -d --no-show-raw-insn " NORVI_MODULE;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
    ASSERT_NE(pipe, nullptr);
    char line[1024];
    Int sampling = 0, fused = 0, wide = 0;
    for (bool isSampling = false; fgets(line, sizeof(line), pipe.get());) {
        const String text = line;
        if (text.ends_with(">:\n"))
            isSampling = text.find("5norvi7Sampler") != String::npos ||
                         text.find("9SampleRun") != String::npos ||
                         text.find("13SampleRun") != String::npos || text.find("14SampleRun") != String::npos;
        if (!isSampling)
            continue;
        ++sampling;
        for (const char* instruction : FusedInstructions)
            fused += text.find(instruction) != String::npos;
        wide += text.find("vmulps") != String::npos && text.find("%ymm") != String::npos;
    }
    EXPECT_EQ(fused, 0);
    EXPECT_GT(sampling, 5000) << "the sampler functions were not found";
#if defined(__x86_64__)
    EXPECT_GT(wide, 0) << "the form for AVX2 was not found";
#endif
}

} // namespace

} // namespace norvi
