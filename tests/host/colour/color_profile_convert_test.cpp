#include <cstring>
#include <numeric>
#include <thread>

#include <norvi/host/color_profile_convert.h>

#include "support/results.h"

namespace norvi {
namespace {

using pixelformat::RgbaF32;
using pixelformat::RgbF32;

struct ColorProfileConvertTest : testing::Test {
    ColorProfileConvertTest() {
        EXPECT_OK(UseBuiltinColorConfig());
        srgb = *ColorProfile::FromName("sRGB");
        logC = *ColorProfile::FromName("logc");
    }

    ColorProfileRef srgb, logC;
    ColorProfileConvert convert;
};

TEST_F(ColorProfileConvertTest, InitRefusesWhatItCannotConvert) {
    const String formats = "' cannot be converted, only 'net.norvi.image.pixelformat.rgb.f32' and "
                           "'net.norvi.image.pixelformat.rgba.f32'";
    const auto empty = std::make_shared<ColorProfile>();
    const struct {
        const char* sourceFormat;
        ColorProfileRef source;
        const char* targetFormat;
        ColorProfileRef target;
        UInt32 reserved;
        const char* kind;
        String message;
    } rows[] = {
        {"rgb", srgb, RgbF32, logC, 0, errorkind::IllegalArgument,
         "colours in the pixel format 'rgb" + formats},
        {RgbF32, srgb, "", logC, 0, errorkind::IllegalArgument, "colours in the pixel format '" + formats},
        {RgbF32, nullptr, RgbF32, logC, 0, errorkind::NullPtr, "the source colour profile is null"},
        {RgbF32, srgb, RgbF32, nullptr, 0, errorkind::NullPtr, "the target colour profile is null"},
        {RgbF32, empty, RgbF32, logC, 0, errorkind::IllegalArgument, "the source colour profile is empty"},
        {RgbF32, srgb, RgbF32, empty, 0, errorkind::IllegalArgument, "the target colour profile is empty"},
        {RgbF32, srgb, RgbF32, logC, 7, errorkind::IllegalArgument,
         "the reserved arguments of a colour conversion are 0 and 7, not 0"},
    };
    Float32 pixel[3] = {0.25f, 0.5f, 0.75f};
    for (const auto& row : rows) {
        EXPECT_TRUE(FailsWith(
            convert.Init(row.sourceFormat, row.source, row.targetFormat, row.target, 0, row.reserved),
            row.kind, row.message));
        EXPECT_TRUE(FailsWith(convert.Convert(pixel, pixel, 1), errorkind::IllegalState,
                              "the colour conversion is not initialised"));
    }
    ASSERT_OK(convert.Init(RgbF32, srgb, RgbF32, srgb, 0, 0));
    EXPECT_FALSE(convert.Init("x", srgb, RgbF32, logC, 0, 0).IsOk());
    EXPECT_OK(convert.Convert(pixel, pixel, 1));
    EXPECT_EQ(pixel[1], 0.5f) << "the failed Init changed the conversion";
    EXPECT_TRUE(FailsWith(convert.Convert(pixel, pixel, -1), errorkind::IllegalArgument,
                          "the number of pixels to convert is negative"));
}

TEST_F(ColorProfileConvertTest, APixelIsTheSameByItselfAndInAnImage) {
    const struct {
        const char* format;
        Int channels;
    } formats[] = {{RgbF32, 3}, {RgbaF32, 4}};
    for (const auto& from : formats)
        for (const auto& to : formats)
            for (const Int count : {0, 1, 15, 16, 17, 1023, 1024, 1025, 3 * 1024 + 16, 3 * 1024 + 500}) {
                ASSERT_OK(convert.Init(from.format, srgb, to.format, logC, 0, 0));
                // One more in front: pixels need no more than the alignment of a float.
                std::vector<Float32> source(1 + count * from.channels), image(2 + count * to.channels, -7);
                for (size_t i = 0; i < source.size(); ++i)
                    source[i] = static_cast<Float32>(i % 1009) / 900 - 0.05f;
                ASSERT_OK(convert.Convert(source.data() + 1, image.data() + 1, count));
                EXPECT_EQ(image.front(), -7);
                EXPECT_EQ(image.back(), -7);
                for (Int i = 0; i < count; ++i) {
                    const Float32* pixel = source.data() + 1 + i * from.channels;
                    Float32 single[4];
                    ASSERT_OK(convert.Convert(pixel, single, 1));
                    ASSERT_EQ(std::memcmp(single, image.data() + 1 + i * to.channels,
                                          sizeof(Float32) * to.channels),
                              0)
                        << from.format << ' ' << to.format << ' ' << i << " of " << count;
                    if (to.channels == 4) {
                        ASSERT_EQ(single[3], from.channels == 4 ? pixel[3] : 1.0f);
                    }
                }
            }
}

TEST_F(ColorProfileConvertTest, ConvertsInPlace) {
    for (const char* format : {RgbF32, RgbaF32}) {
        ASSERT_OK(convert.Init(format, srgb, format, logC, 0, 0));
        for (const Int count : {1, 100, 2100}) {
            std::vector<Float32> pixels(count * 4), expected(count * 4);
            std::iota(pixels.begin(), pixels.end(), 0.0f);
            ASSERT_OK(convert.Convert(pixels.data(), expected.data(), count));
            ASSERT_OK(convert.Convert(pixels.data(), pixels.data(), count));
            const size_t used = count * (format == String(RgbF32) ? 3 : 4);
            EXPECT_EQ(std::memcmp(pixels.data(), expected.data(), used * sizeof(Float32)), 0)
                << format << ' ' << count;
        }
    }
}

TEST_F(ColorProfileConvertTest, DataIsNeverConverted) {
    ASSERT_OK(convert.Init(RgbF32, *ColorProfile::FromName("Raw"), RgbF32, logC, 0, 0));
    Vector32 pixel{0.25f, -1, 7};
    ASSERT_OK(convert.Convert(&pixel, &pixel, 1));
    EXPECT_EQ(pixel, (Vector32{0.25f, -1, 7}));
}

TEST_F(ColorProfileConvertTest, ManyThreadsShareAConversionAndMakeTheirOwn) {
    ASSERT_OK(convert.Init(RgbF32, srgb, RgbF32, logC, 0, 0));
    constexpr Int Count = 3000;
    std::vector<Float32> source(Count * 3), expected(Count * 3);
    for (size_t i = 0; i < source.size(); ++i)
        source[i] = static_cast<Float32>(i % 257) / 256;
    ASSERT_OK(convert.Convert(source.data(), expected.data(), Count));
    std::vector<std::vector<Float32>> results(8, std::vector<Float32>(Count * 3));
    std::vector<std::thread> threads;
    for (auto& result : results)
        threads.emplace_back([&] {
            ColorProfileConvert own;
            EXPECT_OK(own.Init(RgbF32, *ColorProfile::FromName("sRGB"), RgbF32,
                               *ColorProfile::FromName("logc"), 0, 0));
            EXPECT_OK(UseBuiltinColorConfig());
            for (Int i = 0; i < 1000; ++i)
                EXPECT_OK((i % 2 ? own : convert).Convert(source.data() + 3 * i, result.data() + 3 * i, 1));
            EXPECT_OK(convert.Convert(source.data() + 3000, result.data() + 3000, Count - 1000));
        });
    for (auto& thread : threads)
        thread.join();
    for (const auto& result : results)
        EXPECT_EQ(result, expected);
}

} // namespace
} // namespace norvi
