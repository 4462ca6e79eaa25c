// The vectors of the kernel language: vec2 vec3 vec4, ivec2.., uvec2.., bvec2...
//
// They mean what they mean in the shading languages: constructors from scalars and from other vectors,
// operators per component, swizzles; docs/kernel_language.md states the rules.
//
// A vector has size, alignment and layout of the storage type it corresponds to (a vec3 takes 12 bytes), so
// that a buffer of one can be viewed as the other. `may_alias` makes the view well defined: without it the
// compiler takes the two for different memory and drops or reorders stores.
//
// A default constructed vector has no defined value, as everywhere in the shading languages. Copies go
// component by component, since g++ keeps a union that is copied as a whole in memory instead of in
// registers.
#pragma once

#include "norvi/host/types.h"
#include "norvi/kernel/vector_operators.h"
#include "norvi/kernel/vector_scalar.h"
#include "norvi/kernel/vector_swizzle.h"

namespace norvi::kernel {

/// A vector or swizzle with exactly `N` components, of any component type.
template <typename V, int N>
concept VectorOf = requires {
    requires V::componentCount == N;
};

/// A vector or swizzle that the vector type `Target` can be made from: other component type, or more
/// components.
template <typename V, typename Target>
concept ConvertibleVector = !std::same_as<V, Target> && V::componentCount >= Target::componentCount;

template <typename T>
struct [[gnu::may_alias]] Vec2 {
    using Vector = Vec2;
    static constexpr int componentCount = 2;

    union {
        struct {
            T x, y;
        };
        struct {
            T r, g;
        };
        T components[2];
        NORVI_SWIZZLES_2(x, y)
        NORVI_SWIZZLES_2(r, g)
    };

    Vec2() = default;
    constexpr Vec2(const Vec2& v) : x(v.x), y(v.y) {}
    constexpr Vec2& operator=(const Vec2& v) {
        x = v.x, y = v.y;
        return *this;
    }
    constexpr Vec2(const norvi::Vec2<T>& v) : x(v.x), y(v.y) {}
    constexpr explicit operator norvi::Vec2<T>() const { return {x, y}; }

    template <Scalar S>
    constexpr explicit Vec2(S s) : x(static_cast<T>(s)), y(static_cast<T>(s)) {}

    template <Scalar X, Scalar Y>
    constexpr Vec2(X vx, Y vy) : x(static_cast<T>(vx)), y(static_cast<T>(vy)) {}

    template <ConvertibleVector<Vec2> V>
    constexpr explicit Vec2(const V& other) {
        const typename V::Vector& v = other;
        x = static_cast<T>(v.x), y = static_cast<T>(v.y);
    }

    T& operator[](int i) { return components[i]; }
    const T& operator[](int i) const { return components[i]; }

    NORVI_VECTOR_OPERATORS(Vec2, 2)
    friend constexpr bool operator==(const Vec2& left, const Vec2& right) {
        return left.x == right.x && left.y == right.y;
    }
};

template <typename T>
struct [[gnu::may_alias]] Vec3 {
    using Vector = Vec3;
    static constexpr int componentCount = 3;

    union {
        struct {
            T x, y, z;
        };
        struct {
            T r, g, b;
        };
        T components[3];
        NORVI_SWIZZLES_3(x, y, z)
        NORVI_SWIZZLES_3(r, g, b)
    };

    Vec3() = default;
    constexpr Vec3(const Vec3& v) : x(v.x), y(v.y), z(v.z) {}
    constexpr Vec3& operator=(const Vec3& v) {
        x = v.x, y = v.y, z = v.z;
        return *this;
    }
    constexpr Vec3(const norvi::Vec3<T>& v) : x(v.x), y(v.y), z(v.z) {}
    constexpr explicit operator norvi::Vec3<T>() const { return {x, y, z}; }

    template <Scalar S>
    constexpr explicit Vec3(S s) : Vec3(s, s, s) {}

    template <Scalar X, Scalar Y, Scalar Z>
    constexpr Vec3(X vx, Y vy, Z vz) : x(static_cast<T>(vx)), y(static_cast<T>(vy)), z(static_cast<T>(vz)) {}

    template <VectorOf<2> XY, Scalar Z>
    constexpr Vec3(const XY& xyPart, Z vz) {
        const typename XY::Vector& v = xyPart;
        x = static_cast<T>(v.x), y = static_cast<T>(v.y), z = static_cast<T>(vz);
    }

    template <Scalar X, VectorOf<2> YZ>
    constexpr Vec3(X vx, const YZ& yzPart) {
        const typename YZ::Vector& v = yzPart;
        x = static_cast<T>(vx), y = static_cast<T>(v.x), z = static_cast<T>(v.y);
    }

    template <ConvertibleVector<Vec3> V>
    constexpr explicit Vec3(const V& other) {
        const typename V::Vector& v = other;
        x = static_cast<T>(v.x), y = static_cast<T>(v.y), z = static_cast<T>(v.z);
    }

    T& operator[](int i) { return components[i]; }
    const T& operator[](int i) const { return components[i]; }

    NORVI_VECTOR_OPERATORS(Vec3, 3)
    friend constexpr bool operator==(const Vec3& left, const Vec3& right) {
        return left.x == right.x && left.y == right.y && left.z == right.z;
    }
};

template <typename T>
struct [[gnu::may_alias]] Vec4 {
    using Vector = Vec4;
    static constexpr int componentCount = 4;

    union {
        struct {
            T x, y, z, w;
        };
        struct {
            T r, g, b, a;
        };
        T components[4];
        NORVI_SWIZZLES_4(x, y, z, w)
        NORVI_SWIZZLES_4(r, g, b, a)
    };

    Vec4() = default;
    constexpr Vec4(const Vec4& v) : x(v.x), y(v.y), z(v.z), w(v.w) {}
    constexpr Vec4& operator=(const Vec4& v) {
        x = v.x, y = v.y, z = v.z, w = v.w;
        return *this;
    }
    constexpr Vec4(const norvi::Vec4<T>& v) : x(v.x), y(v.y), z(v.z), w(v.w) {}
    constexpr explicit operator norvi::Vec4<T>() const { return {x, y, z, w}; }

    template <Scalar S>
    constexpr explicit Vec4(S s) : Vec4(s, s, s, s) {}

    template <Scalar X, Scalar Y, Scalar Z, Scalar W>
    constexpr Vec4(X vx, Y vy, Z vz, W vw)
        : x(static_cast<T>(vx)), y(static_cast<T>(vy)), z(static_cast<T>(vz)), w(static_cast<T>(vw)) {}

    template <VectorOf<2> XY, Scalar Z, Scalar W>
    constexpr Vec4(const XY& xyPart, Z vz, W vw) : Vec4(Vec2<T>(xyPart), Vec2<T>(vz, vw)) {}

    template <Scalar X, VectorOf<2> YZ, Scalar W>
    constexpr Vec4(X vx, const YZ& yzPart, W vw) : Vec4(Vec3<T>(vx, yzPart), vw) {}

    template <Scalar X, Scalar Y, VectorOf<2> ZW>
    constexpr Vec4(X vx, Y vy, const ZW& zwPart) : Vec4(Vec2<T>(vx, vy), Vec2<T>(zwPart)) {}

    template <VectorOf<2> XY, VectorOf<2> ZW>
    constexpr Vec4(const XY& xyPart, const ZW& zwPart) {
        const Vec2<T> lower(xyPart), upper(zwPart);
        x = lower.x, y = lower.y, z = upper.x, w = upper.y;
    }

    template <VectorOf<3> XYZ, Scalar W>
    constexpr Vec4(const XYZ& xyzPart, W vw) {
        const Vec3<T> v(xyzPart);
        x = v.x, y = v.y, z = v.z, w = static_cast<T>(vw);
    }

    template <Scalar X, VectorOf<3> YZW>
    constexpr Vec4(X vx, const YZW& yzwPart) {
        const Vec3<T> v(yzwPart);
        x = static_cast<T>(vx), y = v.x, z = v.y, w = v.z;
    }

    template <ConvertibleVector<Vec4> V>
    constexpr explicit Vec4(const V& other) {
        const typename V::Vector& v = other;
        x = static_cast<T>(v.x), y = static_cast<T>(v.y), z = static_cast<T>(v.z), w = static_cast<T>(v.w);
    }

    T& operator[](int i) { return components[i]; }
    const T& operator[](int i) const { return components[i]; }

    NORVI_VECTOR_OPERATORS(Vec4, 4)
    friend constexpr bool operator==(const Vec4& left, const Vec4& right) {
        return left.x == right.x && left.y == right.y && left.z == right.z && left.w == right.w;
    }
};

using vec2 = Vec2<float>;
using vec3 = Vec3<float>;
using vec4 = Vec4<float>;
using ivec2 = Vec2<int>;
using ivec3 = Vec3<int>;
using ivec4 = Vec4<int>;
using uvec2 = Vec2<uint>;
using uvec3 = Vec3<uint>;
using uvec4 = Vec4<uint>;
using bvec2 = Vec2<bool>;
using bvec3 = Vec3<bool>;
using bvec4 = Vec4<bool>;

} // namespace norvi::kernel
