#include "texture_type.h"

#include <charconv>

#include "text_lines.h"

namespace norvi {

namespace {

struct ChannelFormat {
    std::string_view name; ///< in type names
    std::string_view id;   ///< at the end of ids
    Int size;              ///< bytes
};

constexpr ChannelFormat channelFormats[] = {{"F32", "f32", 4}, {"F16", "f16", 2}, {"U8", "u8", 1},
                                            {"U16", "u16", 2}, {"U32", "u32", 4}, {"S32", "s32", 4}};

constexpr std::string_view channelIds[] = {"dynamic.red", "dynamic.redgreen", "rgb.", "rgba."};

/// Kinds of textures by their number of dimensions, from 1.
constexpr UInt32 textureKinds[] = {1, 6, 10};

struct PixelFormatRow {
    UInt32 channelCount;
    const ChannelFormat* format;
    DataType::Description description;
};

BaseArray<PixelFormatRow> MakePixelFormats() {
    BaseArray<PixelFormatRow> rows;
    for (UInt32 channels = 1; channels <= std::size(channelIds); ++channels)
        for (const ChannelFormat& format : channelFormats) {
            DataType::Description description;
            description.name =
                String("net.norvi.image.pixelformat.").append(channelIds[channels - 1]).append(format.id);
            description.size = static_cast<Int>(channels) * format.size;
            description.alignment = format.size;
            description.isTrivial = true;
            rows.push_back({channels, &format, std::move(description)});
        }
    return rows;
}

const BaseArray<PixelFormatRow>& GetPixelFormats() {
    static const BaseArray<PixelFormatRow> rows = MakePixelFormats();
    return rows;
}

/// "2D" gives 2. No number, and no dimension that textures have, give 0.
UInt32 ReadDimension(std::string_view text) {
    String digits(text);
    if (digits.size() > 1)
        digits.erase(1, 1);
    UInt32 dimension = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), dimension);
    const bool isNumber = error == std::errc() && end == digits.data() + digits.size();
    return isNumber && dimension <= std::size(textureKinds) ? dimension : 0;
}

} // namespace

DataType GetPixelFormat(size_t channelCount, std::string_view format) {
    for (const PixelFormatRow& row : GetPixelFormats())
        if (row.channelCount == channelCount && row.format->name == format)
            return DataType(&row.description);
    return {};
}

PixelFormatParts GetPixelFormatParts(const DataType& pixelFormat) {
    for (const PixelFormatRow& row : GetPixelFormats())
        if (pixelFormat == DataType(&row.description))
            return {row.channelCount, row.format->id};
    return {};
}

Result<std::optional<KernelTextureEntry>> ReadTextureType(std::string_view typeName) {
    const Words parts = SplitAt(typeName, "_");
    if (parts.size() != 5 || parts[0] != "TextureSampler")
        return std::optional<KernelTextureEntry>();
    KernelTextureEntry texture;
    texture.pixelFormat = GetPixelFormat(parts[2].size(), parts[3]);
    if (!texture.pixelFormat)
        return IllegalArgumentError("wrong combination of numChannels and format string");
    const UInt32 dimension = ReadDimension(parts[1]);
    const bool isPoint = parts[4].find("POINT") != parts[4].npos;
    const bool isLinear = !isPoint && parts[4].find("LINEAR") != parts[4].npos;
    if (dimension == 0 || (!isPoint && !isLinear))
        return std::optional<KernelTextureEntry>();
    texture.textureKind = textureKinds[dimension - 1];
    texture.isLinear = isLinear;
    return std::optional(std::move(texture));
}

} // namespace norvi
