#include "norvi/sampling_gallery.h"

#include "norvi/picture.h"
#include "tool_fixture.h"

namespace norvi {

namespace {

using Colour = BaseArray<Float32>;

Colour ColourAt(const Picture& picture, Int x, Int y) {
    const auto* pixel = &picture.pixels[static_cast<std::size_t>((y * picture.width + x) * picture.channels)];
    return Colour(pixel, pixel + 3);
}

} // namespace

TEST(SamplingGallery, PicturesShowWhatTheirNamesSay) {
    LoadedContext();
    const ScratchFolder folder;
    // Four pixels in each texel where 24 texels are shown.
    constexpr Int32 size = 96;
    ASSERT_EQ(MessageOf(WriteSamplingGallery(folder.File("g"), size)), "");
    const auto read = [&](const char* name) { return *ReadPicture(folder.File(Format("g/@.png", name))); };
    const Picture repeat = read("wrap_repeat"), clamp = read("wrap_clamp"), border = read("wrap_border");
    const Picture point = read("filter_point"), linear = read("filter_linear");
    EXPECT_EQ(ColourAt(repeat, 5, 6), ColourAt(repeat, 5 + size / 3, 6 + size / 3 * 2));
    EXPECT_EQ(ColourAt(clamp, 2, 3), ColourAt(point, 1, 1));
    EXPECT_EQ(ColourAt(border, 2, 3), (Colour{1, 128 / 255.0f, 0}));
    // Inside a texel, and across the edge of the letter.
    EXPECT_EQ(ColourAt(point, 13, 13), ColourAt(point, 22, 22));
    EXPECT_NE(ColourAt(linear, 13, 20), ColourAt(linear, 16, 20));
    EXPECT_LT(ColourAt(read("srgb_on"), size / 2, 2)[0], ColourAt(read("srgb_off"), size / 2, 2)[0] - 0.2f);
    EXPECT_NE(read("coordinates_normalized").pixels, read("coordinates_texels").pixels);
}

TEST(SamplingGallery, BadSizesAndFoldersGiveErrors) {
    const ScratchFolder folder;
    EXPECT_EQ(MessageOf(WriteSamplingGallery(folder.File("g"), 0)), "the picture size is 0, not 1 to 4096");
    EXPECT_EQ(folder.CountFiles(), 0);
    const String file = folder.Write("file", "");
    EXPECT_EQ(MessageOf(WriteSamplingGallery(file, 8)),
              Format("cannot make the directory '@': Not a directory", file));
}

} // namespace norvi
