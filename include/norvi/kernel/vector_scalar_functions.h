// The kernel language's functions of scalars.
//
// Functions that share a name with one of the C library are constrained templates: for every type of argument
// they then win over the library's where both are visible, or the library's does the same (see the section on
// name lookup in docs/kernel_language.md). All of them compute in `float`, whatever floating type comes in.
// Each formula is one that the shading languages state; NaN follows from the comparison as it is written.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "norvi/kernel/vector_scalar.h"

namespace norvi::kernel {

// --- Functions of the C library, at single precision -----------------------------------

#define NORVI_LIBRARY_FUNCTION(name)                                                                         \
    template <Scalar X>                                                                                      \
    inline float name(X x) {                                                                                 \
        return std::name(static_cast<float>(x));                                                             \
    }
NORVI_LIBRARY_FUNCTION(sin)
NORVI_LIBRARY_FUNCTION(cos)
NORVI_LIBRARY_FUNCTION(tan)
NORVI_LIBRARY_FUNCTION(asin)
NORVI_LIBRARY_FUNCTION(acos)
NORVI_LIBRARY_FUNCTION(atan)
NORVI_LIBRARY_FUNCTION(sinh)
NORVI_LIBRARY_FUNCTION(cosh)
NORVI_LIBRARY_FUNCTION(tanh)
NORVI_LIBRARY_FUNCTION(asinh)
NORVI_LIBRARY_FUNCTION(acosh)
NORVI_LIBRARY_FUNCTION(atanh)
NORVI_LIBRARY_FUNCTION(exp)
NORVI_LIBRARY_FUNCTION(exp2)
NORVI_LIBRARY_FUNCTION(log)
NORVI_LIBRARY_FUNCTION(log2)
NORVI_LIBRARY_FUNCTION(sqrt)
NORVI_LIBRARY_FUNCTION(floor)
NORVI_LIBRARY_FUNCTION(ceil)
NORVI_LIBRARY_FUNCTION(trunc)
#undef NORVI_LIBRARY_FUNCTION

/// The angle of the point (x, y), in (-pi, pi].
inline float atan(float y, float x) {
    return std::atan2(y, x);
}

template <Scalar X, Scalar Y>
inline float pow(X x, Y y) {
    return std::pow(static_cast<float>(x), static_cast<float>(y));
}

template <Scalar X>
constexpr bool isnan(X x) {
    const float value = static_cast<float>(x);
    return value != value;
}

template <Scalar X>
inline bool isinf(X x) {
    return std::fabs(static_cast<float>(x)) == std::numeric_limits<float>::infinity();
}

// The library's `round` takes halves away from zero and its `fma` rounds once, so picking theirs would change
// results. The overloads for `float` make a call ambiguous instead, where both are visible.

/// The nearest whole number, halves to the even one: what graphics cards do. Needs the default rounding mode.
inline float round(float x) {
    return std::nearbyint(x);
}

template <Scalar X>
inline float round(X x) {
    return std::nearbyint(static_cast<float>(x));
}

/// a * b + c, rounded after the product and after the sum: cards differ in whether theirs is fused.
constexpr float fma(float a, float b, float c) {
    return a * b + c;
}

template <Scalar A, Scalar B, Scalar C>
constexpr float fma(A a, B b, C c) {
    return static_cast<float>(a) * static_cast<float>(b) + static_cast<float>(c);
}

inline float roundEven(float x) {
    return std::nearbyint(x);
}

// --- Floating-point functions ----------------------------------------------------------

constexpr float radians(float angle) {
    return angle * 0.017453292519943296f;
}
constexpr float degrees(float angle) {
    return angle * 57.295779513082321f;
}

inline float inversesqrt(float x) {
    return 1.0f / std::sqrt(x);
}

/// x - floor(x): in [0, 1], where 1 is met for tiny negative x by rounding. NaN for infinities.
inline float fract(float x) {
    return x - std::floor(x);
}

/// x - y * floor(x / y): has the sign of y, unlike the remainder of C.
inline float mod(float x, float y) {
    return x - y * std::floor(x / y);
}

constexpr float step(float edge, float x) {
    return x < edge ? 0.0f : 1.0f;
}

// --- Functions of the type that the arguments compute in -------------------------------

template <Scalar X>
requires(!std::same_as<X, uint>) constexpr ScalarResult<X> abs(X x) {
    const auto value = static_cast<ScalarResult<X>>(x);
    if constexpr (FloatingScalar<X>) {
        return std::fabs(value);
    } else {
        return value < 0 ? -value : value;
    }
}

/// -1, 0 or 1; 0 for NaN and for both zeros.
template <Scalar X>
requires(!std::same_as<X, uint>) constexpr ScalarResult<X> sign(X x) {
    using Result = ScalarResult<X>;
    const auto value = static_cast<Result>(x);
    return value > Result(0) ? Result(1) : value < Result(0) ? Result(-1) : Result(0);
}

/// y < x ? y : x, so x where one of them is NaN.
template <Scalar X, Scalar Y>
constexpr ScalarResult<X, Y> min(X x, Y y) {
    const auto first = static_cast<ScalarResult<X, Y>>(x), second = static_cast<ScalarResult<X, Y>>(y);
    return second < first ? second : first;
}

/// x < y ? y : x, so x where one of them is NaN.
template <Scalar X, Scalar Y>
constexpr ScalarResult<X, Y> max(X x, Y y) {
    const auto first = static_cast<ScalarResult<X, Y>>(x), second = static_cast<ScalarResult<X, Y>>(y);
    return first < second ? second : first;
}

/// min(max(x, low), high): NaN stays NaN. Without meaning where low > high.
template <Scalar X, Scalar Low, Scalar High>
constexpr ScalarResult<X, Low, High> clamp(X x, Low low, High high) {
    return min(max(x, low), high);
}

/// x * (1 - a) + y * a for a number a; for a bool, y where it is set and x where not, bit by bit.
template <Scalar X, Scalar Y, Scalar A>
constexpr auto mix(X x, Y y, A a) {
    if constexpr (std::same_as<A, bool>) {
        using Result =
            std::conditional_t<std::same_as<X, bool> && std::same_as<Y, bool>, bool, ScalarResult<X, Y>>;
        return a ? static_cast<Result>(y) : static_cast<Result>(x);
    } else {
        const float weight = static_cast<float>(a);
        return static_cast<float>(x) * (1.0f - weight) + static_cast<float>(y) * weight;
    }
}

/// 0 below `low`, 1 above `high`, t * t * (3 - 2 * t) between. Without meaning where low >= high.
constexpr float smoothstep(float low, float high, float x) {
    const float t = clamp((x - low) / (high - low), 0.0f, 1.0f);
    return t * t * (3.0f - 2.0f * t);
}

// --- Bits ------------------------------------------------------------------------------

constexpr int floatBitsToInt(float x) {
    return std::bit_cast<int>(x);
}
constexpr uint floatBitsToUint(float x) {
    return std::bit_cast<uint>(x);
}
constexpr float intBitsToFloat(int x) {
    return std::bit_cast<float>(x);
}
constexpr float uintBitsToFloat(uint x) {
    return std::bit_cast<float>(x);
}

constexpr int bitCount(uint x) {
    return std::popcount(x);
}
constexpr int bitCount(int x) {
    return bitCount(static_cast<uint>(x));
}

/// The number of the lowest bit that is 1; -1 for 0.
constexpr int findLSB(uint x) {
    return x == 0 ? -1 : std::countr_zero(x);
}
constexpr int findLSB(int x) {
    return findLSB(static_cast<uint>(x));
}

/// The number of the highest bit that is 1, for negative x of the highest that is 0; -1 for 0 and for -1.
constexpr int findMSB(uint x) {
    return 31 - std::countl_zero(x);
}
constexpr int findMSB(int x) {
    return findMSB(static_cast<uint>(x < 0 ? ~x : x));
}

constexpr uint bitfieldReverse(uint x) {
    x = (x >> 1 & 0x55555555u) | (x & 0x55555555u) << 1;
    x = (x >> 2 & 0x33333333u) | (x & 0x33333333u) << 2;
    x = (x >> 4 & 0x0f0f0f0fu) | (x & 0x0f0f0f0fu) << 4;
    x = (x >> 8 & 0x00ff00ffu) | (x & 0x00ff00ffu) << 8;
    return x >> 16 | x << 16;
}
constexpr int bitfieldReverse(int x) {
    return static_cast<int>(bitfieldReverse(static_cast<uint>(x)));
}

} // namespace norvi::kernel
