#include "norvi/texture_contents.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include "norvi/picture.h"

namespace norvi {

namespace {

Int CountTexels(const BaseArray<Int>& extents) {
    Int count = 1;
    for (const Int extent : extents)
        count *= extent;
    return count;
}

/// The program counts as dimensions of a texture those that have more than one texel.
Result<void> CheckExtents(const TextureKind& kind, BaseArray<Int> extents) {
    const Int count = CountTexels(extents);
    const String size = fmt::format("{}", fmt::join(extents, "x"));
    extents.resize(3, 1);
    for (Int axis = 0; axis < 3; ++axis)
        if ((extents[static_cast<std::size_t>(axis)] > 1) != (axis < kind.dimensions))
            return IllegalArgumentError(
                Format("the parameter is of type texture @, which has @ of at least 2 texels each, not @",
                       kind.name, kind.GetSizeForm(), size));
    // The system would promise more than there is, and end the program later.
    const Int memory = sysconf(_SC_PHYS_PAGES) * sysconf(_SC_PAGESIZE);
    const Int most =
        std::min<Int>(memory / (kind.channels * kind.GetChannelSize()), std::numeric_limits<UInt32>::max());
    if (count > most)
        return IllegalArgumentError(
            Format("a texture of type @ has at most @ texels on this machine", kind.name, most));
    return OK;
}

Result<void> CheckFilter(const TextureKind& kind, std::optional<Bool> isLinear) {
    if (isLinear && *isLinear != kind.isLinear)
        return IllegalArgumentError(Format("the filter is @, but the parameter is of type texture @",
                                           *isLinear ? "linear" : "point", kind.name));
    return OK;
}

TextureBindData Describe(const PlannedTexture& texture, BaseArray<Int> extents) {
    const TextureArgument& argument = texture.argument;
    TextureBindData description;
    description._size = CountTexels(extents) * texture.kind->channels * texture.kind->GetChannelSize();
    extents.resize(3, 1);
    description._dimensions = {static_cast<UInt32>(extents[0]), static_cast<UInt32>(extents[1]),
                               static_cast<UInt32>(extents[2])};
    description._format = texture.kind->format;
    description._numChannels = static_cast<UInt32>(texture.kind->channels);
    description._sampleLinear = texture.kind->isLinear;
    description._normalizedCoordinates = argument.isNormalized;
    description._srgb = argument.isSrgb;
    description._wrapU = description._wrapV = description._wrapW = argument.wrap;
    return description;
}

void AppendChannel(TextureFormat format, Float32 value, BaseArray<UChar>& texels) {
    if (format == TextureFormat::U8) {
        // Written so that a pixel that is no number becomes 0.
        texels.push_back(static_cast<UChar>(std::round(value > 0 ? std::min(value, 1.0f) * 255 : 0)));
        return;
    }
    UChar bytes[sizeof(value)];
    std::memcpy(bytes, &value, sizeof(value));
    texels.insert(texels.end(), std::begin(bytes), std::end(bytes));
}

BaseArray<UChar> TexelsOf(const Picture& picture, const TextureKind& kind) {
    const Picture source = kind.channels == 1 ? ToLuminance(picture) : picture;
    const Int pixels = source.width * source.height;
    BaseArray<UChar> texels;
    texels.reserve(static_cast<std::size_t>(pixels * kind.channels * kind.GetChannelSize()));
    for (Int i = 0; i < pixels; ++i) {
        const Float32* pixel = &source.pixels[static_cast<std::size_t>(i * source.channels)];
        for (Int channel = 0; channel < kind.channels; ++channel)
            AppendChannel(kind.format, ChannelValue(pixel, source.channels, channel), texels);
    }
    return texels;
}

Result<TextureContents> Load(const PlannedTexture& texture) {
    NORVI_TRY(CheckFilter(*texture.kind, texture.argument.isLinear));
    TextureContents contents;
    BaseArray<Int> extents = texture.argument.extents;
    if (!texture.argument.file.empty()) {
        NORVI_TRY_VALUE(picture, ReadPicture(texture.argument.file));
        extents = {picture.width, picture.height};
        contents.texels = TexelsOf(picture, *texture.kind);
    }
    NORVI_TRY(CheckExtents(*texture.kind, extents));
    contents.description = Describe(texture, extents);
    contents.description._data = contents.texels.empty() ? nullptr : contents.texels.data();
    return contents;
}

} // namespace

Result<TextureContents> LoadTextureContents(const PlannedTexture& texture) {
    return CatchOutOfMemory([&]() -> Result<TextureContents> {
        auto contents = Load(texture);
        if (!contents && contents.GetError().Is(errorkind::IllegalArgument))
            return ArgumentError("--texture", texture.text, contents.GetError().GetMessage());
        return contents;
    });
}

DataType TextureElementType(const SamplingData& texture) {
    return texture._format == TextureFormat::U8 ? DataType::Of<UChar>() : DataType::Of<Float32>();
}

BaseArray<Int> TextureShape(const SamplingData& texture) {
    BaseArray<Int> shape{Int{texture._height} * texture._depth, texture._width};
    if (texture._numChannels > 1)
        shape.push_back(texture._numChannels);
    return shape;
}

} // namespace norvi
