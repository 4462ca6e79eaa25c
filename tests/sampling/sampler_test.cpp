// Every kind of texture against the rules: each wrap mode on each axis, coordinates normalised or not, sRGB
// or not.
#include <cinttypes>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "reference_sampler.h"
#include "sampling/kernelinterface_texture.h"
#include "support/results.h"

namespace norvi {

namespace {

struct Comparison {
    Int count = 0;
    Int largestUlps = 0;
    String worst;

    /// Distance in units of the last place; both zeros are one.
    static Int Ulps(float a, float b) {
        const auto ordered = [](float value) {
            std::int32_t bits;
            std::memcpy(&bits, &value, sizeof(bits));
            return bits < 0 ? Int{std::numeric_limits<std::int32_t>::min()} - bits : Int{bits};
        };
        return std::abs(ordered(a) - ordered(b));
    }

    template <typename Describe>
    void Add(double expected, double found, Describe&& describe) {
        ++count;
        const Int ulps = Ulps(static_cast<float>(expected), static_cast<float>(found));
        if (ulps > largestUlps) {
            largestUlps = ulps;
            worst = Format("@: @ instead of @", describe(), found, expected);
        }
    }
};

/// Whole coordinates for an axis of extent n: inside, beside and far from it.
std::vector<int> TexelPositions(int n) {
    return {0,
            1,
            n - 1,
            n,
            n + 1,
            -1,
            -n,
            -n - 1,
            -2 * n,
            7 * n,
            (1 << 24) + 1,
            -(1 << 24) - 3,
            std::numeric_limits<int>::max(),
            std::numeric_limits<int>::min()};
}

/// Positions in texels: on centres and edges and close to them, at both ends, at multiples of the extent,
/// large ones, tiny ones, both zeros.
std::vector<float> SamplePositions(float n) {
    std::vector<float> positions;
    for (const float edge : {0.0f, 0.5f, 1.0f, 1.5f, n - 0.5f, n, n + 0.5f, -0.5f, -1.0f, -n + 0.5f, -n,
                             -2 * n, 3 * n, 3 * n + 0.5f, -7 * n + 1})
        for (const float towards : {-1e9f, edge, 1e9f})
            positions.push_back(std::nextafter(edge, towards));
    for (const float size : {1e-40f, 1e-8f, 1e-3f, 8388608.0f, 16777216.0f, 16777218.0f, 2147483648.0f, 4e9f,
                             1e15f, 1e16f, 1e20f, std::numeric_limits<float>::max()}) {
        positions.push_back(size);
        positions.push_back(-size);
    }
    positions.push_back(-0.0f);
    return positions;
}

template <typename Number>
Number Pick(const std::vector<Number>& numbers, std::mt19937& random) {
    return numbers[random() % numbers.size()];
}

/// A texture with a payload of two layers, so that layer 1 exists. The axes of its coordinates are the first
/// ones, as many as there are extents above 1.
struct Texture {
    ReferenceTexture reference;
    std::vector<UChar> payload;
    SamplerEntry entry;
    std::vector<int> texelPositions[3];    ///< worth a look, by axis
    std::vector<float> samplePositions[3]; ///< in texels

    Texture(TextureFormat format, UInt32 channels, const Vec3<UInt32>& extents, bool isLinear,
            std::mt19937& random) {
        TextureBindData& bind = reference.bind;
        bind._dimensions = extents;
        reference.dimensions = int{extents.x > 1} + int{extents.y > 1} + int{extents.z > 1};
        for (int axis = 0; axis < reference.dimensions; ++axis) {
            texelPositions[axis] = TexelPositions(static_cast<int>(Extent(axis)));
            samplePositions[axis] = SamplePositions(static_cast<float>(Extent(axis)));
        }
        bind._format = format;
        bind._numChannels = channels;
        bind._sampleLinear = isLinear;
        for (float& component : bind._borderColor)
            component = std::uniform_real_distribution<float>(-300, 300)(random);
        const std::size_t channelBytes = format == TextureFormat::U8 ? 1 : 4;
        const std::size_t numbers = std::size_t{2} * extents.x * extents.y * extents.z * channels;
        payload.resize(numbers * channelBytes);
        for (std::size_t i = 0; i < numbers; ++i)
            FillNumber(&payload[i * channelBytes], format, random);
        bind._data = payload.data();
        bind._size = static_cast<Int>(payload.size());
    }

    static void FillNumber(UChar* bytes, TextureFormat format, std::mt19937& random) {
        const auto bits = static_cast<UInt32>(random());
        // Integers are below 2^24 in size, exact as floats.
        const auto whole = static_cast<Int32>(bits & 0x1FFFFFF) - (1 << 24);
        const float fraction = static_cast<float>(bits >> 8) * 0x1p-24f * 1.7f - 0.2f;
        switch (format) {
        case TextureFormat::U8:
            *bytes = static_cast<UChar>(bits);
            break;
        case TextureFormat::S32:
            std::memcpy(bytes, &whole, sizeof(whole));
            break;
        default:
            std::memcpy(bytes, &fraction, sizeof(fraction));
        }
    }

    /// Makes it wider along x, with zeros in the middle: the payload becomes the beginning and the end.
    void Widen(UInt32 width) {
        const std::size_t texelBytes =
            reference.bind._numChannels * (reference.bind._format == TextureFormat::U8 ? 1 : 4);
        const std::size_t bytes = width * texelBytes;
        std::vector<UChar> wide(bytes);
        std::copy(payload.begin(), payload.end(), wide.begin());
        std::copy(payload.begin(), payload.end(), wide.end() - static_cast<Int>(payload.size()));
        payload.swap(wide);
        reference.bind._dimensions.x = width;
        reference.bind._data = payload.data();
        reference.bind._size = static_cast<Int>(bytes);
        texelPositions[0] = TexelPositions(static_cast<int>(width));
        samplePositions[0] = SamplePositions(static_cast<float>(width));
    }

    UInt32 Extent(int axis) const {
        const Vec3<UInt32>& extents = reference.bind._dimensions;
        return axis == 0 ? extents.x : axis == 1 ? extents.y : extents.z;
    }

    /// Sets wrap modes (two bits for each axis) and switches.
    void Rebuild(UInt32 wraps, bool areNormalized, bool srgb) {
        reference.bind._wrapU = wraps & 3;
        reference.bind._wrapV = wraps >> 2 & 3;
        reference.bind._wrapW = wraps >> 4;
        reference.bind._normalizedCoordinates = areNormalized ? 255 : 0;
        reference.bind._srgb = srgb ? 2 : 0;
        Result<SamplerEntry> made = MakeSamplerEntry(reference.bind);
        ASSERT_OK(made);
        entry = std::move(*made);
    }

    String Describe() const {
        const TextureBindData& bind = reference.bind;
        return Format("format @, @ channels, @D, wrap @ @ @, normalized @, sRGB @",
                      static_cast<UInt32>(bind._format), bind._numChannels, reference.dimensions, bind._wrapU,
                      bind._wrapV, bind._wrapW, UInt32{bind._normalizedCoordinates}, UInt32{bind._srgb});
    }

    /// Component `c` of what a function has written.
    double Component(const void* result, UInt32 c) const {
        switch (reference.bind._format) {
        case TextureFormat::U8:
            return static_cast<const UChar*>(result)[c];
        case TextureFormat::S32:
            return static_cast<const Int32*>(result)[c];
        default:
            return static_cast<const float*>(result)[c];
        }
    }

    void CompareLoad(Comparison& comparison, const int* position, int layer) const {
        alignas(16) UChar result[16];
        ASSERT_EQ(entry.helper.loadFunction(result, position, layer, &entry.helper.samplingData), result);
        const ReferenceTexel expected = ReferenceLoad(reference, position, layer);
        for (UInt32 c = 0; c < reference.bind._numChannels; ++c)
            comparison.Add(expected[c], Component(result, c), [&] {
                return Format("@, load (@, @, @) layer @ component @", Describe(), position[0], position[1],
                              position[2], layer, c);
            });
    }

    void CompareSample(Comparison& comparison, const float* coordinates, int layer) const {
        float result[4];
        entry.helper.sampleFunction(result, coordinates, layer, &entry.helper.samplingData);
        if (!IsDefined(reference, coordinates))
            return;
        const ReferenceTexel expected = ReferenceSample(reference, coordinates, layer);
        for (UInt32 c = 0; c < reference.bind._numChannels; ++c)
            comparison.Add(expected[c], double{result[c]}, [&] {
                return Format("@, sample (@, @, @) layer @ component @", Describe(), coordinates[0],
                              coordinates[1], coordinates[2], layer, c);
            });
    }
};

void CompareAll(Comparison& comparison, Texture& texture, Int samples, std::mt19937& random) {
    const int dimensions = texture.reference.dimensions;
    for (Int i = 0; i < samples; ++i) {
        int position[3]{};
        float coordinates[3]{};
        for (int axis = 0; axis < dimensions; ++axis) {
            const auto extent = static_cast<float>(texture.Extent(axis));
            position[axis] = Pick(texture.texelPositions[axis], random);
            // One half lies anywhere around the texture.
            coordinates[axis] = random() & 1 ? Pick(texture.samplePositions[axis], random)
                                             : std::uniform_real_distribution<float>(-3, 4)(random) * extent;
            if (texture.reference.bind._normalizedCoordinates != 0)
                coordinates[axis] /= extent;
        }
        const int layer =
            std::max<int>(0, static_cast<int>(random() % 6) - 3) - static_cast<int>(i % 17 == 0);
        texture.CompareLoad(comparison, position, layer);
        if (texture.entry.helper.sampleRunFunction)
            texture.CompareSample(comparison, coordinates, layer);
    }
}

struct Kind {
    const char* name;
    TextureFormat format;
    UInt32 channels;
    bool isLinear;
};

class SamplerTest : public testing::TestWithParam<Kind> {
  protected:
    void CompareKind(Comparison& comparison, const Vec3<UInt32>& extents, Int samples) {
        const Kind& kind = GetParam();
        std::mt19937 random(1);
        Texture texture(kind.format, kind.channels, extents, kind.isLinear, random);
        for (UInt32 wraps = 0; wraps < 1u << 2 * texture.reference.dimensions; ++wraps)
            for (const bool areNormalized : {false, true})
                for (const bool srgb : {false, true}) {
                    texture.Rebuild(wraps, areNormalized, srgb);
                    CompareAll(comparison, texture, samples, random);
                }
    }
};

TEST_P(SamplerTest, AgreesWithTheRulesToTheLastBit) {
    Comparison comparison;
    // Integers of 32 bits are always of three dimensions.
    if (GetParam().format != TextureFormat::S32) {
        for (const Vec3<UInt32>& extents : {Vec3<UInt32>{5, 1, 1}, {1, 5, 1}, {1, 1, 3}})
            CompareKind(comparison, extents, 300);
        for (const Vec3<UInt32>& extents : {Vec3<UInt32>{5, 3, 1}, {5, 1, 5}, {1, 5, 5}})
            CompareKind(comparison, extents, 70);
    }
    CompareKind(comparison, {5, 3, 4}, 100);
    std::printf("%" PRId64 " components compared, largest difference %" PRId64 " units in the last place\n",
                comparison.count, comparison.largestUlps);
    EXPECT_EQ(comparison.largestUlps, 0) << comparison.worst;
    EXPECT_GT(comparison.count, 10000);
}

INSTANTIATE_TEST_SUITE_P(Kinds, SamplerTest,
                         testing::Values(Kind{"R_U8_point", TextureFormat::U8, 1, false},
                                         Kind{"R_F32_point", TextureFormat::F32, 1, false},
                                         Kind{"R_S32", TextureFormat::S32, 1, true},
                                         Kind{"R_F32_linear", TextureFormat::F32, 1, true},
                                         Kind{"RG_F32_linear", TextureFormat::F32, 2, true},
                                         Kind{"RGB_F32_linear", TextureFormat::F32, 3, true},
                                         Kind{"RGBA_F32_linear", TextureFormat::F32, 4, true}),
                         [](const auto& kind) { return String(kind.param.name); });

/// Where neighbouring texels are one float.
TEST(Sampler, AgreesWithTheRulesInTexturesOfMoreThan2To24Texels) {
    Comparison comparison;
    std::mt19937 random(1);
    for (const bool isLinear : {false, true}) {
        // A few texels at both ends stand for the 2^24 between them.
        Texture texture(isLinear ? TextureFormat::F32 : TextureFormat::U8, 1, {5, 1, 1}, isLinear, random);
        texture.Widen((1 << 24) + 3);
        texture.Rebuild(0, false, false);
        for (UInt32 wrap = 0; wrap < 4; ++wrap)
            for (const bool areNormalized : {false, true}) {
                TextureBindData& bind = texture.reference.bind;
                bind._wrapU = wrap;
                bind._normalizedCoordinates = areNormalized;
                // To make so large an entry anew takes longer than to compare it.
                texture.entry.helper.samplingData._flags = PackedTextureFlags::Of(bind);
                CompareAll(comparison, texture, 500, random);
            }
    }
    EXPECT_EQ(comparison.largestUlps, 0) << comparison.worst;
}

TEST(Sampler, ReadsHalvesAsTheFloatsThatTheyAreStoredAs) {
    std::mt19937 random(1);
    for (const Vec3<UInt32>& extents : {Vec3<UInt32>{2, 1, 1}, {2, 2, 1}, {2, 2, 2}})
        for (UInt32 channels = 1; channels <= 4; ++channels)
            for (const bool srgb : {false, true}) {
                Texture half(TextureFormat::F16, channels, extents, true, random);
                Texture whole(TextureFormat::F32, channels, extents, true, random);
                half.Rebuild(0, false, srgb);
                whole.Rebuild(0, false, srgb);
                EXPECT_EQ(half.entry.helper.sampleFunction, whole.entry.helper.sampleFunction);
                EXPECT_EQ(half.entry.helper.loadFunction, whole.entry.helper.loadFunction);
                EXPECT_EQ(half.entry.helper.sampleRunFunction, whole.entry.helper.sampleRunFunction);
            }
}

} // namespace

} // namespace norvi
