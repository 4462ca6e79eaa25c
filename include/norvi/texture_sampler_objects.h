// The typed objects through which kernels read bound textures.
#pragma once

#include <norvi/texture_records.h>

namespace norvi {

/// What a kernel expects of the texture behind an object.
template <int TheDimensions, int TheChannels, TextureFormat TheFormat, bool TheFilter>
struct TextureSamplerObj {
    static constexpr int Dimensions = TheDimensions;
    static constexpr int Channels = TheChannels;
    static constexpr TextureFormat Format = TheFormat;
    static constexpr bool IsLinear = TheFilter;

    /// Null until a texture is bound. Mutable, since the program binds members that a kernel declares const.
    mutable TextureSamplerDataHelper* texture = nullptr;

    bool operator==(const TextureSamplerObj&) const = default;
};

// The objects, as (dimensions, channels, number of channels, format in the type name, format in the id,
// filter in the type name, filter in the id, is it linear). The spelling of the signed format differs on
// purpose.
#define NORVI_FOR_EACH_TEXTURE_SAMPLER_OBJ(X)                                                                \
    NORVI_TEXTURE_SAMPLER_OBJ_DIMENSIONS(X, R, 1, U8, U8, POINT, point, false)                               \
    NORVI_TEXTURE_SAMPLER_OBJ_DIMENSIONS(X, R, 1, U16, U16, POINT, point, false)                             \
    NORVI_TEXTURE_SAMPLER_OBJ_DIMENSIONS(X, R, 1, S32, I32, POINT, point, false)                             \
    NORVI_TEXTURE_SAMPLER_OBJ_DIMENSIONS(X, R, 1, F32, F32, POINT, point, false)                             \
    NORVI_TEXTURE_SAMPLER_OBJ_DIMENSIONS(X, R, 1, F32, F32, LINEAR, linear, true)                            \
    NORVI_TEXTURE_SAMPLER_OBJ_DIMENSIONS(X, RG, 2, F32, F32, LINEAR, linear, true)                           \
    NORVI_TEXTURE_SAMPLER_OBJ_DIMENSIONS(X, RGB, 3, F32, F32, LINEAR, linear, true)                          \
    NORVI_TEXTURE_SAMPLER_OBJ_DIMENSIONS(X, RGBA, 4, F32, F32, LINEAR, linear, true)
#define NORVI_TEXTURE_SAMPLER_OBJ_DIMENSIONS(X, ...) X(1, __VA_ARGS__) X(2, __VA_ARGS__) X(3, __VA_ARGS__)

#define NORVI_TEXTURE_SAMPLER_OBJ(dims, letters, channels, format, formatId, filter, filterId, linear)       \
    struct TextureSamplerObj_##dims##D_##letters##_##format##_##filter                                       \
        : TextureSamplerObj<dims, channels, TextureFormat::format, linear> {};                               \
    static_assert(sizeof(TextureSamplerObj_##dims##D_##letters##_##format##_##filter) == sizeof(void*));     \
    NORVI_DATATYPE_NAME(TextureSamplerObj_##dims##D_##letters##_##format##_##filter,                         \
                        "norvi::TextureSamplerObj_" #dims "D_" #letters "_" #format "_" #filter);            \
    template <>                                                                                              \
    inline DataType::Description                                                                             \
    detail::Describe<TextureSamplerObj_##dims##D_##letters##_##format##_##filter>() {                        \
        return DescribePointerLike<TextureSamplerObj_##dims##D_##letters##_##format##_##filter>();           \
    }
NORVI_FOR_EACH_TEXTURE_SAMPLER_OBJ(NORVI_TEXTURE_SAMPLER_OBJ)
#undef NORVI_TEXTURE_SAMPLER_OBJ

} // namespace norvi
