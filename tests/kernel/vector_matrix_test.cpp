// The matrices of the kernel language.
#include "norvi/kernel/vector.h"

#include <cmath>
#include <type_traits>

#include <gtest/gtest.h>

namespace norvi::kernel::matrixtest {

const mat3 counting3(1, 2, 3, 4, 5, 6, 7, 8, 10);
const mat4 counting4(1, 2, 3, 4, 5, 6, 7, 9, 9, 10, 12, 12, 13, 15, 15, 16);

template <typename M>
constexpr int size = std::is_same_v<M, mat3> ? 3 : 4;

/// The definition, written with indices.
template <typename M>
M productOf(const M& a, const M& b) {
    M product(0);
    for (int c = 0; c < size<M>; ++c) {
        for (int r = 0; r < size<M>; ++r) {
            for (int k = 0; k < size<M>; ++k)
                product[c][r] += a[k][r] * b[c][k];
        }
    }
    return product;
}

TEST(KernelMatrices, AreStoredByColumns) {
    EXPECT_EQ(counting3[1], vec3(4, 5, 6));
    EXPECT_EQ(counting3[2][0], 7.0f);
    EXPECT_TRUE(counting3.v0 == counting3[0] && counting3.v1 == counting3[1] && counting3.v2 == counting3[2]);
    EXPECT_EQ(counting4.v0.w, 4.0f);
    EXPECT_EQ(counting4.v3.zyx, vec3(15, 15, 13));
    mat4 m = counting4;
    for (int c = 0; c < 4; ++c)
        m[c][c] = 0;
    EXPECT_EQ(m, mat4(vec4(0, 2, 3, 4), vec4(5, 0, 7, 9), vec4(9, 10, 0, 12), vec4(13, 15, 15, 0)));
    m.v2.xy = vec2(1);
    EXPECT_EQ(m[2], vec4(1, 1, 0, 12));
}

TEST(KernelMatrices, AreMadeFromDiagonalsColumnsAndEachOther) {
    EXPECT_EQ(mat3(2), mat3(2, 0, 0, 0, 2, 0, 0, 0, 2));
    EXPECT_EQ(mat4(1.0), mat4(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1));
    EXPECT_EQ(mat3(counting4), mat3(1, 2, 3, 5, 6, 7, 9, 10, 12));
    EXPECT_EQ(mat4(counting3), mat4(1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 10, 0, 0, 0, 0, 1));
    static_assert(mat3(3)[1].y == 3 && (mat3(2) * vec3(1, 2, 3)).z == 6);
}

TEST(KernelMatrices, MultiplyVectorsAndMatrices) {
    EXPECT_EQ(counting3 * vec3(1, 0, 2), counting3[0] + counting3[2] * 2);
    EXPECT_EQ(counting4 * vec4(0, 1, 0, -1), counting4[1] - counting4[3]);
    EXPECT_EQ(vec3(1, 2, 3) * counting3, transpose(counting3) * vec3(1, 2, 3));
    EXPECT_EQ(vec4(1, 2, 3, 4) * counting4, transpose(counting4) * vec4(1, 2, 3, 4));
    EXPECT_EQ(counting3 * transpose(counting3), productOf(counting3, transpose(counting3)));
    EXPECT_EQ(counting4 * transpose(counting4), productOf(counting4, transpose(counting4)));
    EXPECT_EQ((counting3 * transpose(counting3)) * vec3(1, 2, 3),
              counting3 * (transpose(counting3) * vec3(1, 2, 3)));
    mat3 m = counting3;
    m *= counting3;
    EXPECT_EQ(m, counting3 * counting3);
    vec3 v(1, 2, 3);
    v *= counting3;
    EXPECT_EQ(v, vec3(1, 2, 3) * counting3);
}

TEST(KernelMatrices, OtherOperatorsGoElementByElement) {
    const mat3 m(counting3);
    EXPECT_EQ((m + m)[2][2], 20.0f);
    EXPECT_EQ(m - m, mat3(0));
    EXPECT_EQ((m / m)[1], vec3(1));
    EXPECT_EQ(2 * m, m * 2.0);
    EXPECT_EQ((m / 2)[1][0], 2.0f);
    EXPECT_EQ((1 - m)[0], vec3(0, -1, -2));
    EXPECT_EQ((-counting4)[3], -counting4[3]);
    mat4 n = counting4;
    n += counting4;
    n -= mat4(1);
    n *= 2;
    n /= 4;
    n /= mat4(vec4(1), vec4(1), vec4(1), vec4(2));
    EXPECT_EQ(n[0], vec4(0.5, 2, 3, 4));
    EXPECT_EQ(n[3], vec4(6.5, 7.5, 7.5, 7.75));
    EXPECT_TRUE(m == counting3 && m != mat3(1));
}

TEST(KernelMatrices, TransposeSwapsRowsAndColumns) {
    EXPECT_EQ(transpose(counting3), mat3(1, 4, 7, 2, 5, 8, 3, 6, 10));
    EXPECT_EQ(transpose(counting4), mat4(1, 5, 9, 13, 2, 6, 10, 15, 3, 7, 12, 15, 4, 9, 12, 16));
}

/// By expansion along the first column, the definition.
double determinantOf(const mat4& m) {
    double sum = 0;
    for (int row = 0; row < 4; ++row) {
        int r[3];
        for (int i = 0; i < 3; ++i)
            r[i] = i < row ? i : i + 1;
        const auto minor = [&](int i, int j) {
            return double(m[2][r[i]]) * m[3][r[j]] - double(m[2][r[j]]) * m[3][r[i]];
        };
        const double cofactor =
            m[1][r[0]] * minor(1, 2) - m[1][r[1]] * minor(0, 2) + m[1][r[2]] * minor(0, 1);
        sum += (row % 2 == 0 ? 1 : -1) * m[0][row] * cofactor;
    }
    return sum;
}

TEST(KernelMatrices, DeterminantsAgreeWithTheExpansion) {
    EXPECT_EQ(determinant(counting3), -3.0f);
    EXPECT_EQ(determinant(mat3(2)), 8.0f);
    EXPECT_EQ(determinant(mat4(2)), 16.0f);
    EXPECT_EQ(determinant(counting4), determinantOf(counting4));
    EXPECT_EQ(determinant(mat4(counting3)), -3.0f);
    EXPECT_EQ(determinant(mat4(mat3(1)) *
                          mat4(vec4(0, 1, 0, 0), vec4(1, 0, 0, 0), vec4(0, 0, 1, 0), vec4(0, 0, 0, 1))),
              -1.0f);
}

template <typename M>
void checkInverse(const M& m, double tolerance) {
    for (const M& product : {m * inverse(m), inverse(m) * m}) {
        for (int c = 0; c < size<M>; ++c) {
            for (int r = 0; r < size<M>; ++r)
                EXPECT_NEAR(product[c][r], c == r ? 1.0 : 0.0, tolerance);
        }
    }
}

TEST(KernelMatrices, InversesUndoTheirMatrices) {
    checkInverse(counting3, 1e-4);
    checkInverse(counting4, 1e-4);
    checkInverse(mat4(counting3), 1e-4);
    checkInverse(mat3(0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.48, 0.64, 0.6), 1e-6);
    EXPECT_EQ(inverse(mat4(vec4(2, 0, 0, 0), vec4(0, 4, 0, 0), vec4(0, 0, 8, 0), vec4(1, 2, 4, 1))),
              mat4(vec4(0.5, 0, 0, 0), vec4(0, 0.25, 0, 0), vec4(0, 0, 0.125, 0), vec4(-0.5, -0.5, -0.5, 1)));
}

} // namespace norvi::kernel::matrixtest
