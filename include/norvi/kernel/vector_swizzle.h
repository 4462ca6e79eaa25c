// Swizzles of the kernel language: `p.xy`, `c.bgr`, `q.wzyx`, read and written like vectors.
//
// A vector is a union of its components and of one member per swizzle, so that a swizzle is plain member
// access and costs nothing. The macros at the end list the members; each level appends one letter to the
// name.
#pragma once

#include <cstddef>

namespace norvi::kernel {

// See vector_types.h for the attribute; references that are declared before the classes need it as well.
template <typename T>
struct [[gnu::may_alias]] Vec2;
template <typename T>
struct [[gnu::may_alias]] Vec3;
template <typename T>
struct [[gnu::may_alias]] Vec4;

constexpr int LargestOf(int a, int b, int c = 0, int d = 0) {
    const int ab = a < b ? b : a, cd = c < d ? d : c;
    return ab < cd ? cd : ab;
}

template <int... Indices>
inline constexpr bool areDistinct = [] {
    constexpr int indices[] = {Indices...};
    for (std::size_t i = 0; i < sizeof...(Indices); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (indices[i] == indices[j])
                return false;
        }
    }
    return true;
}();

/// Components `Indices` of a vector in that order. Converts to `VectorType` wherever one is expected, and
/// takes one where no component is named twice. The vector type is a parameter, not derived from the
/// component type, so that argument dependent lookup finds its operators for swizzle operands.
template <typename VectorType, typename T, int... Indices>
struct [[gnu::may_alias]] Swizzle {
    using Vector = VectorType;
    static constexpr int componentCount = sizeof...(Indices);

    T components[LargestOf(Indices...) + 1];

    constexpr operator Vector() const { return Vector(components[Indices]...); }

    // By value, since `p.yx = p` would otherwise read what it has just written.
    constexpr Swizzle& operator=(Vector value) requires(areDistinct<Indices...>) {
        int i = 0;
        ((components[Indices] = value.components[i++]), ...);
        return *this;
    }
    // The implicit one would copy the components that are not named as well.
    constexpr Swizzle& operator=(const Swizzle& other) { return *this = Vector(other); }
    constexpr Swizzle(const Swizzle&) = default;
    Swizzle() = default;
};

// Templates of their own rather than members, since every vector type brings hundreds of swizzle types along.
#define NORVI_SWIZZLE_ASSIGNMENT(op)                                                                         \
    template <typename V, typename T, int... Indices, typename Operand>                                      \
    constexpr Swizzle<V, T, Indices...>& operator op##=(Swizzle<V, T, Indices...>& swizzle,                  \
                                                        const Operand& operand) {                            \
        return swizzle = V(swizzle) op operand;                                                              \
    }
NORVI_SWIZZLE_ASSIGNMENT(+)
NORVI_SWIZZLE_ASSIGNMENT(-)
NORVI_SWIZZLE_ASSIGNMENT(*)
NORVI_SWIZZLE_ASSIGNMENT(/)
NORVI_SWIZZLE_ASSIGNMENT(%)
NORVI_SWIZZLE_ASSIGNMENT(&)
NORVI_SWIZZLE_ASSIGNMENT(|)
NORVI_SWIZZLE_ASSIGNMENT(^)
NORVI_SWIZZLE_ASSIGNMENT(<<)
NORVI_SWIZZLE_ASSIGNMENT(>>)
#undef NORVI_SWIZZLE_ASSIGNMENT

// clang-format off
// The members of a vector with the given letters. A macro per length of the name that has been built, N; the
// variadic part is the list of its indices.
#define NORVI_SWIZZLE(V, name, ...) Swizzle<V<T>, T, __VA_ARGS__> name;

#define NORVI_SWIZZLES_2(A, B)                                                                               \
    NORVI_SWIZZLES_2A(A, A, B, 0) NORVI_SWIZZLES_2A(B, A, B, 1)
#define NORVI_SWIZZLES_2A(N, A, B, ...)                                                                      \
    NORVI_SWIZZLES_2B(N##A, A, B, __VA_ARGS__, 0) NORVI_SWIZZLES_2B(N##B, A, B, __VA_ARGS__, 1)
#define NORVI_SWIZZLES_2B(N, A, B, ...)                                                                      \
    NORVI_SWIZZLE(Vec2, N, __VA_ARGS__)                                                                      \
    NORVI_SWIZZLES_2C(N##A, A, B, __VA_ARGS__, 0) NORVI_SWIZZLES_2C(N##B, A, B, __VA_ARGS__, 1)
#define NORVI_SWIZZLES_2C(N, A, B, ...)                                                                      \
    NORVI_SWIZZLE(Vec3, N, __VA_ARGS__)                                                                      \
    NORVI_SWIZZLE(Vec4, N##A, __VA_ARGS__, 0) NORVI_SWIZZLE(Vec4, N##B, __VA_ARGS__, 1)

#define NORVI_SWIZZLES_3(A, B, C)                                                                            \
    NORVI_SWIZZLES_3A(A, A, B, C, 0) NORVI_SWIZZLES_3A(B, A, B, C, 1)                                        \
    NORVI_SWIZZLES_3A(C, A, B, C, 2)
#define NORVI_SWIZZLES_3A(N, A, B, C, ...)                                                                   \
    NORVI_SWIZZLES_3B(N##A, A, B, C, __VA_ARGS__, 0) NORVI_SWIZZLES_3B(N##B, A, B, C, __VA_ARGS__, 1)        \
    NORVI_SWIZZLES_3B(N##C, A, B, C, __VA_ARGS__, 2)
#define NORVI_SWIZZLES_3B(N, A, B, C, ...)                                                                   \
    NORVI_SWIZZLE(Vec2, N, __VA_ARGS__)                                                                      \
    NORVI_SWIZZLES_3C(N##A, A, B, C, __VA_ARGS__, 0) NORVI_SWIZZLES_3C(N##B, A, B, C, __VA_ARGS__, 1)        \
    NORVI_SWIZZLES_3C(N##C, A, B, C, __VA_ARGS__, 2)
#define NORVI_SWIZZLES_3C(N, A, B, C, ...)                                                                   \
    NORVI_SWIZZLE(Vec3, N, __VA_ARGS__)                                                                      \
    NORVI_SWIZZLE(Vec4, N##A, __VA_ARGS__, 0) NORVI_SWIZZLE(Vec4, N##B, __VA_ARGS__, 1)                      \
    NORVI_SWIZZLE(Vec4, N##C, __VA_ARGS__, 2)

#define NORVI_SWIZZLES_4(A, B, C, D)                                                                         \
    NORVI_SWIZZLES_4A(A, A, B, C, D, 0) NORVI_SWIZZLES_4A(B, A, B, C, D, 1)                                  \
    NORVI_SWIZZLES_4A(C, A, B, C, D, 2) NORVI_SWIZZLES_4A(D, A, B, C, D, 3)
#define NORVI_SWIZZLES_4A(N, A, B, C, D, ...)                                                                \
    NORVI_SWIZZLES_4B(N##A, A, B, C, D, __VA_ARGS__, 0) NORVI_SWIZZLES_4B(N##B, A, B, C, D, __VA_ARGS__, 1)  \
    NORVI_SWIZZLES_4B(N##C, A, B, C, D, __VA_ARGS__, 2) NORVI_SWIZZLES_4B(N##D, A, B, C, D, __VA_ARGS__, 3)
#define NORVI_SWIZZLES_4B(N, A, B, C, D, ...)                                                                \
    NORVI_SWIZZLE(Vec2, N, __VA_ARGS__)                                                                      \
    NORVI_SWIZZLES_4C(N##A, A, B, C, D, __VA_ARGS__, 0) NORVI_SWIZZLES_4C(N##B, A, B, C, D, __VA_ARGS__, 1)  \
    NORVI_SWIZZLES_4C(N##C, A, B, C, D, __VA_ARGS__, 2) NORVI_SWIZZLES_4C(N##D, A, B, C, D, __VA_ARGS__, 3)
#define NORVI_SWIZZLES_4C(N, A, B, C, D, ...)                                                                \
    NORVI_SWIZZLE(Vec3, N, __VA_ARGS__)                                                                      \
    NORVI_SWIZZLE(Vec4, N##A, __VA_ARGS__, 0) NORVI_SWIZZLE(Vec4, N##B, __VA_ARGS__, 1)                      \
    NORVI_SWIZZLE(Vec4, N##C, __VA_ARGS__, 2) NORVI_SWIZZLE(Vec4, N##D, __VA_ARGS__, 3)

// clang-format on

} // namespace norvi::kernel
