// The kernel language's functions of vectors.
//
// Each applies the scalar function of its name to every component; the comparisons and the geometric
// functions stand apart. They are no templates, so that swizzles and literals convert to what they take.
#pragma once

#include "norvi/kernel/vector_operators.h"
#include "norvi/kernel/vector_scalar_functions.h"
#include "norvi/kernel/vector_types.h"

namespace norvi::kernel {

// --- Component by component ------------------------------------------------------------

// The letters tell which parameters are vectors and which are scalars that serve all components. Names of
// vector types lack their size: `vec` stands for vec2, vec3 and vec4 in turn.
#define NORVI_CALL_V(c, f) f(a.c)
#define NORVI_CALL_VV(c, f) f(a.c, b.c)
#define NORVI_CALL_VS(c, f) f(a.c, b)
#define NORVI_CALL_SV(c, f) f(a, b.c)
#define NORVI_CALL_VVV(c, f) f(a.c, b.c, t.c)
#define NORVI_CALL_VVS(c, f) f(a.c, b.c, t)
#define NORVI_CALL_VSS(c, f) f(a.c, b, t)
#define NORVI_CALL_SSV(c, f) f(a, b, t.c)
#define NORVI_CALL_COMPARE(c, op) a.c op b.c

#define NORVI_FUNCTION_V(N, Result, f, V)                                                                    \
    inline Result##N f(const V##N& a) {                                                                      \
        return Result##N(NORVI_EACH_##N(NORVI_CALL_V, f));                                                   \
    }
#define NORVI_FUNCTION_VV(N, f, V)                                                                           \
    inline V##N f(const V##N& a, const V##N& b) {                                                            \
        return V##N(NORVI_EACH_##N(NORVI_CALL_VV, f));                                                       \
    }
#define NORVI_FUNCTION_VS(N, f, V, S)                                                                        \
    inline V##N f(const V##N& a, S b) {                                                                      \
        return V##N(NORVI_EACH_##N(NORVI_CALL_VS, f));                                                       \
    }
#define NORVI_FUNCTION_SV(N, f, V, S)                                                                        \
    inline V##N f(S a, const V##N& b) {                                                                      \
        return V##N(NORVI_EACH_##N(NORVI_CALL_SV, f));                                                       \
    }
#define NORVI_FUNCTION_VVV(N, f, V, T)                                                                       \
    inline V##N f(const V##N& a, const V##N& b, const T##N& t) {                                             \
        return V##N(NORVI_EACH_##N(NORVI_CALL_VVV, f));                                                      \
    }
#define NORVI_FUNCTION_VVS(N, f, V, S)                                                                       \
    inline V##N f(const V##N& a, const V##N& b, S t) {                                                       \
        return V##N(NORVI_EACH_##N(NORVI_CALL_VVS, f));                                                      \
    }
#define NORVI_FUNCTION_VSS(N, f, V, S)                                                                       \
    inline V##N f(const V##N& a, S b, S t) {                                                                 \
        return V##N(NORVI_EACH_##N(NORVI_CALL_VSS, f));                                                      \
    }
#define NORVI_FUNCTION_SSV(N, f, V, S)                                                                       \
    inline V##N f(S a, S b, const V##N& t) {                                                                 \
        return V##N(NORVI_EACH_##N(NORVI_CALL_SSV, f));                                                      \
    }
#define NORVI_COMPARISON(N, f, op, V)                                                                        \
    inline bvec##N f(const V##N& a, const V##N& b) {                                                         \
        return bvec##N(NORVI_EACH_##N(NORVI_CALL_COMPARE, op));                                              \
    }

#define NORVI_SIZES(Function, ...) Function(2, __VA_ARGS__) Function(3, __VA_ARGS__) Function(4, __VA_ARGS__)

// clang-format off
NORVI_SIZES(NORVI_FUNCTION_V, vec, radians, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, degrees, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, sin, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, cos, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, tan, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, asin, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, acos, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, atan, vec)
NORVI_SIZES(NORVI_FUNCTION_VV, atan, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, sinh, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, cosh, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, tanh, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, asinh, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, acosh, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, atanh, vec)

NORVI_SIZES(NORVI_FUNCTION_VV, pow, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, exp, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, log, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, exp2, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, log2, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, sqrt, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, inversesqrt, vec)

NORVI_SIZES(NORVI_FUNCTION_V, vec, floor, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, ceil, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, trunc, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, round, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, roundEven, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, fract, vec)
NORVI_SIZES(NORVI_FUNCTION_VV, mod, vec)
NORVI_SIZES(NORVI_FUNCTION_VS, mod, vec, float)

NORVI_SIZES(NORVI_FUNCTION_V, vec, abs, vec)
NORVI_SIZES(NORVI_FUNCTION_V, ivec, abs, ivec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, sign, vec)
NORVI_SIZES(NORVI_FUNCTION_V, ivec, sign, ivec)

#define NORVI_RANGE_FUNCTIONS(V, S)                                                                          \
    NORVI_SIZES(NORVI_FUNCTION_VV, min, V)                                                                   \
    NORVI_SIZES(NORVI_FUNCTION_VS, min, V, S)                                                                \
    NORVI_SIZES(NORVI_FUNCTION_VV, max, V)                                                                   \
    NORVI_SIZES(NORVI_FUNCTION_VS, max, V, S)                                                                \
    NORVI_SIZES(NORVI_FUNCTION_VVV, clamp, V, V)                                                             \
    NORVI_SIZES(NORVI_FUNCTION_VSS, clamp, V, S)
NORVI_RANGE_FUNCTIONS(vec, float)
NORVI_RANGE_FUNCTIONS(ivec, int)
NORVI_RANGE_FUNCTIONS(uvec, uint)

NORVI_SIZES(NORVI_FUNCTION_VVV, mix, vec, vec)
NORVI_SIZES(NORVI_FUNCTION_VVS, mix, vec, float)
NORVI_SIZES(NORVI_FUNCTION_VVV, mix, vec, bvec)
NORVI_SIZES(NORVI_FUNCTION_VVV, mix, ivec, bvec)
NORVI_SIZES(NORVI_FUNCTION_VVV, mix, uvec, bvec)
NORVI_SIZES(NORVI_FUNCTION_VVV, mix, bvec, bvec)
NORVI_SIZES(NORVI_FUNCTION_VV, step, vec)
NORVI_SIZES(NORVI_FUNCTION_SV, step, vec, float)
NORVI_SIZES(NORVI_FUNCTION_VVV, smoothstep, vec, vec)
NORVI_SIZES(NORVI_FUNCTION_SSV, smoothstep, vec, float)
NORVI_SIZES(NORVI_FUNCTION_VVV, fma, vec, vec)

NORVI_SIZES(NORVI_FUNCTION_V, bvec, isnan, vec)
NORVI_SIZES(NORVI_FUNCTION_V, bvec, isinf, vec)
NORVI_SIZES(NORVI_FUNCTION_V, ivec, floatBitsToInt, vec)
NORVI_SIZES(NORVI_FUNCTION_V, uvec, floatBitsToUint, vec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, intBitsToFloat, ivec)
NORVI_SIZES(NORVI_FUNCTION_V, vec, uintBitsToFloat, uvec)

#define NORVI_BIT_FUNCTIONS(V)                                                                               \
    NORVI_SIZES(NORVI_FUNCTION_V, ivec, bitCount, V)                                                         \
    NORVI_SIZES(NORVI_FUNCTION_V, ivec, findLSB, V)                                                          \
    NORVI_SIZES(NORVI_FUNCTION_V, ivec, findMSB, V)                                                          \
    NORVI_SIZES(NORVI_FUNCTION_V, V, bitfieldReverse, V)
NORVI_BIT_FUNCTIONS(ivec)
NORVI_BIT_FUNCTIONS(uvec)

// --- Comparisons -----------------------------------------------------------------------

#define NORVI_EQUALITIES(V)                                                                                  \
    NORVI_SIZES(NORVI_COMPARISON, equal, ==, V)                                                              \
    NORVI_SIZES(NORVI_COMPARISON, notEqual, !=, V)
#define NORVI_COMPARISONS(V)                                                                                 \
    NORVI_EQUALITIES(V)                                                                                      \
    NORVI_SIZES(NORVI_COMPARISON, lessThan, <, V)                                                            \
    NORVI_SIZES(NORVI_COMPARISON, lessThanEqual, <=, V)                                                      \
    NORVI_SIZES(NORVI_COMPARISON, greaterThan, >, V)                                                         \
    NORVI_SIZES(NORVI_COMPARISON, greaterThanEqual, >=, V)
NORVI_COMPARISONS(vec)
NORVI_COMPARISONS(ivec)
NORVI_COMPARISONS(uvec)
NORVI_EQUALITIES(bvec)
// clang-format on

constexpr bool any(const bvec2& v) {
    return v.x || v.y;
}
constexpr bool any(const bvec3& v) {
    return v.x || v.y || v.z;
}
constexpr bool any(const bvec4& v) {
    return v.x || v.y || v.z || v.w;
}
constexpr bool all(const bvec2& v) {
    return v.x && v.y;
}
constexpr bool all(const bvec3& v) {
    return v.x && v.y && v.z;
}
constexpr bool all(const bvec4& v) {
    return v.x && v.y && v.z && v.w;
}

// --- Geometry --------------------------------------------------------------------------

/// The sum of the products of components, added from left to right.
constexpr float dot(float a, float b) {
    return a * b;
}
constexpr float dot(const vec2& a, const vec2& b) {
    return a.x * b.x + a.y * b.y;
}
constexpr float dot(const vec3& a, const vec3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
constexpr float dot(const vec4& a, const vec4& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
}

constexpr vec3 cross(const vec3& a, const vec3& b) {
    return vec3(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

// length: sqrt(dot(v, v)), without care for overflow of the squares.
// normalize: v * inversesqrt(dot(v, v)), so NaN for a zero vector.
// reflect: of the direction i at the unit normal n.
// refract: of the unit direction i at the unit normal n; eta is the ratio of the indices of refraction. Zero
// for total reflection.
#define NORVI_GEOMETRY(V)                                                                                    \
    inline float length(const V& v) {                                                                        \
        return std::sqrt(dot(v, v));                                                                         \
    }                                                                                                        \
    inline float distance(const V& a, const V& b) {                                                          \
        return length(a - b);                                                                                \
    }                                                                                                        \
    inline V normalize(const V& v) {                                                                         \
        return v * inversesqrt(dot(v, v));                                                                   \
    }                                                                                                        \
    constexpr V faceforward(const V& n, const V& i, const V& reference) {                                    \
        return dot(reference, i) < 0.0f ? n : -n;                                                            \
    }                                                                                                        \
    constexpr V reflect(const V& i, const V& n) {                                                            \
        return i - 2.0f * dot(n, i) * n;                                                                     \
    }                                                                                                        \
    inline V refract(const V& i, const V& n, float eta) {                                                    \
        const float d = dot(n, i), k = 1.0f - eta * eta * (1.0f - d * d);                                    \
        return k < 0.0f ? V(0.0f) : eta * i - (eta * d + std::sqrt(k)) * n;                                  \
    }
NORVI_GEOMETRY(float)
NORVI_GEOMETRY(vec2)
NORVI_GEOMETRY(vec3)
NORVI_GEOMETRY(vec4)

} // namespace norvi::kernel
