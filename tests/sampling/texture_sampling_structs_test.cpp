// The records and what their fields mean.
#include "sampling/texture_sampling_structs.h"

#include <norvi/host/module.h>
#include <norvi/texture_datatypes.h>
#include <norvi/texture_sampler_objects.h>
#include <norvi/texture_shader_entries.h>

#include "host/log_recorder.h"
#include "support/results.h"

namespace norvi {

namespace {

TEST(TextureRecords, FlagsArePacked) {
    const struct {
        UInt32 wrapU, wrapV, wrapW, linear;
        UChar normalized, srgb;
        UInt16 bits;
    } rows[] = {{0, 0, 0, 0, 0, 0, 0},    {1, 0, 0, 0, 0, 0, 1},     {0, 2, 0, 0, 0, 0, 8},
                {0, 0, 3, 0, 0, 0, 0x30}, {0, 0, 0, 1, 0, 0, 0x40},  {0, 0, 0, 2, 0, 0, 0x80},
                {5, 6, 7, 5, 0, 0, 0x79}, {0, 0, 0, 0, 1, 0, 0x100}, {0, 0, 0, 0, 255, 0, 0xFF00},
                {0, 0, 0, 0, 0, 255, 0},  {256, 0, 0, 0, 0, 0, 0},   {3, 3, 3, 3, 255, 255, 0xFFFF}};
    for (const auto& row : rows) {
        TextureBindData texture;
        texture._wrapU = row.wrapU;
        texture._wrapV = row.wrapV;
        texture._wrapW = row.wrapW;
        texture._sampleLinear = row.linear;
        texture._normalizedCoordinates = row.normalized;
        texture._srgb = row.srgb;
        const PackedTextureFlags flags = PackedTextureFlags::Of(texture);
        EXPECT_EQ(flags.bits, row.bits);
        EXPECT_EQ(flags.IsLinear(), (row.linear & 3) == 1);
        EXPECT_EQ(flags.AreCoordinatesNormalized(), row.normalized != 0);
        EXPECT_EQ(flags.GetWrap(1), row.wrapV & 3);
    }
}

TEST(TextureRecords, MovingSamplingDataTakesTexelsAndExtents) {
    UChar texels[4];
    SamplingData source;
    source._borderColor[1] = 5;
    source._data = texels;
    source._numChannels = 4;
    source._size = 4;
    source._width = source._height = source._depth = 1;
    source._flags.bits = 7;
    source._format = TextureFormat::S8;
    const SamplingData whole = source;
    const SamplingData target = std::move(source);
    EXPECT_EQ(target, whole);
    SamplingData rest;
    rest._numChannels = 4;
    rest._size = 4;
    rest._flags.bits = 7;
    rest._format = TextureFormat::S8;
    EXPECT_EQ(source, rest);
}

TEST(TextureRecords, PixelFormats) {
    constexpr const char* None = "wrong combination of _numChannels and _format to determine the PixelFormat";
    const struct {
        UInt32 format;
        const char* ids[4];
    } rows[] = {
        {0, {"dynamic.redu8", "dynamic.redgreenu8", "rgb.u8", "rgba.u8"}},
        {1, {"dynamic.reds8", "dynamic.redgreens8", "rgb.u8", "rgba.u8"}},
        {2, {"dynamic.redu16", "dynamic.redgreenu16", "rgb.u16", "rgba.u16"}},
        {3, {}},
        {4, {"dynamic.redu32", "dynamic.redgreenu32", "rgb.u32", "rgba.u32"}},
        {5, {"dynamic.reds32", "dynamic.redgreens32", "rgb.s32", "rgba.s32"}},
        {6, {"dynamic.redf16", "dynamic.redgreenf16", "rgb.f16", "rgba.f16"}},
        {7, {"dynamic.redf32", "dynamic.redgreenf32", "rgb.f32", "rgba.f32"}},
        {8, {}},
    };
    for (const auto& row : rows)
        for (UInt32 channels = 0; channels <= 5; ++channels) {
            const auto id = GetPixelFormatId(static_cast<TextureFormat>(row.format), channels);
            const char* expected = channels >= 1 && channels <= 4 ? row.ids[channels - 1] : nullptr;
            if (expected)
                EXPECT_EQ(*id, Format("net.norvi.image.pixelformat.@", expected));
            else
                EXPECT_TRUE(FailsWith(id, errorkind::IllegalArgument, None)) << row.format << channels;
        }
}

TEST(TextureRecords, FormatsArePromotedWhereTheCardNeedsIt) {
    // By format; with both, without 16 bit, without 8 bit, without either.
    constexpr UInt32 promoted[8][4] = {{0, 0, 4, 4}, {1, 1, 5, 5}, {2, 2, 4, 4}, {3, 3, 3, 3},
                                       {4, 4, 4, 4}, {5, 5, 5, 5}, {6, 7, 6, 7}, {7, 7, 7, 7}};
    for (UInt32 format = 0; format < 8; ++format)
        for (int missing = 0; missing < 4; ++missing)
            EXPECT_EQ(
                PromoteTextureFormat(static_cast<TextureFormat>(format), !(missing & 1), !(missing & 2)),
                static_cast<TextureFormat>(promoted[format][missing]));
}

TEST(TextureRecords, ElementTypes) {
    constexpr const char* names[] = {"uchar",  "char",  "uint16",  "int16",
                                     "uint32", "int32", "float32", "float32"};
    for (UInt32 format = 0; format < 8; ++format)
        EXPECT_EQ(GetElementType(static_cast<TextureFormat>(format))->ToString(), names[format]);
    EXPECT_TRUE(FailsWith(GetElementType(static_cast<TextureFormat>(8)), errorkind::IllegalArgument,
                          "TextureFormat not defined."));
}

/// Runs what the module declares, as its loader does.
struct StartedModule {
    StartedModule() {
        for (Declaration* declaration = g_norvi.GetFirst(); declaration; declaration = declaration->GetNext())
            EXPECT_OK(declaration->Start());
    }
    ~StartedModule() {
        for (Declaration* declaration = g_norvi.GetFirst(); declaration; declaration = declaration->GetNext())
            declaration->Stop();
    }
};

TEST(TextureRecords, DataTypesAreRegistered) {
    const StartedModule started;
    const String prefix = "net.norvi.datatype.parallelprogram.textures.";
    std::vector<std::tuple<String, String, Int>> rows = {
        {prefix + "texturebinddata", "TextureBindData", sizeof(TextureBindData)},
        {prefix + "samplingdata", "SamplingData", sizeof(SamplingData)},
        {prefix + "packedtextureflags", "PackedTextureFlags", 2},
        {prefix + "imagestoragebuffer", "ImageStorageBuffer", 24},
        {prefix + "texturesamplerdatahelper", "TextureSamplerDataHelper", 8},
        {"net.norvi.datatype.shaderdataentries.databufferentry", "DataBufferEntry", sizeof(DataBufferEntry)},
        {"net.norvi.datatype.shaderdataentries.texturesamplerentry", "TextureSamplerEntry",
         sizeof(TextureSamplerEntry)}};
    for (const char* dimension : {"1D_", "2D_", "3D_"}) {
        for (const char* format : {"U8", "U16", "S32", "F32"}) {
            const String inId = String(format) == "S32" ? "I32" : format;
            rows.push_back({prefix + "texturesamplerobj_" + dimension + "R_" + inId + "_point",
                            String("TextureSamplerObj_") + dimension + "R_" + format + "_POINT", 8});
        }
        for (const char* channels : {"R", "RG", "RGB", "RGBA"})
            rows.push_back({prefix + "texturesamplerobj_" + dimension + channels + "_F32_linear",
                            String("TextureSamplerObj_") + dimension + channels + "_F32_LINEAR", 8});
    }
    ASSERT_EQ(rows.size(), 31u);
    EXPECT_EQ(Registry::Get(registryid::DataTypes).GetIds().size(), rows.size());
    for (const auto& [id, name, size] : rows) {
        const auto type = FindDataType(id);
        ASSERT_OK(type);
        EXPECT_EQ(type->ToString(), "norvi::" + name);
        EXPECT_EQ((*type)->size, size) << name;
        EXPECT_EQ((*type)->kind == DataTypeKind::Pointer, size == 8) << name;
    }
    EXPECT_TRUE(
        FailsWith(FindDataType("x"), errorkind::NullPtr, "no data type with the id 'x' is registered"));
}

template <typename Entry>
void ExpectStops() {
    LogRecorder log;
    const Entry a, b;
    EXPECT_EQ(a.Compare(b), 0);
    EXPECT_FALSE(a.IsEqual(b));
    EXPECT_EQ(a.GetHashCode(), 0u);
    EXPECT_EQ(a.GetUniqueHashCode(), 0u);
    const DataType type = DataType::Of<Entry>();
    EXPECT_FALSE(type->operations.equal(&a, &b));
    EXPECT_EQ(type->operations.hash(&a), 0u);
    const char* operations[] = {"Compare",           "IsEqual", "GetHashCode",
                                "GetUniqueHashCode", "IsEqual", "GetHashCode"};
    ASSERT_EQ(log.entries.size(), std::size(operations));
    for (std::size_t i = 0; i < std::size(operations); ++i)
        EXPECT_TRUE(log.entries[i].starts_with(Format("critical: Stop: @ not defined. [", operations[i])))
            << log.entries[i];
}

TEST(ShaderDataEntries, ComparingAndHashingStops) {
    ExpectStops<DataBufferEntry>();
    ExpectStops<TextureSamplerEntry>();
}

TEST(ShaderDataEntries, BufferEntryShowsAndMovesItsReferences) {
    DataBufferEntry entry;
    EXPECT_EQ(entry.ToString(), "(0,nullptr,nullptr,0,0,nullptr,)");
    entry.handle = 5;
    entry.buffer = std::make_shared<int>();
    entry.backingStore = entry.buffer;
    entry.capacity = 8;
    entry.count = 3;
    entry.elementType = DataType::Of<Float32>();
    entry.id = "cells";
    const String address = ToText(reinterpret_cast<UInt64>(entry.buffer.get()));
    const String text = Format("(5,@,@,8,3,float32,cells)", address, address);
    DataBufferEntry copy = entry;
    EXPECT_EQ(copy.ToString(), text);
    EXPECT_EQ(copy.buffer.use_count(), 4);
    DataBufferEntry& itself = copy;
    copy = std::move(itself);
    EXPECT_EQ(copy.ToString(), text);
    const DataBufferEntry moved = std::move(entry);
    EXPECT_EQ(moved.ToString(), text);
    EXPECT_EQ(entry.ToString(), "(5,nullptr,nullptr,8,3,nullptr,cells)");
}

TEST(ShaderDataEntries, CopiedTextureEntryDoesNotShareTexels) {
    UChar texel = 0;
    TextureSamplerEntry entry;
    entry.texture = 1;
    entry.sampler = 2;
    entry.textureItem = entry.samplerItem = std::make_shared<int>();
    entry.samplingData._data = &texel;
    entry.samplingData._width = 9;
    entry.isImage = 1;
    entry.id = "t";
    TextureSamplerEntry copy;
    copy = entry;
    EXPECT_EQ(copy.samplingData._data, nullptr);
    EXPECT_EQ(copy.samplingData._width, 9u);
    EXPECT_EQ(std::tie(copy.texture, copy.sampler, copy.textureItem, copy.samplerItem, copy.isImage, copy.id),
              std::tie(entry.texture, entry.sampler, entry.textureItem, entry.samplerItem, entry.isImage,
                       entry.id));
    const TextureSamplerEntry moved = std::move(entry);
    EXPECT_EQ(moved.samplingData._data, &texel);
}

} // namespace

} // namespace norvi
