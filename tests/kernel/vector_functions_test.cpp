// Every function of the kernel language: scalars against their formulas, vectors against scalars.
#include "norvi/kernel/vector.h"

#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace norvi::kernel::functionstest {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

const std::vector<float> awkwardValues = {
    0.0f,  -0.0f, 1.0f,    -1.0f,    0.25f,    0.5f,        -0.5f, 1.5f,     2.5f,        -2.5f,
    3.7f,  -3.7f, 1e-3f,   -1e-30f,  1e-42f,   8388607.5f,  1e10f, -1e10f,   16777216.0f, 3.4e38f,
    90.0f, 0.1f,  0.9999f, 100.125f, -100.75f, -8388609.0f, 7e-8f, infinity, -infinity,   notANumber};

/// Equal as numbers and in the sign of a zero; any NaN equals any other.
bool isSame(float a, float b) {
    return std::bit_cast<uint>(a) == std::bit_cast<uint>(b) || (std::isnan(a) && std::isnan(b));
}

// --- Scalars against reference formulas ------------------------------------------------

struct UnaryCase {
    const char* name;
    float (*function)(float);
    /// In double; its rounded result is the right one where `tolerance` is 0.
    double (*reference)(double);
    /// Relative.
    double tolerance;
};

#define UNARY(f, reference, tolerance)                                                                       \
    {                                                                                                        \
#f, [](float x) -> float { return f(x); }, [](double x) -> double { return reference; }, tolerance   \
    }

const UnaryCase unaryCases[] = {
    UNARY(radians, x * 3.14159265358979323846 / 180, 2e-7),
    UNARY(degrees, x * 180 / 3.14159265358979323846, 2e-7),
    UNARY(sin, std::sin(x), 2e-7),
    UNARY(cos, std::cos(x), 2e-7),
    UNARY(tan, std::tan(x), 2e-7),
    UNARY(asin, std::asin(x), 2e-7),
    UNARY(acos, std::acos(x), 2e-7),
    UNARY(atan, std::atan(x), 2e-7),
    UNARY(sinh, std::sinh(x), 4e-7),
    UNARY(cosh, std::cosh(x), 4e-7),
    UNARY(tanh, std::tanh(x), 4e-7),
    UNARY(asinh, std::asinh(x), 4e-7),
    UNARY(acosh, std::acosh(x), 4e-7),
    UNARY(atanh, std::atanh(x), 4e-7),
    UNARY(exp, std::exp(x), 2e-7),
    UNARY(exp2, std::exp2(x), 2e-7),
    UNARY(log, std::log(x), 2e-7),
    UNARY(log2, std::log2(x), 2e-7),
    UNARY(sqrt, std::sqrt(x), 0),
    UNARY(Sqrt, std::sqrt(x), 0),
    UNARY(inversesqrt, 1 / static_cast<double>(static_cast<float>(std::sqrt(x))), 0),
    UNARY(floor, std::floor(x), 0),
    UNARY(ceil, std::ceil(x), 0),
    UNARY(trunc, std::trunc(x), 0),
    UNARY(round, std::nearbyint(x), 0),
    UNARY(roundEven, std::nearbyint(x), 0),
    UNARY(fract, x - std::floor(x), 0),
    UNARY(abs, std::fabs(x), 0),
    UNARY(sign,
          x > 0   ? 1
          : x < 0 ? -1
                  : 0,
          0),
};

TEST(KernelFunctions, OfOneScalarAgreeWithDoublePrecision) {
    for (const UnaryCase& test : unaryCases) {
        for (const float x : awkwardValues) {
            const float value = test.function(x);
            const double reference = test.reference(x);
            const bool isNear = std::fabs(value - reference) <= test.tolerance * std::fabs(reference) + 1e-45;
            EXPECT_TRUE(isSame(value, static_cast<float>(reference)) || (test.tolerance > 0 && isNear))
                << test.name << "(" << x << ") = " << value << ", not " << reference;
        }
    }
}

struct BinaryCase {
    const char* name;
    float (*function)(float, float);
    float (*formula)(float, float);
};

#define BINARY(f, formula)                                                                                   \
    {                                                                                                        \
#f, [](float x, float y) -> float { return f(x, y); }, [](float x,                                   \
                                                                  float y) -> float { return formula; }      \
    }

const BinaryCase binaryCases[] = {
    BINARY(mod, x - y * std::floor(x / y)),
    BINARY(min, y < x ? y : x),
    BINARY(max, x < y ? y : x),
    BINARY(step, y < x ? 0.0f : 1.0f),
    BINARY(atan, std::atan2(x, y)),
    BINARY(pow, std::pow(x, y)),
    BINARY(dot, x* y),
    BINARY(distance, std::sqrt((x - y) * (x - y))),
};

TEST(KernelFunctions, OfTwoScalarsAreTheirFormulasBitByBit) {
    for (const BinaryCase& test : binaryCases) {
        for (const float x : awkwardValues) {
            for (const float y : awkwardValues) {
                EXPECT_TRUE(isSame(test.function(x, y), test.formula(x, y)))
                    << test.name << "(" << x << ", " << y << ") = " << test.function(x, y);
            }
        }
    }
}

TEST(KernelFunctions, OfThreeScalarsAreTheirFormulasBitByBit) {
    for (const float x : awkwardValues) {
        for (const float y : awkwardValues) {
            for (const float a : {-0.5f, 0.0f, 0.3f, 1.0f, 2.0f, notANumber}) {
                EXPECT_TRUE(isSame(mix(x, y, a), x * (1.0f - a) + y * a)) << x << " " << y << " " << a;
                EXPECT_TRUE(isSame(clamp(a, x, y), min(max(a, x), y))) << x << " " << y << " " << a;
                const float product = x * y;
                EXPECT_TRUE(isSame(fma(x, y, a), product + a)) << x << " " << y << " " << a;
                const float t = clamp((a - x) / (y - x), 0.0f, 1.0f);
                EXPECT_TRUE(isSame(smoothstep(x, y, a), t * t * (3.0f - 2.0f * t)));
            }
        }
    }
}

TEST(KernelFunctions, RoundHalvesToEvenAndFractionsDown) {
    EXPECT_EQ(fract(-1e-30f), 1.0f); // the closed end of its range
    EXPECT_TRUE(isnan(fract(infinity)));
    const float cases[][2] = {{0.5f, 0},      {1.5f, 2},   {2.5f, 2},
                              {-0.5f, -0.0f}, {-1.5f, -2}, {8388607.5f, 8388608}};
    for (const auto& [x, expected] : cases) {
        EXPECT_TRUE(isSame(round(x), expected)) << x;
        EXPECT_TRUE(isSame(roundEven(x), expected)) << x;
    }
    // The largest float below one half, which adding one half would round up.
    EXPECT_EQ(round(0.49999997f), 0.0f);
}

TEST(KernelFunctions, TreatNotANumberAsTheirComparisonsSay) {
    EXPECT_TRUE(isnan(min(notANumber, 1.0f)) && isnan(max(notANumber, 1.0f)));
    EXPECT_TRUE(min(1.0f, notANumber) == 1.0f && max(1.0f, notANumber) == 1.0f);
    EXPECT_TRUE(isnan(clamp(notANumber, 0.0f, 1.0f)));
    EXPECT_EQ(sign(notANumber), 0.0f);
    EXPECT_EQ(step(0.5f, notANumber), 1.0f);
    for (const float x : awkwardValues) {
        EXPECT_EQ(isnan(x), x != x) << x;
        EXPECT_EQ(isinf(x), x == infinity || x == -infinity) << x;
    }
}

TEST(KernelFunctions, FmaRoundsTheProduct) {
    // The exact product is 1 - 2^-46, which single precision rounds to 1.
    const float a = 1.0f + 0x1p-23f, b = 1.0f - 0x1p-23f;
    EXPECT_EQ(fma(a, b, -1.0f), 0.0f);
    EXPECT_EQ(fma(vec2(a), vec2(b), vec2(-1)), vec2(0));
}

// --- Types of results ------------------------------------------------------------------

template <typename T, typename Expression>
constexpr bool yields(Expression) {
    return std::is_same_v<T, Expression>;
}

TEST(KernelFunctions, ComputeInTheTypeThatTheArgumentsAskFor) {
    const int i = -5;
    const uint u = 7;
    EXPECT_TRUE(yields<float>(max(0.5f, 0.0)) && yields<float>(max(1, 0.0)) && yields<float>(max(0.0, u)));
    EXPECT_TRUE(yields<uint>(min(u, 5u)) && yields<uint>(min(u, 5)) && yields<uint>(clamp(u, 0, 5)));
    EXPECT_TRUE(yields<float>(mix(1, 2, 0.5)) && yields<int>(mix(1, 2, true)) &&
                yields<bool>(mix(true, false, true)));
    EXPECT_TRUE(yields<int>(clamp(i, 0, 10)) && yields<int>(abs(i)) && yields<int>(sign(i)));
    EXPECT_EQ(abs(i) + sign(i) + clamp(i, 0, 10), 4);
    EXPECT_EQ(sqrt(2.0), sqrt(2.0f));
    EXPECT_EQ(round(2.5), 2.0f);
    EXPECT_EQ(fma(2, 0.5, 1u), 2.0f);
}

// --- Vectors against scalars -----------------------------------------------------------

// Not const: what the compiler computes of constants is more accurate than the library at run time.
vec4 firstVector(0.3f, -1.5f, 2.5f, 7.25f), secondVector(1.5f, 0.25f, -2.0f, 3.0f),
    thirdVector(0.5f, 2.0f, 0.125f, 4.0f);
ivec4 firstInts(5, -7, 0, 1 << 20), secondInts(-3, 9, 2, 8), thirdInts(6, 10, 4, 4000);

bool isSame(int a, int b) {
    return a == b;
}
bool isSame(uint a, uint b) {
    return a == b;
}

/// Whether each component of `vector` is what `scalar(i)` gives.
template <typename V, typename Scalar>
bool isEach(const V& vector, Scalar scalar) {
    for (int i = 0; i < V::componentCount; ++i) {
        if (!isSame(vector[i], scalar(i)))
            return false;
    }
    return true;
}

// Called for two, three and four components of a, b and t, whose component i is a[i], b[i] and t[i].
#define EACH_SIZE(vectorCall2, vectorCall3, vectorCall4, scalarCall)                                         \
    EXPECT_TRUE(isEach(vectorCall2, [&](int i) { return scalarCall; })) << #vectorCall2;                     \
    EXPECT_TRUE(isEach(vectorCall3, [&](int i) { return scalarCall; })) << #vectorCall3;                     \
    EXPECT_TRUE(isEach(vectorCall4, [&](int i) { return scalarCall; })) << #vectorCall4
#define EACH_V(f) EACH_SIZE(f(a.xy), f(a.xyz), f(a), f(a[i]))
#define EACH_VV(f) EACH_SIZE(f(a.xy, b.xy), f(a.xyz, b.xyz), f(a, b), f(a[i], b[i]))
#define EACH_VS(f) EACH_SIZE(f(a.xy, b.x), f(a.xyz, b.x), f(a, b.x), f(a[i], b.x))
#define EACH_SV(f) EACH_SIZE(f(a.x, b.xy), f(a.x, b.xyz), f(a.x, b), f(a.x, b[i]))
#define EACH_VVV(f) EACH_SIZE(f(a.xy, b.xy, t.xy), f(a.xyz, b.xyz, t.xyz), f(a, b, t), f(a[i], b[i], t[i]))
#define EACH_VSS(f) EACH_SIZE(f(a.xy, b.x, t.x), f(a.xyz, b.x, t.x), f(a, b.x, t.x), f(a[i], b.x, t.x))
#define EACH_VVS(f) EACH_SIZE(f(a.xy, b.xy, t.x), f(a.xyz, b.xyz, t.x), f(a, b, t.x), f(a[i], b[i], t.x))
#define EACH_SSV(f) EACH_SIZE(f(a.x, b.x, t.xy), f(a.x, b.x, t.xyz), f(a.x, b.x, t), f(a.x, b.x, t[i]))

TEST(KernelFunctions, OfFloatVectorsGoComponentByComponent) {
    const vec4 a = firstVector, b = secondVector, t = thirdVector;
    // clang-format off
    EACH_V(radians); EACH_V(degrees); EACH_V(sin); EACH_V(cos); EACH_V(tan); EACH_V(asin); EACH_V(acos);
    EACH_V(atan); EACH_V(sinh); EACH_V(cosh); EACH_V(tanh); EACH_V(asinh); EACH_V(acosh); EACH_V(atanh);
    EACH_V(exp); EACH_V(exp2); EACH_V(log); EACH_V(log2); EACH_V(sqrt); EACH_V(inversesqrt); EACH_V(floor);
    EACH_V(ceil); EACH_V(trunc); EACH_V(round); EACH_V(roundEven); EACH_V(fract); EACH_V(abs);
    EACH_V(sign); EACH_V(floatBitsToInt); EACH_V(floatBitsToUint); EACH_VV(atan); EACH_VV(pow);
    EACH_VV(mod); EACH_VV(min); EACH_VV(max); EACH_VV(step); EACH_VS(mod); EACH_VS(min); EACH_VS(max);
    EACH_SV(step); EACH_VVV(clamp); EACH_VVV(mix); EACH_VVV(smoothstep); EACH_VVV(fma); EACH_VSS(clamp);
    EACH_VVS(mix); EACH_SSV(smoothstep);
    // clang-format on
}

TEST(KernelFunctions, OfWholeNumberVectorsGoComponentByComponent) {
    {
        const ivec4 a = firstInts, b = secondInts, t = thirdInts;
        // clang-format off
        EACH_V(abs); EACH_V(sign); EACH_V(bitCount); EACH_V(findLSB); EACH_V(findMSB);
        EACH_V(bitfieldReverse); EACH_V(intBitsToFloat); EACH_VV(min); EACH_VV(max); EACH_VS(min);
        EACH_VS(max); EACH_VVV(clamp); EACH_VSS(clamp);
        // clang-format on
    }
    {
        const uvec4 a(firstInts), b(secondInts), t(thirdInts);
        // clang-format off
        EACH_V(bitCount); EACH_V(findLSB); EACH_V(findMSB); EACH_V(bitfieldReverse);
        EACH_V(uintBitsToFloat); EACH_VV(min); EACH_VV(max); EACH_VS(min); EACH_VS(max); EACH_VVV(clamp);
        EACH_VSS(clamp);
        // clang-format on
    }
}

TEST(KernelFunctions, MixSelectsByBoolsBitByBit) {
    const vec4 a(1, notANumber, 3, infinity), b(5, 6, notANumber, -0.0f);
    const bvec4 selectSecond(false, true, false, true);
    const vec4 mixed = mix(a, b, selectSecond);
    EXPECT_EQ(mixed.xyz, vec3(1, 6, 3));
    EXPECT_TRUE(isSame(mixed.w, -0.0f));
    EXPECT_EQ(mix(a.xy, b.xy, selectSecond.xy), vec2(1, 6));
    EXPECT_EQ(mix(ivec3(1), ivec3(2), selectSecond.xyz), ivec3(1, 2, 1));
    EXPECT_EQ(mix(uvec2(1), uvec2(2), selectSecond.yx), uvec2(2, 1));
    EXPECT_EQ(mix(bvec2(false), bvec2(true), selectSecond.yx), bvec2(true, false));
    EXPECT_EQ(mix(infinity, 2.0f, true), 2.0f);
    EXPECT_EQ(mix(3, 4u, false), 3u);
}

template <typename V>
void checkComparisons() {
    const V a(1, 2, 3, 4), b(2, 2, 2, 4);
    EXPECT_EQ(lessThan(a, b), bvec4(true, false, false, false));
    EXPECT_EQ(lessThanEqual(a, b), bvec4(true, true, false, true));
    EXPECT_EQ(greaterThan(a.xyz, b.xyz), bvec3(false, false, true));
    EXPECT_EQ(greaterThanEqual(a.yz, b.yz), bvec2(true, true));
    EXPECT_EQ(equal(a, b), bvec4(false, true, false, true));
    EXPECT_EQ(notEqual(a.xyz, b.xyz), bvec3(true, false, true));
}

TEST(KernelFunctions, ComparisonsGiveABoolForEachComponent) {
    checkComparisons<vec4>();
    checkComparisons<ivec4>();
    checkComparisons<uvec4>();
    EXPECT_EQ(equal(bvec2(true), bvec2(true, false)), bvec2(true, false));
    EXPECT_EQ(notEqual(bvec2(true), bvec2(true, false)), bvec2(false, true));
    EXPECT_FALSE(any(lessThan(vec2(notANumber), vec2(1))) ||
                 any(greaterThanEqual(vec2(notANumber), vec2(1))));
    EXPECT_EQ(isnan(vec3(1, notANumber, infinity)), bvec3(false, true, false));
    EXPECT_EQ(isinf(vec4(1, notANumber, infinity, -infinity)), bvec4(false, false, true, true));
}

TEST(KernelFunctions, AnyAllAndNotCombineBools) {
    for (int bits = 0; bits < 16; ++bits) {
        const bvec4 v(bits & 1, bits & 2, bits & 4, bits & 8);
        EXPECT_EQ(any(v), bits != 0);
        EXPECT_EQ(all(v), bits == 15);
        EXPECT_EQ(any(v.xyz), (bits & 7) != 0);
        EXPECT_EQ(all(v.xyz), (bits & 7) == 7);
        EXPECT_EQ(any(v.xy), (bits & 3) != 0);
        EXPECT_EQ(all(v.xy), (bits & 3) == 3);
        EXPECT_EQ(not(v), equal(v, bvec4(false)));
    }
}

// --- Bits ------------------------------------------------------------------------------

TEST(KernelFunctions, CountAndFindBits) {
    struct Case {
        int x;
        int count, lowest, highestSigned, highestUnsigned;
        uint reversed;
    };
    const Case cases[] = {
        {0, 0, -1, -1, -1, 0},
        {1, 1, 0, 0, 0, 0x80000000u},
        {-1, 32, 0, -1, 31, 0xffffffffu},
        {12, 2, 2, 3, 3, 0x30000000u},
        {-2, 31, 1, 0, 31, 0x7fffffffu},
        {0x12345678, 13, 3, 28, 28, 0x1e6a2c48u},
        {std::numeric_limits<int>::min(), 1, 31, 30, 31, 1},
    };
    for (const Case& test : cases) {
        const uint u = static_cast<uint>(test.x);
        EXPECT_EQ(bitCount(test.x), test.count) << test.x;
        EXPECT_EQ(bitCount(u), test.count) << test.x;
        EXPECT_EQ(findLSB(test.x), test.lowest) << test.x;
        EXPECT_EQ(findLSB(u), test.lowest) << test.x;
        EXPECT_EQ(findMSB(test.x), test.highestSigned) << test.x;
        EXPECT_EQ(findMSB(u), test.highestUnsigned) << test.x;
        EXPECT_EQ(bitfieldReverse(u), test.reversed) << test.x;
        EXPECT_EQ(static_cast<uint>(bitfieldReverse(test.x)), test.reversed) << test.x;
    }
}

TEST(KernelFunctions, KeepTheBitsOfFloats) {
    for (const float x : awkwardValues) {
        const uint bits = floatBitsToUint(x);
        EXPECT_TRUE(isSame(uintBitsToFloat(bits), x) && isSame(intBitsToFloat(floatBitsToInt(x)), x)) << x;
        EXPECT_EQ(static_cast<uint>(floatBitsToInt(x)), bits) << x;
    }
    EXPECT_EQ(floatBitsToUint(-2.0f), 0xc0000000u);
}

// --- Geometry --------------------------------------------------------------------------

TEST(KernelFunctions, GeometryFollowsItsFormulasBitByBit) {
    const vec4 a = firstVector, b = secondVector;
    EXPECT_EQ(dot(a.xy, b.xy), a.x * b.x + a.y * b.y);
    EXPECT_EQ(dot(a.xyz, b.xyz), (a.x * b.x + a.y * b.y) + a.z * b.z);
    EXPECT_EQ(dot(a, b), ((a.x * b.x + a.y * b.y) + a.z * b.z) + a.w * b.w);
    // Large and small products show the order of the sum.
    EXPECT_EQ(dot(vec3(1e8f, 1, -1e8f), vec3(1)), 0.0f);
    EXPECT_EQ(length(a), std::sqrt(dot(a, a)));
    EXPECT_EQ(length(-2.0), 2.0f);
    EXPECT_EQ(distance(a.xyz, b.xyz), length(a.xyz - b.xyz));
    EXPECT_EQ(normalize(a), a * inversesqrt(dot(a, a)));
    EXPECT_TRUE(all(isnan(normalize(vec2(0)))));
    EXPECT_EQ(cross(vec3(1, 2, 3), vec3(5, 7, 11)), vec3(1, 4, -3));
    EXPECT_EQ(faceforward(a, b, -b), a);
    EXPECT_EQ(faceforward(a.xy, b.xy, b.xy), -a.xy);
    EXPECT_EQ(faceforward(a.xy, b.xy, vec2(0)), -a.xy);
    EXPECT_EQ(reflect(a.xyz, b.xyz), a.xyz - 2 * dot(b.xyz, a.xyz) * b.xyz);
    EXPECT_EQ(reflect(vec2(1, -1), vec2(0, 1)), vec2(1, 1));
}

TEST(KernelFunctions, RefractionFollowsSnell) {
    const float angle = radians(30.0f), eta = 1.0f / 1.5f;
    const vec2 direction(sin(angle), -cos(angle)), normal(0, 1);
    const vec2 refracted = refract(direction, normal, eta);
    EXPECT_NEAR(refracted.x, sin(angle) * eta, 1e-6);
    EXPECT_NEAR(length(refracted), 1.0f, 1e-6);
    EXPECT_LT(refracted.y, 0.0f);
    EXPECT_EQ(refract(vec3(0.8, -0.6, 0), vec3(0, 1, 0), 1.5), vec3(0));
}

} // namespace norvi::kernel::functionstest
