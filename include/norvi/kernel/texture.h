// Textures as kernel text sees them.
//
// A parameter is written "(const TextureSampler_2D_RGBA_F32_LINEAR) name", or without const where the kernel
// stores to it. The name says dimensions, channels, format and filter of the texture that may be bound:
// 1D, 2D or 3D; R with U8, U16, S32 or F32 and POINT, or R, RG, RGB or RGBA with F32 and LINEAR.
//
// Texels and samples always have four components: vec4 of F32, uvec4 of U8 and U16, ivec4 of S32. Components
// that the texture does not have are 0. A texture that was never bound reads as zeros, has size 0, and
// ignores stores.
#pragma once

#include <algorithm>
#include <cstring>

#include <norvi/kernel/vector.h>
#include <norvi/texture_sampler_objects.h>

namespace norvi::kernel {

#define NORVI_TEXTURE_SAMPLER(dims, letters, channels, format, formatId, filter, filterId, linear)           \
    using TextureSampler_##dims##D_##letters##_##format##_##filter =                                         \
        TextureSamplerObj_##dims##D_##letters##_##format##_##filter;
NORVI_FOR_EACH_TEXTURE_SAMPLER_OBJ(NORVI_TEXTURE_SAMPLER)
#undef NORVI_TEXTURE_SAMPLER

namespace detail {

template <typename T>
concept TextureObject = requires {
    T::Dimensions;
    T::Channels;
    T::Format;
    T::IsLinear;
};

template <typename One, typename Two, typename Three, int Dims>
using ByDimensions = std::conditional_t<Dims == 1, One, std::conditional_t<Dims == 2, Two, Three>>;
template <TextureObject T>
using SamplePosition = ByDimensions<float, vec2, vec3, T::Dimensions>;
template <TextureObject T>
using TexelPosition = ByDimensions<int, ivec2, ivec3, T::Dimensions>;

/// The stored type of a channel, and what kernels see a texel as.
template <TextureFormat Format>
struct ChannelOf {
    using Stored = float;
    using Texel = vec4;
};
template <>
struct ChannelOf<TextureFormat::U8> {
    using Stored = UChar;
    using Texel = uvec4;
};
template <>
struct ChannelOf<TextureFormat::U16> {
    using Stored = UInt16;
    using Texel = uvec4;
};
template <>
struct ChannelOf<TextureFormat::S32> {
    using Stored = int;
    using Texel = ivec4;
};
template <TextureObject T>
using StoredOf = typename ChannelOf<T::Format>::Stored;
template <TextureObject T>
using TexelOf = typename ChannelOf<T::Format>::Texel;

// Here and in the functions of textures positions and texels go component by component: the processor cannot
// read what two writes have left side by side before both are done.

template <int Dims, typename Position, typename Number>
void CopyPosition(const Position& position, Number* coordinates) {
    if constexpr (Dims == 1)
        coordinates[0] = position;
    else
        for (int axis = 0; axis < Dims; ++axis)
            coordinates[axis] = position.components[axis];
}

/// Calls a function of the texture. Places are wide enough for every texture that there is.
template <typename T, typename Number, typename Position>
TexelOf<T> ReadTexture(const T& object, TextureFunction function, const Position& position, int layer) {
    Number coordinates[3]{};
    CopyPosition<T::Dimensions>(position, coordinates);
    alignas(16) StoredOf<T> result[16 / sizeof(StoredOf<T>)]{};
    function(result, coordinates, layer, &object.texture->samplingData);
    TexelOf<T> texel(0);
    for (int i = 0; i < T::Channels; ++i)
        texel.components[i] = result[i];
    return texel;
}

template <typename T>
bool HoldsTexelsOf(const SamplingData& data) {
    constexpr bool isFloat = std::is_same_v<StoredOf<T>, float>;
    return data._numChannels == T::Channels &&
           (data._format == T::Format || (isFloat && data._format == TextureFormat::F16));
}

template <typename T>
concept DeclaredWithoutConst = !std::is_const_v<T>;

inline int ExtentOf(const SamplingData& data, int axis) {
    return static_cast<int>(axis == 0 ? data._width : axis == 1 ? data._height : data._depth);
}

} // namespace detail

/// The filtered value at `position`, which is in 0..1 or in texels as the texture was described; wrap modes
/// are the texture's too. Only textures with a linear filter have samples.
/// @param layer slice of an array of textures
template <detail::TextureObject T>
vec4 SampleTexture(const T& object, const detail::SamplePosition<T>& position, int layer = 0) {
    static_assert(T::IsLinear, "a POINT texture is read with LoadTexture");
    if (!object.texture) [[unlikely]]
        return vec4(0.0f);
    return detail::ReadTexture<T, float>(object, object.texture->sampleFunction, position, layer);
}

/// The texel at `position`, counted from 0; outside the texture its wrap modes tell which.
template <detail::TextureObject T>
detail::TexelOf<T> LoadTexture(const T& object, const detail::TexelPosition<T>& position, int layer = 0) {
    if (!object.texture) [[unlikely]]
        return detail::TexelOf<T>(0);
    return detail::ReadTexture<T, int>(object, object.texture->loadFunction, position, layer);
}

/// Writes the texel at `position` of the first slice; positions outside the texture are ignored. Components
/// that the texture does not have are dropped, and integers keep the low bits that fit the format. Two
/// invocations must not write one texel, and none may read what another one writes in the same dispatch.
///
/// A macro, because the body of a kernel sees all its parameters as const: whether one may be written is in
/// its declaration.
#define StoreTexture(texture, ...) norvi::kernel::StoreTexel<decltype(texture)>(texture, __VA_ARGS__)

template <detail::DeclaredWithoutConst Declared, detail::TextureObject T>
void StoreTexel(const T& object, const detail::TexelPosition<T>& position, const detail::TexelOf<T>& value) {
    if (!object.texture || !detail::HoldsTexelsOf<T>(object.texture->samplingData)) [[unlikely]]
        return;
    const SamplingData& data = object.texture->samplingData;
    int coordinates[T::Dimensions];
    detail::CopyPosition<T::Dimensions>(position, coordinates);
    uint index = 0;
    for (int axis = T::Dimensions - 1; axis >= 0; --axis) {
        const int extent = detail::ExtentOf(data, axis);
        if (coordinates[axis] < 0 || coordinates[axis] >= extent)
            return;
        index = index * static_cast<uint>(extent) + static_cast<uint>(coordinates[axis]);
    }
    detail::StoredOf<T> texel[T::Channels];
    for (int i = 0; i < T::Channels; ++i)
        texel[i] = static_cast<detail::StoredOf<T>>(value.components[i]);
    std::memcpy(data._data + std::size_t{index} * sizeof(texel), texel, sizeof(texel));
}

/// Width, height and depth in texels, as many as the texture has dimensions.
template <detail::TextureObject T>
detail::TexelPosition<T> GetTextureSize(const T& object) {
    int extents[T::Dimensions]{};
    if (object.texture)
        for (int axis = 0; axis < T::Dimensions; ++axis)
            extents[axis] = detail::ExtentOf(object.texture->samplingData, axis);
    detail::TexelPosition<T> size;
    std::memcpy(static_cast<void*>(&size), extents, sizeof(size));
    return size;
}

/// SampleTexture for `count` positions, faster where the processor has AVX2 and the texture
/// is not sRGB; results are the same. Only on the processor.
template <detail::TextureObject T>
void SampleTextureRun(const T& object, const detail::SamplePosition<T>* positions, vec4* results, Int count,
                      int layer = 0) {
    static_assert(T::IsLinear, "a POINT texture is read with LoadTexture");
    // A texture of other dimensions would read other positions than there are.
    const TextureSamplerDataHelper* texture = object.texture;
    const bool canRead = texture && texture->sampleRunFunction && (texture->key & 3) == T::Dimensions;
    const int channels = canRead ? static_cast<int>(texture->samplingData._numChannels) : 0;
    constexpr Int block = 64;
    float samples[block * 4];
    while (count > 0) {
        const Int part = std::min(count, block);
        if (canRead)
            texture->sampleRunFunction(samples, positions, part, layer, texture);
        for (Int i = 0; i < part; ++i) {
            results[i] = vec4(0.0f);
            for (int c = 0; c < std::min(channels, T::Channels); ++c)
                results[i].components[c] = samples[i * channels + c];
        }
        positions += part;
        results += part;
        count -= part;
    }
}

} // namespace norvi::kernel
