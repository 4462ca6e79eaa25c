// Decoding one channel: the numbers of each format, against formulas in double precision that are rounded
// once after each operation.
#include "sampling/texel_decode.h"

#include <gtest/gtest.h>

namespace norvi {

namespace {

float Rounded(double value) {
    return static_cast<float>(value);
}

struct NormalizedRange {
    double offset, divisor, factor;
    bool isSigned;
};

float ReferenceNormalized(double stored, const NormalizedRange& range) {
    const float value = Rounded(Rounded(stored) + range.offset);
    const float unit = range.divisor != 0 ? Rounded(value / range.divisor)
                                          : Rounded(value * double{static_cast<float>(range.factor)});
    return range.isSigned ? Rounded(Rounded(double{unit} + unit) - 1.0) : unit;
}

float ReferenceSrgb(float x, bool isDark) {
    return isDark ? Rounded(x / double{12.92f})
                  : powf(Rounded(Rounded(x + double{0.055f}) / double{1.055f}), 2.4f);
}

/// Compares all four decodings at numbers of the whole range: both ends, both sides of zero, and steps.
template <TextureFormat Format>
void CompareInteger(const NormalizedRange& range) {
    using Stored = typename StoredChannel<Format>::Type;
    constexpr double lowest = std::numeric_limits<Stored>::min(),
                     highest = std::numeric_limits<Stored>::max();
    const double step = std::max(1.0, std::floor((highest - lowest) / 65521.0));
    std::vector<double> numbers = {lowest, highest, 0, 1, highest - 1, std::max(lowest, -1.0)};
    for (double number = lowest; number <= highest; number += step)
        numbers.push_back(number);
    for (const double number : numbers) {
        const auto stored = static_cast<Stored>(number);
        const float raw = Rounded(number), normalized = ReferenceNormalized(number, range);
        ASSERT_EQ((TexelLayout<Format, 1>::Decode(stored)), raw);
        ASSERT_EQ((TexelLayout<Format, 1, true>::Decode(stored)), normalized) << number;
        ASSERT_EQ((TexelLayout<Format, 1, false, true>::Decode(stored)), ReferenceSrgb(raw, number <= 0))
            << number;
        ASSERT_EQ((TexelLayout<Format, 1, true, true>::Decode(stored)),
                  ReferenceSrgb(normalized, 0.04045f >= normalized))
            << number;
    }
}

TEST(TexelDecode, EachIntegerFormat) {
    CompareInteger<TextureFormat::U8>({0, 255, 0, false});
    CompareInteger<TextureFormat::S8>({128, 255, 0, true});
    CompareInteger<TextureFormat::U16>({0, 65535, 0, false});
    CompareInteger<TextureFormat::S16>({32768, 65535, 0, true});
    CompareInteger<TextureFormat::U32>({0, 0, 0x1p-32, false});
    CompareInteger<TextureFormat::S32>({2147483648.0, 0, 0x1p-32, true});
}

TEST(TexelDecode, KnownValues) {
    using enum TextureFormat;
    EXPECT_EQ((TexelLayout<U8, 1, true>::Decode(255)), 1.0f);
    EXPECT_EQ((TexelLayout<S8, 1, true>::Decode(127)), 1.0f);
    EXPECT_EQ((TexelLayout<S8, 1, true>::Decode(-128)), -1.0f);
    EXPECT_EQ((TexelLayout<S8, 1, false, true>::Decode(-1)), -1.0f / 12.92f);
    EXPECT_EQ((TexelLayout<S8, 1, false, true>::Decode(0)), 0.0f);
    EXPECT_EQ((TexelLayout<S8, 1, false, true>::Decode(1)), 1.0f);
    EXPECT_EQ((TexelLayout<U8, 1, false, true>::Decode(0)), 0.0f);
    EXPECT_EQ((TexelLayout<F32, 1, true>::Decode(300.0f)), 300.0f);
    EXPECT_EQ((TexelLayout<F16, 1, false, true>::Decode(0.04045f)), 0.04045f / 12.92f);
    EXPECT_EQ((TexelLayout<F32, 1, false, true>::Decode(-3.0f)), -3.0f / 12.92f);
    EXPECT_EQ((TexelLayout<F32, 1, false, true>::Decode(0.5f)), ReferenceSrgb(0.5f, false));
    EXPECT_NEAR((TexelLayout<F32, 1, false, true>::Decode(0.5f)), std::pow(0.555 / 1.055, 2.4), 1e-7);
}

TEST(TexelDecode, OutputsTakeAndFillComponents) {
    using enum TextureFormat;
    const Float32 floats[] = {-2.7f, 300.9f, 3.0f, 4.0f};
    const auto* texel = reinterpret_cast<const UChar*>(floats);
    EXPECT_EQ((IntegerOutput<UChar>::Read<TexelLayout<F32, 1>>(texel)), 254);
    EXPECT_EQ((IntegerOutput<Int32>::Read<TexelLayout<F32, 1>>(texel)), -2);
    const UChar bytes[] = {0xFE, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ((IntegerOutput<Int32>::Read<TexelLayout<S8, 1>>(bytes)), -2);
    EXPECT_EQ((IntegerOutput<Int32>::Read<TexelLayout<U16, 1>>(bytes)), 0xFFFE);
    EXPECT_EQ((IntegerOutput<UChar>::Read<TexelLayout<S32, 1>>(bytes)), 0xFE);
    const Float4 padded = FloatOutput<4>::Read<TexelLayout<F32, 2>>(texel);
    const Float4 whole = FloatOutput<3>::Read<TexelLayout<F32, 4>>(texel);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(padded[i], i < 2 ? floats[i] : 0.0f);
        EXPECT_TRUE(i == 3 || whole[i] == floats[i]);
    }
    SamplingData data;
    data._borderColor[0] = 1e10f;
    EXPECT_EQ(IntegerOutput<Int32>::Border(data), std::numeric_limits<Int32>::min());
    data._borderColor[0] = -1.5f;
    EXPECT_EQ(IntegerOutput<UChar>::Border(data), 255);
}

} // namespace

} // namespace norvi
