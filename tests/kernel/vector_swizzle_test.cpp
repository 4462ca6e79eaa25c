// Every swizzle of the kernel language, read and written, and the places where one may stand.
#include "norvi/kernel/vector.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace norvi::kernel::swizzletest {

template <typename S>
concept Assignable = requires(S& swizzle, typename S::Vector value) {
    swizzle = value;
};

/// Checks what reading a swizzle of the vector (10, 11, ...) gave, and what the vector became when the
/// swizzle, if it can be assigned to, was raised by 10, by what the letters of `name` say.
void checkOutcome(const std::string& name, const float* read, const float* vector, int count,
                  bool isAssignable) {
    std::string indices;
    for (const char letter : name)
        indices += static_cast<char>('0' + std::string("xyzwrgba").find(letter) % 4);
    for (std::size_t i = 0; i < name.size(); ++i)
        EXPECT_EQ(read[i], static_cast<float>(10 + indices[i] - '0')) << name;

    std::string sorted = indices;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(isAssignable, std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end()) << name;
    for (int i = 0; i < count; ++i) {
        const bool isNamed = indices.find(static_cast<char>('0' + i)) != std::string::npos;
        EXPECT_EQ(vector[i], static_cast<float>(10 + i + (isAssignable && isNamed ? 10 : 0))) << name;
    }
}

template <typename V, typename S, std::size_t NameSize>
[[gnu::noinline]] void checkSwizzle(V& vector, S& swizzle, const char (&name)[NameSize]) {
    static_assert(S::componentCount == NameSize - 1);
    for (int i = 0; i < V::componentCount; ++i)
        vector[i] = static_cast<float>(10 + i);
    const typename S::Vector value = swizzle;
    if constexpr (Assignable<S>)
        swizzle = value + 10.0f;
    checkOutcome(name, value.components, vector.components, V::componentCount, Assignable<S>);
}

// CHECK for all names of two to four of the letters. Vectors of fewer components repeat letters.
#define CHECK(name) checkSwizzle(v, v.name, #name);
#define NAMES(a, b, c, d)                                                                                    \
    NAMES_1(a, a, b, c, d) NAMES_1(b, a, b, c, d) NAMES_1(c, a, b, c, d) NAMES_1(d, a, b, c, d)
#define NAMES_1(n, a, b, c, d)                                                                               \
    NAMES_2(n##a, a, b, c, d) NAMES_2(n##b, a, b, c, d) NAMES_2(n##c, a, b, c, d) NAMES_2(n##d, a, b, c, d)
#define NAMES_2(n, a, b, c, d)                                                                               \
    CHECK(n)                                                                                                 \
    NAMES_3(n##a, a, b, c, d) NAMES_3(n##b, a, b, c, d) NAMES_3(n##c, a, b, c, d) NAMES_3(n##d, a, b, c, d)
#define NAMES_3(n, a, b, c, d) CHECK(n) CHECK(n##a) CHECK(n##b) CHECK(n##c) CHECK(n##d)

TEST(KernelSwizzles, NameComponentsInAnyOrderAndAreAssignableWithoutRepetition) {
    {
        vec2 v;
        NAMES(x, y, x, y)
        NAMES(r, g, r, g)
    }
    {
        vec3 v;
        NAMES(x, y, z, x)
        NAMES(r, g, b, r)
    }
    {
        vec4 v;
        NAMES(x, y, z, w)
        NAMES(r, g, b, a)
    }
}

TEST(KernelSwizzles, AssignmentReadsBeforeItWrites) {
    vec2 p(1, 2);
    p.xy = p.yx;
    EXPECT_EQ(p, vec2(2, 1));
    p.yx = p;
    EXPECT_EQ(p, vec2(1, 2));
    p = p.yx;
    EXPECT_EQ(p, vec2(2, 1));
    vec4 q(1, 2, 3, 4);
    q.zx = q.xy;
    EXPECT_EQ(q, vec4(2, 2, 1, 4));
}

TEST(KernelSwizzles, AssignmentOfTheSameSwizzleCopiesOnlyWhatIsNamed) {
    const vec3 from(1, 2, 3);
    vec3 to(7, 8, 9);
    to.zx = from.zx;
    EXPECT_EQ(to, vec3(1, 8, 3));
}

TEST(KernelSwizzles, TakeCompoundAssignment) {
    vec3 p(1, 2, 3);
    p.xy += 1;
    p.zy -= vec2(1, 0.5);
    p.xz *= p.zx;
    p.bgr /= 2.0;
    EXPECT_EQ(p, vec3(2, 1.25, 2));
    ivec3 i(5, 6, 7);
    i.xy %= 4;
    i.zx <<= 1;
    i.yz >>= i.xy;
    i.xyz &= 7;
    i.xy |= 8;
    i.yz ^= i.zy;
    EXPECT_EQ(i, ivec3(10, 11, 11));
}

TEST(KernelSwizzles, AreOperands) {
    const vec3 p(1, 2, 4), q(8, 4, 2);
    EXPECT_EQ(p.xy + q.yx, vec2(5, 10));
    EXPECT_EQ(p.zyx * q, vec3(32, 8, 2));
    EXPECT_EQ(q / p.zyx, vec3(2, 2, 2));
    EXPECT_EQ(2 * p.xy, vec2(2, 4));
    EXPECT_EQ(p.xy / p.z, vec2(0.25, 0.5));
    EXPECT_EQ(-p.yz, vec2(-2, -4));
    EXPECT_TRUE(p.xy == vec2(1, 2) && p.xy == p.rg && p.xy != q.xy && vec2(4, 2) == q.yz);
    EXPECT_EQ(ivec3(6).xy % ivec3(4).yz, ivec2(2));
    EXPECT_EQ(~uvec3(0).xy, uvec2(0xffffffffu));
    EXPECT_EQ(!bvec2(true, false).yx, bvec2(true, false));
    EXPECT_EQ(mat3(2) * p.zyx, vec3(8, 4, 2));
    EXPECT_EQ(p.zyx * mat3(2), vec3(8, 4, 2));
    EXPECT_EQ(mat3(p.xxx, p.yyy, p.zzz)[2], vec3(4));
}

TEST(KernelSwizzles, AreArgumentsAndResults) {
    const vec3 p(1, 2, 4), q(8, 4, 2);
    EXPECT_EQ(dot(p.xy, q.yz), 8.0f);
    EXPECT_EQ(length(p.yy * vec2(1.5, 2)), 5.0f);
    EXPECT_EQ(cross(p.zyx, q.zyx), cross(vec3(4, 2, 1), vec3(2, 4, 8)));
    EXPECT_EQ(mix(p.xy, q.xy, 0.5), vec2(4.5, 3));
    EXPECT_EQ(max(p.xy, 1.5), vec2(1.5, 2));
    EXPECT_EQ(clamp(p.zyx, 1.5, 3), vec3(3, 2, 1.5));
    EXPECT_EQ(step(1.5, p.xy), vec2(0, 1));
    EXPECT_EQ(sin(p.xy), vec2(sin(1.0f), sin(2.0f)));
    EXPECT_EQ(lessThan(p.xz, q.xz), bvec2(true, false));
    EXPECT_TRUE(any(lessThan(p, q).zx) && !all(lessThan(p, q).zx));
    const auto reversed = [](const vec3& v) -> vec3 { return v.zyx; };
    EXPECT_EQ(reversed(p.zyx), p);
    const bool isFirst = true;
    EXPECT_EQ(isFirst ? p.xy : vec2(0), vec2(1, 2));
}

} // namespace norvi::kernel::swizzletest
