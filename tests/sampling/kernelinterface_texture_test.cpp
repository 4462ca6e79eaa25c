// Making sampler entries: what is refused, what is chosen, what memory they have.
#include "sampling/kernelinterface_texture.h"

#include <cstring>
#include <set>

#include <norvi/texture_sampler_objects.h>

#include "host/log_recorder.h"
#include "sampling/sampler_functions.h"
#include "support/results.h"

namespace norvi {

namespace {

constexpr const char* Zero = "_dimensions in texBindData have to be larger or equal to 1!";
constexpr const char* Range = "Dimensions has to be in the range [1,3], numberChannels in [1,4].";
constexpr const char* Combination =
    "Combination of input parameters (dimensions/formatOut/numberChannels/sampleLinear) not allowed.";

TextureBindData Describe(Vec3<UInt32> dimensions, TextureFormat format, UInt32 channels, UInt32 linear) {
    TextureBindData texture;
    texture._dimensions = dimensions;
    texture._format = format;
    texture._numChannels = channels;
    texture._sampleLinear = linear;
    texture._size = static_cast<Int>(UInt64{dimensions.x} * dimensions.y * dimensions.z * channels * 4);
    return texture;
}

TEST(SamplerEntry, RefusalsComeInTheirOrder) {
    constexpr auto illegalArgument = errorkind::IllegalArgument, illegalState = errorkind::IllegalState;
    const auto format = [](UInt32 number) { return static_cast<TextureFormat>(number); };
    const struct {
        Vec3<UInt32> dimensions;
        TextureFormat format;
        UInt32 channels, linear;
        const char* kind;
        const char* message;
    } rows[] = {
        {{0, 5, 5}, format(9), 9, 1, illegalArgument, Zero},
        {{5, 0, 5}, TextureFormat::F32, 4, 1, illegalArgument, Zero},
        {{5, 5, 0}, TextureFormat::F32, 4, 1, illegalArgument, Zero},
        {{1, 1, 1}, TextureFormat::U8, 4, 0, illegalArgument, Range},
        {{2, 1, 1}, TextureFormat::U8, 0, 0, illegalArgument, Range},
        {{2, 1, 1}, TextureFormat::U8, 5, 0, illegalArgument, Range},
        {{2, 2, 1}, TextureFormat::U8, 4, 0, illegalArgument, Combination},
        {{2, 2, 2}, TextureFormat::S32, 1, 0, illegalArgument, Combination},
        {{2, 2, 2}, TextureFormat::S32, 1, 2, illegalArgument, Combination},
        // Unknown formats run into the bits of the channels: 61 is no key, 189 and 255 are.
        {{2, 1, 1}, format(15), 1, 0, illegalArgument, Combination},
        {{2, 1, 1}, format(15), 1, 1, illegalState, "Illegal state: Invalid format"},
        {{2, 2, 2}, format(31), 1, 1, illegalState, "Illegal state: Invalid format"},
        {{2, 1, 1}, format(0x40000007), 1, 0, illegalState, "Illegal state: Invalid format"},
    };
    for (const auto& row : rows)
        EXPECT_TRUE(
            FailsWith(MakeSamplerEntry(Describe(row.dimensions, row.format, row.channels, row.linear)),
                      row.kind, row.message));
    const SamplerCombination& any = *FindSamplerCombination(1);
    for (const UInt32 channels : {0u, 5u})
        EXPECT_TRUE(FailsWith(ChooseFunctions(any, format(8), channels, false), illegalState,
                              "Illegal state: Invalid channel count"));
}

TEST(SamplerEntry, TheseCombinationsAndNoOthersAreAllowed) {
    const std::set<UInt32> allowed = {1,   2,   3,   29,  30,  31,  151, 153, 154, 155, 157,
                                      158, 159, 185, 186, 187, 189, 190, 191, 217, 218, 219,
                                      221, 222, 223, 249, 250, 251, 253, 254, 255};
    std::set<UInt32> made;
    for (UInt32 dimensions = 1; dimensions <= 3; ++dimensions)
        for (UInt32 format = 0; format < 8; ++format)
            for (UInt32 channels = 1; channels <= 4; ++channels)
                for (const UInt32 linear : {0u, 1u, 3u}) {
                    const Vec3<UInt32> extents{3, dimensions > 1 ? 2u : 1u, dimensions > 2 ? 2u : 1u};
                    const auto entry = MakeSamplerEntry(
                        Describe(extents, static_cast<TextureFormat>(format), channels, linear));
                    if (!entry)
                        continue;
                    const TextureSamplerDataHelper& helper = entry->helper;
                    made.insert(helper.key);
                    EXPECT_EQ(helper.key,
                              (dimensions + 32 * (channels - 1)) | 4 * format | (linear == 1 ? 128 : 0));
                    const bool isFiltered = linear == 1 && format >= 6;
                    EXPECT_EQ(helper.sampleFunction != helper.loadFunction, isFiltered) << helper.key;
                    EXPECT_EQ(helper.sampleRunFunction != nullptr, isFiltered) << helper.key;
                }
    EXPECT_EQ(made, allowed);
}

TEST(SamplerEntry, ExtentsOfOneDoNotCount) {
    const struct {
        Vec3<UInt32> dimensions;
        UInt32 key;
    } rows[] = {{{1, 5, 1}, 29}, {{1, 1, 2}, 29}, {{5, 1, 5}, 30}, {{2, 2, 2}, 31}};
    for (const auto& row : rows) {
        const auto entry = MakeSamplerEntry(Describe(row.dimensions, TextureFormat::F32, 1, 0));
        ASSERT_OK(entry);
        EXPECT_EQ(entry->helper.key, row.key);
        EXPECT_EQ(entry->helper.samplingData._width, row.dimensions.x);
        EXPECT_EQ(entry->helper.samplingData._height, row.dimensions.y);
    }
}

TEST(SamplerEntry, HoldsWhatTheDescriptionSays) {
    TextureBindData texture = Describe({2, 2, 1}, TextureFormat::F32, 1, 1);
    const Float32 texels[] = {1, 2, 3, 4};
    texture._data = reinterpret_cast<const UChar*>(texels);
    texture._wrapV = WRAP_BORDER;
    texture._normalizedCoordinates = 2;
    texture._borderColor[3] = 7;
    const auto entry = MakeSamplerEntry(texture);
    ASSERT_OK(entry);
    const SamplingData& data = entry->helper.samplingData;
    EXPECT_EQ(std::memcmp(data._data, texels, sizeof(texels)), 0);
    EXPECT_NE(data._data, texture._data);
    EXPECT_EQ(data._size, 16);
    EXPECT_EQ(data._flags.bits, 0x200 | 1 << 6 | WRAP_BORDER << 2);
    EXPECT_EQ(data._borderColor[3], 7);
    EXPECT_EQ(entry->helper.elementType, DataType::Of<Float32>());

    const auto copy = CopySamplingData(data);
    ASSERT_OK(copy);
    EXPECT_NE((*copy)->_data, data._data);
    EXPECT_EQ(std::memcmp((*copy)->_data, texels, sizeof(texels)), 0);
    SamplingData described = **copy;
    described._data = data._data;
    EXPECT_EQ(described, data);
}

TEST(SamplerEntry, ShortPayloadIsCompletedWithZerosAndAWarning) {
    const UChar payload[] = {1, 2, 3};
    TextureBindData texture = Describe({5, 1, 1}, TextureFormat::U8, 1, 0);
    texture._data = payload;
    for (const Int size : {5, 3, 0}) {
        LogRecorder log;
        texture._size = size;
        texture._data = size == 5 ? nullptr : payload;
        const auto entry = MakeSamplerEntry(texture);
        ASSERT_OK(entry);
        const SamplingData& data = entry->helper.samplingData;
        EXPECT_EQ(data._size, size);
        const UChar expected[] = {1, 2, 3, 0, 0}, zeros[5]{};
        EXPECT_EQ(std::memcmp(data._data, size == 3 ? expected : zeros, 5), 0);
        BaseArray<String> messages;
        if (size < 5)
            messages = {Format("warning: the payload of a texture has @ bytes, but its texels take 5; those "
                               "that are missing are zero",
                               size)};
        EXPECT_EQ(log.entries, messages);
    }
}

TEST(SamplerEntry, WithoutMemoryItIsAnOutOfMemoryError) {
    constexpr UInt32 huge = 0xFFFFFFFF;
    TextureBindData rows[] = {Describe({2, 2, 1}, TextureFormat::F32, 1, 1),
                              Describe({2, 2, 1}, TextureFormat::F32, 1, 1),
                              Describe({huge, huge, huge}, TextureFormat::F32, 4, 1),
                              Describe({huge, huge, 1}, TextureFormat::F32, 1, 1)};
    rows[0]._size = std::numeric_limits<Int>::max();
    rows[1]._size = -1;
    rows[2]._size = rows[3]._size = 16;
    for (const TextureBindData& row : rows) {
        const auto entry = MakeSamplerEntry(row);
        ASSERT_FALSE(entry);
        EXPECT_TRUE(entry.GetError().Is(errorkind::OutOfMemory)) << entry.GetError().ToString();
    }
}

TEST(SamplerEntry, IsAcceptedByTheObjectsOfItsKind) {
    const auto make = [](TextureFormat format, UInt32 channels, UInt32 linear, UInt32 depth) {
        return std::move(*MakeSamplerEntry(Describe({2, 2, depth}, format, channels, linear))).helper;
    };
    const TextureSamplerDataHelper u8 = make(TextureFormat::U8, 1, 0, 1);
    const TextureSamplerDataHelper s32 = make(TextureFormat::S32, 1, 1, 2);
    const TextureSamplerDataHelper f16 = make(TextureFormat::F16, 3, 1, 1);
    const struct {
        DataType type;
        const TextureSamplerDataHelper* texture;
        bool isAccepted;
    } rows[] = {{DataType::Of<TextureSamplerObj_2D_R_U8_POINT>(), &u8, true},
                {DataType::Of<TextureSamplerObj_1D_R_U8_POINT>(), &u8, false},
                {DataType::Of<TextureSamplerObj_2D_R_F32_POINT>(), &u8, false},
                {DataType::Of<TextureSamplerObj_3D_R_S32_POINT>(), &s32, true},
                {DataType::Of<TextureSamplerObj_2D_RGB_F32_LINEAR>(), &f16, true},
                {DataType::Of<TextureSamplerObj_2D_RGBA_F32_LINEAR>(), &f16, false},
                {DataType::Of<TextureSamplerDataHelper*>(), &f16, true},
                {DataType::Of<Float32*>(), &f16, false}};
    for (const auto& row : rows)
        EXPECT_EQ(AcceptsTexture(row.type, *row.texture), row.isAccepted) << row.type.ToString();
}

} // namespace

} // namespace norvi
