// Vectors of 16-bit floats: half2 half3 half4, as they stand in memory.
//
// They hold values and convert to and from vec2 vec3 vec4 on their own; to compute, convert first: vec4(h)
// * 2.0.
#pragma once

#include "norvi/host/types.h"
#include "norvi/kernel/vector_storage.h"
#include "norvi/kernel/vector_types.h"

namespace norvi::kernel {

template <>
struct [[gnu::may_alias]] Vec2<half> {
    half x, y;

    Vec2() = default;
    Vec2(const vec2& v) : x(v.x), y(v.y) {}
    operator vec2() const { return vec2(x, y); }
    Vec2(const norvi::Vec2<half>& v) : x(v.x), y(v.y) {}
    explicit operator norvi::Vec2<half>() const { return {x, y}; }
};

template <>
struct [[gnu::may_alias]] Vec3<half> {
    half x, y, z;

    Vec3() = default;
    Vec3(const vec3& v) : x(v.x), y(v.y), z(v.z) {}
    operator vec3() const { return vec3(x, y, z); }
    Vec3(const norvi::Vec3<half>& v) : x(v.x), y(v.y), z(v.z) {}
    explicit operator norvi::Vec3<half>() const { return {x, y, z}; }
};

template <>
struct [[gnu::may_alias]] Vec4<half> {
    half x, y, z, w;

    Vec4() = default;
    Vec4(const vec4& v) : x(v.x), y(v.y), z(v.z), w(v.w) {}
    operator vec4() const { return vec4(x, y, z, w); }
    Vec4(const norvi::Vec4<half>& v) : x(v.x), y(v.y), z(v.z), w(v.w) {}
    explicit operator norvi::Vec4<half>() const { return {x, y, z, w}; }
};

using half2 = Vec2<half>;
using half3 = Vec3<half>;
using half4 = Vec4<half>;

NORVI_STORAGE(half2, norvi::Vec2<norvi::HalfFloat>)
NORVI_STORAGE(half3, norvi::Vec3<norvi::HalfFloat>)
NORVI_STORAGE(half4, norvi::Vec4<norvi::HalfFloat>)

} // namespace norvi::kernel
