#include "norvi/texture_argument.h"

#include "tool_fixture.h"

namespace norvi {

TEST(ParseTexture, TellsPicturesSizesAndOptions) {
    const auto picture = ParseTexture("p=some/a=b.PNG:wrap=border,normalized,srgb,filter=point");
    ASSERT_TRUE(picture) << MessageOf(picture);
    EXPECT_EQ(picture->name, "p");
    EXPECT_EQ(picture->file, "some/a=b.PNG");
    EXPECT_EQ(picture->wrap, WRAP_BORDER);
    EXPECT_TRUE(picture->isNormalized);
    EXPECT_TRUE(picture->isSrgb);
    EXPECT_EQ(picture->isLinear, false);
    const auto zeros = ParseTexture("p=40x30x2");
    ASSERT_TRUE(zeros) << MessageOf(zeros);
    EXPECT_EQ(zeros->file, "");
    EXPECT_EQ(zeros->extents, (BaseArray<Int>{40, 30, 2}));
    EXPECT_EQ(zeros->wrap, WRAP_REPEAT);
    EXPECT_FALSE(zeros->isNormalized);
    EXPECT_EQ(zeros->isLinear, std::nullopt);
}

TEST(ParseTexture, MalformedTextsGiveErrorsThatQuoteThem) {
    const char* const source = "expected WxH or the name of a picture, such as picture.png";
    const struct {
        const char* text;
        const char* reason;
    } cases[] = {
        {"p=a.npy", source},
        {"p=3x0", source},
        {"p=2x2x2x2", source},
        {"p=99999999x99999999", source},
        {"p=:srgb", source},
        {"p=3x3:srgb:normalized", "options stand behind one ':', with ',' between them"},
        {"p=3x3:wrap=clmap", "there is no option 'wrap=clmap'; did you mean 'wrap=clamp'?"},
        {"p=3x3:normalised", "there is no option 'normalised'; did you mean 'normalized'?"},
        {"p=a.png:", "there is no option ''; there is wrap=repeat, wrap=clamp, wrap=border, wrap=none, "
                     "filter=point, filter=linear, normalized, srgb"},
    };
    for (const auto& [text, reason] : cases)
        EXPECT_EQ(MessageOf(ParseTexture(text)), Format("--texture '@': @", text, reason));
    EXPECT_EQ(MessageOf(ParseTexture("p")), "--texture 'p' is not NAME=VALUE");
}

} // namespace norvi
