#include "norvi/texture_contents.h"

#include <norvi/texture_sampler_objects.h>

#include "norvi/picture.h"
#include "tool_fixture.h"

namespace norvi {

TEST(TextureContents, PicturesTakeTheFormatAndChannelsOfTheParameter) {
    const ScratchFolder folder;
    // Two pixels wide and high; the rows are alike.
    const Picture grey{2, 2, 1, {0.25f, 2, 0.25f, 2}};
    const Picture colours{2, 2, 3, {1, 0, 0, 0.5f, 1, 2, 1, 0, 0, 0.5f, 1, 2}};
    const DataType byte = DataType::Of<TextureSamplerObj_2D_R_U8_POINT>();
    const DataType two = DataType::Of<TextureSamplerObj_2D_RG_F32_LINEAR>();
    const DataType four = DataType::Of<TextureSamplerObj_2D_RGBA_F32_LINEAR>();
    const struct {
        const Picture& picture;
        DataType type;
        BaseArray<Float32> firstRow;
    } cases[] = {
        {grey, byte, {64, 255}},
        {colours, byte, {54, 246}}, // luminances 0.2126 and 0.9659
        {grey, two, {0.25f, 0.25f, 2, 2}},
        {colours, two, {1, 0, 0.5f, 1}},
        {colours, four, {1, 0, 0, 1, 0.5f, 1, 2, 1}},
    };
    for (const auto& [picture, type, firstRow] : cases) {
        SCOPED_TRACE(type->name);
        const String file = folder.File("p.exr");
        ASSERT_EQ(MessageOf(WritePicture(file, picture)), "");
        const auto contents = LoadTextureContents({{"p", file, {}}, "p=" + file, FindTextureKind(type)});
        ASSERT_TRUE(contents) << MessageOf(contents);
        const auto* floats = reinterpret_cast<const Float32*>(contents->description._data);
        const auto* bytes = contents->description._data;
        EXPECT_EQ(contents->description._size, static_cast<Int>(contents->texels.size()));
        for (std::size_t i = 0; i < firstRow.size(); ++i)
            EXPECT_EQ(type == byte ? static_cast<Float32>(bytes[i]) : floats[i], firstRow[i]);
    }
}

} // namespace norvi
