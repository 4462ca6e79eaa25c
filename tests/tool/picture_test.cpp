#include "norvi/picture.h"

#include <limits>

#include <sys/stat.h>

#include "tool_fixture.h"

namespace norvi {
namespace {

Picture Ramp(Int width, Int height, Int channels, Float32 from, Float32 to) {
    Picture picture{width, height, channels, {}};
    const Int count = width * height * channels;
    for (Int i = 0; i < count; ++i)
        picture.pixels.push_back(from +
                                 (to - from) * static_cast<Float32>(i) / static_cast<Float32>(count - 1));
    return picture;
}

TEST(PictureFiles, WhatIsWrittenIsReadBack) {
    const ScratchFolder folder;
    struct Case {
        const char* name;
        Int channels;
        Float32 from, to, tolerance;
    };
    constexpr Float32 half8Bit = 0.5f / 255 + 1e-6f;
    for (const Case& c : {Case{"grey.png", 1, 0, 1, half8Bit}, Case{"rgb.png", 3, 0, 1, half8Bit},
                          Case{"rgb.tif", 3, 0, 1, half8Bit}, Case{"rgb.exr", 3, -5, 100, 0},
                          Case{"grey.EXR", 1, -5, 100, 0}}) {
        SCOPED_TRACE(c.name);
        const Picture written = Ramp(17, 5, c.channels, c.from, c.to);
        const auto result = WritePicture(folder.File(c.name), written);
        ASSERT_TRUE(result) << result.GetError().ToString();
        const auto read = ReadPicture(folder.File(c.name));
        ASSERT_TRUE(read) << read.GetError().ToString();
        EXPECT_EQ(read->width, 17);
        EXPECT_EQ(read->height, 5);
        ASSERT_EQ(read->channels, c.channels);
        for (std::size_t i = 0; i < written.pixels.size(); ++i)
            ASSERT_NEAR(read->pixels[i], written.pixels[i], c.tolerance) << "value " << i;
    }
    // Formats of integers clamp.
    constexpr Float32 infinity = std::numeric_limits<Float32>::infinity();
    ASSERT_TRUE(WritePicture(folder.File("a.png"), {4, 1, 1, {-1, 2, -infinity, infinity}}));
    EXPECT_EQ(ReadPicture(folder.File("a.png"))->pixels, (BaseArray<Float32>{0, 1, 0, 1}));
}

TEST(PictureFiles, UnreadableFilesAreErrors) {
    const ScratchFolder folder;
    folder.Write("text.png", "no picture");
    folder.Write("empty.png", "");
    folder.Write("notes.words", "some words");
    std::filesystem::create_directory(folder.File("folder.png"));
    ASSERT_EQ(mkfifo(folder.File("pipe.png").c_str(), 0600), 0);
    ASSERT_TRUE(WritePicture(folder.File("cut.png"), Ramp(64, 64, 3, 0, 1)));
    std::filesystem::resize_file(folder.File("cut.png"), 200);
    const std::pair<const char*, const char*> cases[] = {
        {"missing.png", "there is no such file"}, {"text.png", "Not a PNG file"},
        {"empty.png", "Not a PNG file"},          {"folder.png", "it is no regular file"},
        {"pipe.png", "it is no regular file"},    {"cut.png", "Read error: hit end of file"},
    };
    for (const auto& [name, reason] : cases) {
        const auto result = ReadPicture(folder.File(name));
        ASSERT_FALSE(result) << name;
        EXPECT_TRUE(result.GetError().Is(errorkind::IllegalArgument)) << name;
        EXPECT_EQ(result.GetError().GetMessage(),
                  "cannot read picture \"" + folder.File(name) + "\": " + reason);
    }
    EXPECT_FALSE(ReadPicture(folder.File("notes.words")));
}

TEST(PictureFiles, FailedWritesLeaveWhatWasThere) {
    const ScratchFolder folder;
    ASSERT_TRUE(WritePicture(folder.File("a.png"), Ramp(4, 4, 1, 0, 1)));
    const Int files = folder.CountFiles();
    const Picture tooFewValues{4, 4, 1, {0.5f}};
    EXPECT_EQ(WritePicture(folder.File("a.png"), tooFewValues).GetError().GetMessage(),
              "cannot write picture \"" + folder.File("a.png") + "\": 16 values are needed, not 1");
    EXPECT_FALSE(WritePicture(folder.File("a.png"), {0, 4, 1, {}}));
    // The format takes no pictures of that many channels.
    EXPECT_FALSE(WritePicture(folder.File("a.png"), Ramp(4, 4, 9, 0, 1)));
    EXPECT_FALSE(WritePicture(folder.File("a.unknown"), Ramp(4, 4, 1, 0, 1)));
    EXPECT_FALSE(WritePicture(folder.File("nowhere/a.png"), Ramp(4, 4, 1, 0, 1)));
    EXPECT_EQ(folder.CountFiles(), files);
    EXPECT_EQ(ReadPicture(folder.File("a.png"))->pixels.size(), 16u);
}

TEST(PictureOperations, ResizingKeepsConstantsAndDirectionsAndRefusesSizesWithoutPixelsOrBeyondMemory) {
    const Picture constant{31, 7, 3, BaseArray<Float32>(31 * 7 * 3, 0.375f)};
    for (const auto& [width, height] : {std::pair<Int, Int>{64, 64}, {5, 3}, {1, 1}, {31, 7}}) {
        const auto resized = ResizePicture(constant, width, height);
        ASSERT_TRUE(resized);
        ASSERT_EQ(static_cast<Int>(resized->pixels.size()), width * height * 3);
        for (const Float32 value : resized->pixels)
            ASSERT_NEAR(value, 0.375f, 1e-5f) << width << " x " << height;
    }
    // Dark left, bright right.
    const auto wide = *ResizePicture({2, 1, 1, {0, 1}}, 8, 4);
    for (std::size_t row = 0; row < 32; row += 8)
        EXPECT_TRUE(wide.pixels[row] < 0.3f && wide.pixels[row + 7] > 0.7f) << row;
    for (const auto& [width, height] :
         {std::pair<Int, Int>{0, 5}, {5, -1}, {1 << 20, 1 << 20}, {Int{1} << 40, 1}})
        EXPECT_FALSE(ResizePicture(constant, width, height)) << width << " x " << height;
}

TEST(PictureOperations, LuminanceWeighsColoursAndTakesTheFirstOfFewerChannels) {
    EXPECT_EQ(ToLuminance({2, 1, 1, {0.25f, 0.5f}}).pixels, (BaseArray<Float32>{0.25f, 0.5f}));
    EXPECT_EQ(ToLuminance({1, 2, 2, {0.25f, 9, 0.5f, 9}}).pixels, (BaseArray<Float32>{0.25f, 0.5f}));
    const Picture grey = ToLuminance({4, 1, 4, {1, 0, 0, 9, 0, 1, 0, 9, 0, 0, 1, 9, 1, 1, 1, 9}});
    EXPECT_EQ(grey.channels, 1);
    ASSERT_EQ(grey.pixels.size(), 4u);
    EXPECT_FLOAT_EQ(grey.pixels[0], 0.2126f);
    EXPECT_FLOAT_EQ(grey.pixels[1], 0.7152f);
    EXPECT_FLOAT_EQ(grey.pixels[2], 0.0722f);
    EXPECT_FLOAT_EQ(grey.pixels[3], 1.0f);
}

} // namespace
} // namespace norvi
