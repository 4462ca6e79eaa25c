#include "sampling/texture_sampling_structs.h"

#include "sampling/datatype_declaration.h"

namespace norvi {

namespace {

constexpr UInt32 FormatCount = 8;
constexpr UInt32 MaxChannels = 4;

#define NORVI_PIXELFORMAT "net.norvi.image.pixelformat."
#define NORVI_DYNAMIC NORVI_PIXELFORMAT "dynamic."

/// By format and number of channels. There are no signed 8-bit formats of three or four channels, and none of
/// signed 16 bit.
constexpr const char* pixelFormatIds[FormatCount][MaxChannels] = {
    {NORVI_DYNAMIC "redu8", NORVI_DYNAMIC "redgreenu8", NORVI_PIXELFORMAT "rgb.u8",
     NORVI_PIXELFORMAT "rgba.u8"},
    {NORVI_DYNAMIC "reds8", NORVI_DYNAMIC "redgreens8", NORVI_PIXELFORMAT "rgb.u8",
     NORVI_PIXELFORMAT "rgba.u8"},
    {NORVI_DYNAMIC "redu16", NORVI_DYNAMIC "redgreenu16", NORVI_PIXELFORMAT "rgb.u16",
     NORVI_PIXELFORMAT "rgba.u16"},
    {},
    {NORVI_DYNAMIC "redu32", NORVI_DYNAMIC "redgreenu32", NORVI_PIXELFORMAT "rgb.u32",
     NORVI_PIXELFORMAT "rgba.u32"},
    {NORVI_DYNAMIC "reds32", NORVI_DYNAMIC "redgreens32", NORVI_PIXELFORMAT "rgb.s32",
     NORVI_PIXELFORMAT "rgba.s32"},
    {NORVI_DYNAMIC "redf16", NORVI_DYNAMIC "redgreenf16", NORVI_PIXELFORMAT "rgb.f16",
     NORVI_PIXELFORMAT "rgba.f16"},
    {NORVI_DYNAMIC "redf32", NORVI_DYNAMIC "redgreenf32", NORVI_PIXELFORMAT "rgb.f32",
     NORVI_PIXELFORMAT "rgba.f32"},
};

#define NORVI_RECORD_ID(name) "net.norvi.datatype.parallelprogram.textures." name

ClassDeclaration g_dataTypes[] = {
    DeclareDataType<TextureBindData>(NORVI_RECORD_ID("texturebinddata")),
    DeclareDataType<SamplingData>(NORVI_RECORD_ID("samplingdata")),
    DeclareDataType<PackedTextureFlags>(NORVI_RECORD_ID("packedtextureflags")),
    DeclareDataType<ImageStorageBuffer>(NORVI_RECORD_ID("imagestoragebuffer")),
    DeclareDataType<TextureSamplerDataHelper*>(NORVI_RECORD_ID("texturesamplerdatahelper")),
};

} // namespace

Result<DataType> GetElementType(TextureFormat format) noexcept {
    switch (format) {
    case TextureFormat::U8:
        return DataType::Of<UChar>();
    case TextureFormat::S8:
        return DataType::Of<Char>();
    case TextureFormat::U16:
        return DataType::Of<UInt16>();
    case TextureFormat::S16:
        return DataType::Of<Int16>();
    case TextureFormat::U32:
        return DataType::Of<UInt32>();
    case TextureFormat::S32:
        return DataType::Of<Int32>();
    case TextureFormat::F16:
    case TextureFormat::F32:
        return DataType::Of<Float32>();
    }
    return IllegalArgumentError("TextureFormat not defined.");
}

Result<String> GetPixelFormatId(TextureFormat format, UInt32 numChannels) noexcept {
    return CatchOutOfMemory([&]() -> Result<String> {
        const auto row = static_cast<UInt32>(format);
        if (row < FormatCount && numChannels - 1 < MaxChannels)
            if (const char* id = pixelFormatIds[row][numChannels - 1])
                return String(id);
        return IllegalArgumentError(
            "wrong combination of _numChannels and _format to determine the PixelFormat");
    });
}

TextureFormat PromoteTextureFormat(TextureFormat format, Bool readWrite16bit, Bool readWrite8bit) {
    switch (format) {
    case TextureFormat::F16:
        return readWrite16bit ? format : TextureFormat::F32;
    case TextureFormat::U8:
    case TextureFormat::U16:
        return readWrite8bit ? format : TextureFormat::U32;
    case TextureFormat::S8:
        return readWrite8bit ? format : TextureFormat::S32;
    default:
        return format;
    }
}

} // namespace norvi
