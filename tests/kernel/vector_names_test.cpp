// Which names kernel text can use, and that they win over the C library's where both are visible.
#include <math.h>
#include <stdlib.h>

#include <cmath>
#include <iterator>
#include <type_traits>

#include <gtest/gtest.h>

#include "norvi/kernel/vector.h"

// --- Kernel text where the language is brought in by a using directive --------------------

namespace usingdirective {

using namespace norvi::kernel;
// These two mean something else in the C library, so that they need to be named.
using norvi::kernel::fma;
using norvi::kernel::round;

template <typename T, typename U>
constexpr bool isSame = std::is_same_v<T, U>;

#define CHECK_ONE(f)                                                                                         \
    static_assert(isSame<decltype(f(float())), float> && isSame<decltype(f(int())), float>, #f);             \
    static_assert(isSame<decltype(f(half())), float> && isSame<decltype(f(uint())), float>, #f);             \
    static_assert(isSame<decltype(f(vec3().zy)), vec2> && isSame<decltype(f(vec4())), vec4>, #f);
// clang-format off
CHECK_ONE(radians) CHECK_ONE(degrees) CHECK_ONE(sin) CHECK_ONE(cos) CHECK_ONE(tan) CHECK_ONE(asin)
CHECK_ONE(acos) CHECK_ONE(atan) CHECK_ONE(sinh) CHECK_ONE(cosh) CHECK_ONE(tanh) CHECK_ONE(asinh)
CHECK_ONE(acosh) CHECK_ONE(atanh) CHECK_ONE(exp) CHECK_ONE(exp2) CHECK_ONE(log) CHECK_ONE(log2)
CHECK_ONE(sqrt) CHECK_ONE(Sqrt) CHECK_ONE(inversesqrt) CHECK_ONE(floor) CHECK_ONE(ceil) CHECK_ONE(trunc)
CHECK_ONE(round) CHECK_ONE(roundEven) CHECK_ONE(fract) CHECK_ONE(normalize)
// clang-format on

#define CHECK_TWO(f)                                                                                         \
    static_assert(                                                                                           \
        isSame<decltype(f(float(), float())), float> && isSame<decltype(f(float(), int())), float>, #f);     \
    static_assert(isSame<decltype(f(int(), float())), float> && isSame<decltype(f(0.5, half())), float>,     \
                  #f);                                                                                       \
    static_assert(isSame<decltype(f(vec3().zy, vec2())), vec2>, #f);
    // clang-format off
CHECK_TWO(pow) CHECK_TWO(atan) CHECK_TWO(mod) CHECK_TWO(min) CHECK_TWO(max) CHECK_TWO(step)
CHECK_TWO(reflect)
    // clang-format on

    static_assert(isSame<decltype(abs(1)), int> && isSame<decltype(abs(1.0f)), float> &&
                  isSame<decltype(sign(1)), int>);
static_assert(isSame<decltype(clamp(1, 0, 2)), int> && isSame<decltype(clamp(1, 0.0, 2)), float>);
static_assert(isSame<decltype(min(1u, 2)), uint> && isSame<decltype(max(1, 2)), int>);
static_assert(isSame<decltype(fma(1.0f, 2.0f, 3.0f)), float> && isSame<decltype(fma(1, 2, 3.0)), float>);
static_assert(isSame<decltype(isnan(1.0f)), bool> && isSame<decltype(isinf(vec2().yx)), bvec2>);

TEST(KernelNames, WinOverTheCLibraryWhereBothAreVisible) {
    EXPECT_EQ(round(2.5f), 2.0f);
    EXPECT_EQ(round(0.5), 0.0f);
    EXPECT_EQ(fma(1.0f + 0x1p-23f, 1.0f - 0x1p-23f, -1.0f), 0.0f);
    EXPECT_EQ(fma(3, 2, 1), 7.0f);
    EXPECT_EQ(abs(-2.5f), 2.5f);
    EXPECT_EQ(abs(-3), 3);
    const float x = 0.7f;
    EXPECT_EQ(sin(x), norvi::kernel::sin(x));
    EXPECT_EQ(pow(x, 3), norvi::kernel::pow(x, 3.0f));
    EXPECT_EQ(floor(-x) + trunc(x) + ceil(x), 0.0f);
    EXPECT_TRUE(isnan(sqrt(-x)) && isinf(1 / (x - x)));
}

} // namespace usingdirective

// --- Kernel text in a namespace of its own inside the language's --------------------------

namespace norvi::kernel::text {

static_assert(std::is_same_v<Float32, float> && std::is_same_v<Int32, int> && std::is_same_v<UInt32, uint>);
static_assert(std::is_same_v<Vector2d32, float2> && std::is_same_v<Vector32, float3> &&
              std::is_same_v<Vector4d32, vec4>);
static_assert(std::is_same_v<IntVector4d32, int4> && std::is_same_v<Vec4<UInt32>, uint4>);
static_assert(std::is_same_v<SquareMatrix32, sqmat> && std::is_same_v<SquareMatrix4d32, Matrix32>);
static_assert(std::is_same_v<Vec3<HalfFloat>, half3> && std::is_same_v<float4, vec4>);

/// Lines as kernels write them, each of which leaves a result.
int runLines(vec3 p, vec3 q, float* results) {
    int line = 0;
    const mat4 m = mat4(1.0);
    float k = 0.25;
    results[line++] = dot(p.xy, p.yz);
    results[line++] = length(p.xy);
    results[line++] = mix(p.xy, q.yx, 0.5).y;
    results[line++] = max(p.xy, 0.0).x + max(k, 0.0) + min(1, k);
    p.xy *= 2;
    results[line++] = (-p.xy).x;
    results[line++] = p.xy == q.xy ? 1.0 : 0.0;
    results[line++] = (p.xy / p.z).y;
    results[line++] = clamp(p.zyx, 0.0, 1.5).x;
    results[line++] = cross(p.zyx, q).z;
    results[line++] = sin(p.xy).x;
    results[line++] = ivec2(p.xy * 0.4).y;
    q = 2 * q - vec3(p.xy, 1.0) / 2.0;
    results[line++] = q.x;
    p.xy = q.yx;
    results[line++] = p.x;
    results[line++] = step(0.5, k) + smoothstep(0.0, 0.5, k) + fract(1.75) + mod(5.5, 2.0);
    for (uint i = 0u; i < 3u; ++i)
        k += i * 0.5;
    results[line++] = k;
    vec4 color = vec4(vec3(k), 1.0);
    color.rgb = color.bgr * vec3(0.5, 1.0, 2.0);
    results[line++] = color.b - color.a;
    results[line++] = vec3((m * vec4(p, 1.0)).xyz).y;
    const vec3 offset = vec3(m.v0.w, m.v1.w, m.v2.w);
    results[line++] = offset.x + Sqrt(16.0) + sqmat(m)[1][1];
    results[line++] = any(lessThan(uvec2(3, 4), uvec2(3, 5))) ? abs(-1) : 0;
    results[line++] = float(0x0f0fu >> 4 & 3u) + float(-7 / 2) + float(-7 % 3);
    return line;
}

TEST(KernelNames, SampleLinesCompute) {
    const float expected[] = {
        8, std::sqrt(5.0f), 3,     1.5f, -2, 0, 4.0f / 3, 1.5f, -1, std::sin(2.0f), 1, 7,
        8, 2.75f,           1.75f, 2.5f, 7,  5, 1,        -4};
    float results[std::size(expected)] = {};
    ASSERT_EQ(runLines(vec3(1, 2, 3), vec3(4, 5, 6), results), static_cast<int>(std::size(expected)));
    for (std::size_t i = 0; i < std::size(expected); ++i)
        EXPECT_EQ(results[i], expected[i]) << "result " << i;
}

} // namespace norvi::kernel::text
