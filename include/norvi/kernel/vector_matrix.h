// The matrices of the kernel language: mat3 and mat4, stored by columns.
//
// `m[c]` is column c and `m[c][r]` the element in its row r; `v0` to `v3` name the columns as well. Size,
// alignment and layout are those of the storage types: columns without padding, so 36 and 64 bytes.
#pragma once

#include "norvi/host/types.h"
#include "norvi/kernel/vector_functions.h"
#include "norvi/kernel/vector_types.h"

namespace norvi::kernel {

#define NORVI_COLUMNS_3(E, ...) E(v0, __VA_ARGS__), E(v1, __VA_ARGS__), E(v2, __VA_ARGS__)
#define NORVI_COLUMNS_4(E, ...) NORVI_COLUMNS_3(E, __VA_ARGS__), E(v3, __VA_ARGS__)
#define NORVI_MATRIX_TIMES_COLUMN(column, left) left* right.column
#define NORVI_ROW_TIMES_COLUMN(column, left) dot(left, right.column)

#define NORVI_ELEMENTWISE_OPERATOR(M, N, op)                                                                 \
    friend constexpr M operator op(const M& left, const M& right) {                                          \
        return M(NORVI_COLUMNS_##N(NORVI_VECTOR_VECTOR, op));                                                \
    }                                                                                                        \
    constexpr M& operator op##=(const M& right) {                                                            \
        return *this = *this op right;                                                                       \
    }

#define NORVI_SCALAR_OPERATOR(M, N, op)                                                                      \
    friend constexpr M operator op(const M& left, float right) {                                             \
        return M(NORVI_COLUMNS_##N(NORVI_VECTOR_SCALAR, op));                                                \
    }                                                                                                        \
    friend constexpr M operator op(float left, const M& right) {                                             \
        return M(NORVI_COLUMNS_##N(NORVI_SCALAR_VECTOR, op));                                                \
    }                                                                                                        \
    constexpr M& operator op##=(float right) {                                                               \
        return *this = *this op right;                                                                       \
    }

/// The operators of the matrix class `M` of `N` columns, other than matrix times vector. `*` of two matrices
/// is the matrix product; all others go element by element.
#define NORVI_MATRIX_OPERATORS(M, V, N)                                                                      \
    NORVI_ELEMENTWISE_OPERATOR(M, N, +)                                                                      \
    NORVI_ELEMENTWISE_OPERATOR(M, N, -)                                                                      \
    NORVI_ELEMENTWISE_OPERATOR(M, N, /)                                                                      \
    NORVI_SCALAR_OPERATOR(M, N, +)                                                                           \
    NORVI_SCALAR_OPERATOR(M, N, -)                                                                           \
    NORVI_SCALAR_OPERATOR(M, N, *)                                                                           \
    NORVI_SCALAR_OPERATOR(M, N, /)                                                                           \
    friend constexpr M operator-(const M& right) {                                                           \
        return M(NORVI_COLUMNS_##N(NORVI_PREFIXED, -));                                                      \
    }                                                                                                        \
    friend constexpr M operator*(const M& left, const M& right) {                                            \
        return M(NORVI_COLUMNS_##N(NORVI_MATRIX_TIMES_COLUMN, left));                                        \
    }                                                                                                        \
    friend constexpr V operator*(const V& left, const M& right) {                                            \
        return V(NORVI_COLUMNS_##N(NORVI_ROW_TIMES_COLUMN, left));                                           \
    }                                                                                                        \
    friend constexpr V& operator*=(V& left, const M& right) {                                                \
        return left = left * right;                                                                          \
    }                                                                                                        \
    constexpr M& operator*=(const M& right) {                                                                \
        return *this = *this * right;                                                                        \
    }

struct [[gnu::may_alias]] mat4;

struct [[gnu::may_alias]] mat3 {
    vec3 v0, v1, v2;

    mat3() = default;
    /// The unit matrix times `diagonal`.
    constexpr explicit mat3(float diagonal) : mat3(diagonal, 0, 0, 0, diagonal, 0, 0, 0, diagonal) {}
    constexpr mat3(const vec3& column0, const vec3& column1, const vec3& column2)
        : v0(column0), v1(column1), v2(column2) {}
    /// Element by element, one column after the other.
    constexpr mat3(float m00, float m01, float m02, float m10, float m11, float m12, float m20, float m21,
                   float m22)
        : v0(m00, m01, m02), v1(m10, m11, m12), v2(m20, m21, m22) {}
    /// The upper left part.
    constexpr explicit mat3(const mat4& m);

    constexpr mat3(const norvi::SquareMatrix32& m) : mat3(m.columns[0], m.columns[1], m.columns[2]) {}
    constexpr explicit operator norvi::SquareMatrix32() const {
        return {{norvi::Vector32(v0), norvi::Vector32(v1), norvi::Vector32(v2)}};
    }

    constexpr vec3& operator[](int c) { return c == 0 ? v0 : c == 1 ? v1 : v2; }
    constexpr const vec3& operator[](int c) const { return c == 0 ? v0 : c == 1 ? v1 : v2; }

    NORVI_MATRIX_OPERATORS(mat3, vec3, 3)
    friend constexpr vec3 operator*(const mat3& m, const vec3& v) {
        return m.v0 * v.x + m.v1 * v.y + m.v2 * v.z;
    }
    friend constexpr bool operator==(const mat3& left, const mat3& right) {
        return left.v0 == right.v0 && left.v1 == right.v1 && left.v2 == right.v2;
    }
};

struct [[gnu::may_alias]] mat4 {
    vec4 v0, v1, v2, v3;

    mat4() = default;
    /// The unit matrix times `diagonal`.
    constexpr explicit mat4(float diagonal)
        : mat4(diagonal, 0, 0, 0, 0, diagonal, 0, 0, 0, 0, diagonal, 0, 0, 0, 0, diagonal) {}
    constexpr mat4(const vec4& column0, const vec4& column1, const vec4& column2, const vec4& column3)
        : v0(column0), v1(column1), v2(column2), v3(column3) {}
    /// Element by element, one column after the other.
    constexpr mat4(float m00, float m01, float m02, float m03, float m10, float m11, float m12, float m13,
                   float m20, float m21, float m22, float m23, float m30, float m31, float m32, float m33)
        : v0(m00, m01, m02, m03), v1(m10, m11, m12, m13), v2(m20, m21, m22, m23), v3(m30, m31, m32, m33) {}
    /// `m` as the upper left part of the unit matrix.
    constexpr explicit mat4(const mat3& m) : v0(m.v0, 0), v1(m.v1, 0), v2(m.v2, 0), v3(0, 0, 0, 1) {}

    constexpr mat4(const norvi::SquareMatrix4d32& m)
        : mat4(m.columns[0], m.columns[1], m.columns[2], m.columns[3]) {}
    constexpr explicit operator norvi::SquareMatrix4d32() const {
        return {{norvi::Vector4d32(v0), norvi::Vector4d32(v1), norvi::Vector4d32(v2), norvi::Vector4d32(v3)}};
    }

    constexpr vec4& operator[](int c) { return c == 0 ? v0 : c == 1 ? v1 : c == 2 ? v2 : v3; }
    constexpr const vec4& operator[](int c) const { return c == 0 ? v0 : c == 1 ? v1 : c == 2 ? v2 : v3; }

    NORVI_MATRIX_OPERATORS(mat4, vec4, 4)
    friend constexpr vec4 operator*(const mat4& m, const vec4& v) {
        return m.v0 * v.x + m.v1 * v.y + m.v2 * v.z + m.v3 * v.w;
    }
    friend constexpr bool operator==(const mat4& left, const mat4& right) {
        return left.v0 == right.v0 && left.v1 == right.v1 && left.v2 == right.v2 && left.v3 == right.v3;
    }
};

constexpr mat3::mat3(const mat4& m) : v0(m.v0), v1(m.v1), v2(m.v2) {}

constexpr mat3 transpose(const mat3& m) {
    return mat3(m.v0.x, m.v1.x, m.v2.x, m.v0.y, m.v1.y, m.v2.y, m.v0.z, m.v1.z, m.v2.z);
}

constexpr mat4 transpose(const mat4& m) {
    return mat4(m.v0.x, m.v1.x, m.v2.x, m.v3.x, m.v0.y, m.v1.y, m.v2.y, m.v3.y, m.v0.z, m.v1.z, m.v2.z,
                m.v3.z, m.v0.w, m.v1.w, m.v2.w, m.v3.w);
}

constexpr float determinant(const mat3& m) {
    return dot(m.v0, cross(m.v1, m.v2));
}

/// The adjugate divided by the determinant; without meaning for a singular matrix.
constexpr mat3 inverse(const mat3& m) {
    return transpose(mat3(cross(m.v1, m.v2), cross(m.v2, m.v0), cross(m.v0, m.v1))) / determinant(m);
}

/// The determinants of all pairs of rows in two columns. Those of columns 0 and 1 and those of columns 2 and
/// 3 make up determinant and inverse of the whole (David Eberly, "The Laplace Expansion Theorem", 2008).
struct MinorsOfColumns {
    float xy, xz, xw, yz, yw, zw;

    constexpr MinorsOfColumns(const vec4& a, const vec4& b)
        : xy(a.x * b.y - a.y * b.x),
          xz(a.x * b.z - a.z * b.x),
          xw(a.x * b.w - a.w * b.x),
          yz(a.y * b.z - a.z * b.y),
          yw(a.y * b.w - a.w * b.y),
          zw(a.z * b.w - a.w * b.z) {}
};

constexpr float determinant(const mat4& m) {
    const MinorsOfColumns s(m.v0, m.v1), c(m.v2, m.v3);
    return s.xy * c.zw - s.xz * c.yw + s.xw * c.yz + s.yz * c.xw - s.yw * c.xz + s.zw * c.xy;
}

/// The adjugate divided by the determinant; without meaning for a singular matrix.
constexpr mat4 inverse(const mat4& m) {
    const MinorsOfColumns s(m.v0, m.v1), c(m.v2, m.v3);
    // Row r of the adjugate belongs to column r of m.
    const auto row = [](const vec4& v, const MinorsOfColumns& o) {
        return vec4(v.y * o.zw - v.z * o.yw + v.w * o.yz, -v.x * o.zw + v.z * o.xw - v.w * o.xz,
                    v.x * o.yw - v.y * o.xw + v.w * o.xy, -v.x * o.yz + v.y * o.xz - v.z * o.xy);
    };
    return transpose(mat4(row(m.v1, c), -row(m.v0, c), row(m.v3, s), -row(m.v2, s))) / determinant(m);
}

} // namespace norvi::kernel
