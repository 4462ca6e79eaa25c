// Constructors, operators, swizzles and storage of the kernel language's vectors.
#include "norvi/kernel/vector.h"

#include <algorithm>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace norvi::kernel::typestest {

// --- Constructors ----------------------------------------------------------------------

TEST(KernelVectors, AreMadeFromScalarsOfAnyType) {
    EXPECT_EQ(vec3(1), vec3(1.0, 1.0f, 1u));
    EXPECT_EQ(vec2(half(0.5f), true), vec2(0.5, 1));
    EXPECT_EQ(ivec2(1.9, -1.9), ivec2(1, -1));
    EXPECT_EQ(uvec4(3), uvec4(3u, 3, 3.5, 3));
    EXPECT_EQ(bvec2(2, 0.0), bvec2(true, false));
    constexpr vec3 constant(1, 2, 3);
    static_assert(constant.y == 2 && (constant * 2 + constant).z == 9 && vec4(constant, 4).w == 4);
}

TEST(KernelVectors, AreMadeFromShorterVectors) {
    const vec2 ab(1, 2), cd(3, 4);
    const vec3 abc(1, 2, 3), bcd(2, 3, 4);
    const vec4 all(1, 2, 3, 4);
    EXPECT_EQ(vec3(ab, 3), abc);
    EXPECT_EQ(vec3(2, cd), bcd);
    EXPECT_EQ(vec4(ab, 3.0, 4), all);
    EXPECT_EQ(vec4(1, abc.yz, 4.0), all);
    EXPECT_EQ(vec4(1, 2u, cd), all);
    EXPECT_EQ(vec4(ab, cd), all);
    EXPECT_EQ(vec4(abc, 4), all);
    EXPECT_EQ(vec4(1, bcd), all);
    EXPECT_EQ(vec4(all.xy, all.zw), all);
    EXPECT_EQ(vec4(ivec2(1, 2), uvec2(3, 4)), all);
    EXPECT_EQ(ivec3(vec2(1.5, -2.5), 3.5), ivec3(1, -2, 3));
}

TEST(KernelVectors, AreMadeFromLongerAndOtherVectors) {
    const vec4 v(1.5, -2.5, 3, 0);
    EXPECT_EQ(vec3(v), vec3(1.5, -2.5, 3));
    EXPECT_EQ(vec2(v.zyx), vec2(3, -2.5));
    EXPECT_EQ(ivec2(v.xy), ivec2(1, -2));
    EXPECT_EQ(ivec4(v), ivec4(1, -2, 3, 0));
    EXPECT_EQ(vec2(ivec2(1, -2)), vec2(1, -2));
    EXPECT_EQ(uvec3(ivec3(-1, 0, 1)), uvec3(0xffffffffu, 0u, 1u));
    EXPECT_EQ(bvec4(v), bvec4(true, true, true, false));
    EXPECT_EQ(vec4(bvec4(v)), vec4(1, 1, 1, 0));
}

template <typename From, typename To>
constexpr bool isImplicit = std::is_convertible_v<From, To>;

TEST(KernelVectors, ChangeTypeOrSizeOnlyWhenAsked) {
    EXPECT_FALSE((isImplicit<float, vec3>));
    EXPECT_FALSE((isImplicit<vec4, vec3>));
    EXPECT_FALSE((isImplicit<ivec3, vec3>));
    EXPECT_TRUE((isImplicit<decltype(vec4().zyx), vec3>));
    EXPECT_FALSE((isImplicit<decltype(vec4().zyx), vec2>));
    EXPECT_FALSE((isImplicit<decltype(vec4().zyx), ivec3>));
}

// --- Operators -------------------------------------------------------------------------

TEST(KernelVectors, ComputeWithVectorsAndScalarsOfEitherSide) {
    const vec3 p(1, 2, 4), q(8, 4, 2);
    EXPECT_EQ(p + q, vec3(9, 6, 6));
    EXPECT_EQ(p - q, vec3(-7, -2, 2));
    EXPECT_EQ(p * q, vec3(8, 8, 8));
    EXPECT_EQ(q / p, vec3(8, 2, 0.5));
    EXPECT_EQ(-p, vec3(-1, -2, -4));
    EXPECT_EQ(+p, p);
    EXPECT_EQ(2 * p, p * 2u);
    EXPECT_EQ(p * 0.5, vec3(0.5, 1, 2));
    EXPECT_EQ(1.0 / p, vec3(1, 0.5f, 0.25));
    EXPECT_EQ(10 - p, vec3(9, 8, 6));
    EXPECT_EQ(half(2.0f) * p, vec3(2, 4, 8));
    EXPECT_TRUE(p == vec3(1, 2, 4) && p != q && !(p == q));
    EXPECT_TRUE(vec2(NAN) != vec2(NAN));
    EXPECT_TRUE(vec2(0.0f) == vec2(-0.0f));
}

TEST(KernelVectors, ComputeInSinglePrecision) {
    // In double the sum would be 0.3, in single it is the nearest float of the sum of the nearest floats.
    EXPECT_EQ((vec2(0.1) + 0.2).x, 0.1f + 0.2f);
    EXPECT_EQ((vec2(1) / 3.0).x, 1.0f / 3.0f);
}

TEST(KernelVectors, WholeNumbersHaveRemainderShiftsAndBits) {
    const ivec3 i(7, -7, 12);
    EXPECT_EQ(i / 2, ivec3(3, -3, 6));
    EXPECT_EQ(i % 4, ivec3(3, -3, 0));
    EXPECT_EQ(i >> 1, ivec3(3, -4, 6));
    EXPECT_EQ(i << ivec3(0, 0, 2), ivec3(7, -7, 48));
    EXPECT_EQ(1 << ivec3(0, 1, 2), ivec3(1, 2, 4));
    EXPECT_EQ(i & 3, ivec3(3, 1, 0));
    EXPECT_EQ(i | ivec3(8), ivec3(15, -7, 12));
    EXPECT_EQ(i ^ i, ivec3(0));
    EXPECT_EQ(~i, ivec3(-8, 6, -13));
    EXPECT_EQ(uvec2(3) - 4, uvec2(0xffffffffu));
    EXPECT_EQ(uvec2(0xffffffffu) >> 31, uvec2(1));
    EXPECT_EQ(!bvec3(true, false, true), bvec3(false, true, false));
}

template <typename A, typename B>
concept Addable = requires(A a, B b) {
    a + b;
};
template <typename A, typename B>
concept HaveRemainder = requires(A a, B b) {
    a % b;
};

TEST(KernelVectors, OperatorsThatTheLanguageLacksAreAbsent) {
    EXPECT_TRUE((Addable<vec3, vec3>));
    EXPECT_FALSE((Addable<vec3, vec2>));
    EXPECT_FALSE((Addable<vec3, ivec3>));
    EXPECT_FALSE((Addable<bvec3, bvec3>));
    EXPECT_TRUE((HaveRemainder<uvec3, uint>));
    EXPECT_FALSE((HaveRemainder<vec3, float>));
}

TEST(KernelVectors, CompoundAssignmentIsTheOperatorAndAssignment) {
    vec3 v(1, 2, 3);
    v += 1;
    v -= vec3(0, 0, 2);
    v *= vec3(2, 3, 4);
    v /= 2.0;
    EXPECT_EQ(v, vec3(2, 4.5, 4));
    uvec2 u(5, 12);
    u %= 8;
    u <<= 2;
    u >>= uvec2(1, 0);
    u &= 15;
    u |= 1;
    u ^= uvec2(2);
    EXPECT_EQ(u, uvec2(9, 3));
    v[0] = 7;
    v.y += v[0];
    EXPECT_EQ(v, vec3(7, 11.5, 4));
}

// --- Storage ---------------------------------------------------------------------------

static_assert(sizeof(vec2) == 8 && sizeof(vec3) == 12 && sizeof(vec4) == 16 && alignof(vec4) == 4);
static_assert(sizeof(mat3) == 36 && sizeof(mat4) == 64 && sizeof(half3) == 6);
static_assert(std::is_same_v<StorageOf<vec3>, norvi::Vector32>);
static_assert(std::is_same_v<StorageOf<uvec4>, norvi::Vec4<norvi::UInt32>>);
static_assert(std::is_same_v<StorageOf<mat4>, norvi::SquareMatrix4d32>);
static_assert(std::is_same_v<StorageOf<half4>, norvi::Vec4<norvi::HalfFloat>>);
static_assert(std::is_same_v<StorageOf<float>, norvi::Float32>);
static_assert(std::is_same_v<StorageOf<const char*>, const char*>);

/// Values of the storage type of `T`, made by `makeComponents`, seen as and converted to values of `T`.
template <typename T, typename Element>
void checkStorage() {
    using Storage = StorageOf<T>;
    constexpr int count = sizeof(T) / sizeof(Element);
    Element elements[count];
    for (int i = 0; i < count; ++i)
        elements[i] = static_cast<Element>(static_cast<float>(i + 1));
    Storage storage;
    std::memcpy(static_cast<void*>(&storage), elements, sizeof(storage));

    const T value = storage;
    EXPECT_EQ(std::memcmp(static_cast<const void*>(&value), elements, sizeof(value)), 0);
    EXPECT_EQ(static_cast<Storage>(value), storage);
    const T* view = reinterpret_cast<const T*>(&storage);
    EXPECT_EQ(std::memcmp(static_cast<const void*>(view), elements, sizeof(value)), 0);
    EXPECT_FALSE((std::is_convertible_v<T, Storage>));
}

TEST(KernelVectors, HaveTheLayoutOfTheirStorageTypesAndConvert) {
    // clang-format off
    checkStorage<vec2, float>(); checkStorage<vec3, float>(); checkStorage<vec4, float>();
    checkStorage<ivec2, int>(); checkStorage<ivec3, int>(); checkStorage<ivec4, int>();
    checkStorage<uvec2, uint>(); checkStorage<uvec3, uint>(); checkStorage<uvec4, uint>();
    checkStorage<mat3, float>(); checkStorage<mat4, float>(); checkStorage<half2, half>();
    checkStorage<half3, half>(); checkStorage<half4, half>();
    // clang-format on
}

[[gnu::noinline]] void copyTo(vec3* to, const vec3* from) {
    *to = vec3(*from);
}

/// Apart from the test, so that g++ optimises as it does in kernels: it drops the initial value if it
/// believes that the view reads something else.
[[gnu::noinline]] float sumSeenThroughViews() {
    norvi::Vector32 first{7, 8, 9}, second{0, 0, 0};
    copyTo(reinterpret_cast<vec3*>(&second), reinterpret_cast<const vec3*>(&first));
    return second.x + second.y + second.z;
}

TEST(KernelVectors, ViewsSeeStoresToTheStorage) {
    EXPECT_EQ(sumSeenThroughViews(), 24.0f);
}

TEST(KernelVectors, HalvesHoldValuesAndComputeAsFloats) {
    const half h(0.5f);
    static_assert(std::is_same_v<decltype(h * h), float> && std::is_same_v<decltype(max(h, 1)), float>);
    half4 stored = vec4(1, 2, 3, 65504);
    EXPECT_EQ(vec4(stored) * 2.0, vec4(2, 4, 6, 131008));
    stored = vec4(0.1f);
    EXPECT_EQ(float(stored.x), float(half(0.1f)));
    EXPECT_EQ(half3(vec3(1, 2, 3).zyx).x, half(3.0f));
    EXPECT_EQ(length(half2(vec2(3, 4))), 5.0f);
}

} // namespace norvi::kernel::typestest
