#include "reference_sampler.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>

namespace norvi {

namespace {

double Round(double value) {
    return static_cast<double>(static_cast<float>(value));
}

std::uint64_t Extent(const ReferenceTexture& texture, int axis) {
    const std::uint32_t extents[] = {texture.bind._dimensions.x, texture.bind._dimensions.y,
                                     texture.bind._dimensions.z};
    return extents[axis];
}

int Wrap(const ReferenceTexture& texture, int axis) {
    const std::uint32_t wraps[] = {texture.bind._wrapU, texture.bind._wrapV, texture.bind._wrapW};
    return static_cast<int>(wraps[axis]);
}

/// One channel as it is stored.
double Stored(const ReferenceTexture& texture, std::uint64_t number) {
    switch (texture.bind._format) {
    case TextureFormat::U8:
        return texture.bind._data[number];
    case TextureFormat::S32: {
        std::int32_t value;
        std::memcpy(&value, texture.bind._data + 4 * number, 4);
        return value;
    }
    default: {
        float value;
        std::memcpy(&value, texture.bind._data + 4 * number, 4);
        return value;
    }
    }
}

bool IsFloat(const ReferenceTexture& texture) {
    return texture.bind._format == TextureFormat::F16 || texture.bind._format == TextureFormat::F32;
}

double DecodeSrgb(double x) {
    if (double{0.04045f} >= x)
        return Round(x / double{12.92f});
    const double base = Round(Round(x + double{0.055f}) / double{1.055f});
    return powf(static_cast<float>(base), 2.4f);
}

/// @param texel a whole number for each axis
ReferenceTexel Fetch(const ReferenceTexture& texture, const std::vector<std::int64_t>& texel, int layer) {
    // In arithmetic modulo 2^32, outermost first.
    std::uint64_t index = static_cast<std::uint32_t>(layer);
    for (int axis = texture.dimensions - 1; axis >= 0; --axis)
        index = (index * Extent(texture, axis) + static_cast<std::uint64_t>(texel[axis])) & 0xFFFFFFFFu;
    const std::uint64_t channels = texture.bind._numChannels;
    const std::uint64_t channelBytes = texture.bind._format == TextureFormat::U8 ? 1 : 4;
    const auto texels = static_cast<std::uint64_t>(texture.bind._size) / (channels * channelBytes);
    ReferenceTexel result(4, 0.0);
    for (std::uint64_t c = 0; c < channels && index < texels; ++c) {
        result[c] = Stored(texture, index * channels + c);
        if (texture.bind._srgb != 0 && IsFloat(texture))
            result[c] = DecodeSrgb(result[c]);
    }
    return result;
}

ReferenceTexel Border(const ReferenceTexture& texture) {
    ReferenceTexel result(4, 0.0);
    for (std::uint32_t c = 0; c < texture.bind._numChannels; ++c)
        result[c] = texture.bind._borderColor[c];
    if (texture.bind._format == TextureFormat::U8)
        result[0] = static_cast<double>(static_cast<std::int64_t>(result[0]) & 0xFF);
    if (texture.bind._format == TextureFormat::S32)
        result[0] = std::trunc(result[0]);
    return result;
}

/// Nothing for a tap outside.
std::optional<std::int64_t> WrapFloat(const ReferenceTexture& texture, int axis, double c) {
    const double n = Round(static_cast<double>(Extent(texture, axis)));
    if (!(c < 0) && !(c >= n))
        return static_cast<std::int64_t>(c);
    switch (Wrap(texture, axis)) {
    case 0: {
        const double m = std::fmod(c, n);
        return static_cast<std::int64_t>(c >= 0 ? m : Round(m + n));
    }
    case 1:
        return static_cast<std::int64_t>(c < 0 ? 0.0 : Round(n - 1.0));
    case 2:
        return std::nullopt;
    default:
        return static_cast<std::int64_t>(c);
    }
}

std::optional<std::int64_t> WrapInteger(const ReferenceTexture& texture, int axis, std::int64_t c) {
    const auto n = static_cast<std::int64_t>(Extent(texture, axis));
    if (0 <= c && c < n)
        return c;
    switch (Wrap(texture, axis)) {
    case 0: {
        const double m = std::fmod(Round(static_cast<double>(c)), Round(static_cast<double>(n)));
        return static_cast<std::int64_t>(m) + (c < 0 ? n : 0);
    }
    case 1:
        return c < 0 ? 0 : n - 1;
    case 2:
        return std::nullopt;
    default:
        return c;
    }
}

/// The position on an axis, half a texel included.
double Position(const ReferenceTexture& texture, const float* coordinates, int axis) {
    double p = coordinates[axis];
    if (texture.bind._normalizedCoordinates != 0)
        p = Round(p * Round(static_cast<double>(Extent(texture, axis))));
    return Round(p - 0.5);
}

} // namespace

bool IsDefined(const ReferenceTexture& texture, const float* coordinates) {
    for (int axis = 0; axis < texture.dimensions; ++axis)
        if (Wrap(texture, axis) == 3 && std::fabs(Position(texture, coordinates, axis)) > 2147483000.0)
            return false;
    return true;
}

ReferenceTexel ReferenceLoad(const ReferenceTexture& texture, const int* position, int layer) {
    std::vector<std::int64_t> texel;
    for (int axis = 0; axis < texture.dimensions; ++axis) {
        const auto wrapped = WrapInteger(texture, axis, position[axis]);
        if (!wrapped)
            return Border(texture);
        texel.push_back(*wrapped);
    }
    return Fetch(texture, texel, layer);
}

ReferenceTexel ReferenceSample(const ReferenceTexture& texture, const float* coordinates, int layer) {
    // Taps with x innermost; interpolation along an axis halves the list.
    std::vector<ReferenceTexel> taps;
    for (int tap = 0; tap < 1 << texture.dimensions; ++tap) {
        std::vector<std::int64_t> texel;
        for (int axis = 0; axis < texture.dimensions; ++axis) {
            double c = Position(texture, coordinates, axis);
            if (tap & 1 << axis)
                c = Round(c + 1.0);
            if (const auto wrapped = WrapFloat(texture, axis, c))
                texel.push_back(*wrapped);
        }
        const bool isInside = texel.size() == static_cast<std::size_t>(texture.dimensions);
        taps.push_back(isInside ? Fetch(texture, texel, layer) : Border(texture));
    }
    for (int axis = 0; axis < texture.dimensions; ++axis) {
        const double c = Position(texture, coordinates, axis);
        const double fraction = Round(c - std::floor(c));
        for (std::size_t i = 0; i < taps.size() / 2; ++i)
            for (int component = 0; component < 4; ++component) {
                const double a = taps[2 * i][component], b = taps[2 * i + 1][component];
                taps[i][component] = Round(a + Round(fraction * Round(b - a)));
            }
        taps.resize(taps.size() / 2);
    }
    return taps[0];
}

} // namespace norvi
