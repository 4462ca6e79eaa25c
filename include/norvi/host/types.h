// The scalar, vector and matrix types that cross every interface of the system.
//
// All of them are plain and trivially copyable: what stands in a buffer is exactly these bytes, in scalar
// layout (a Vector32 takes 12 bytes), on the processor and on the card.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <Imath/half.h>

namespace norvi {

using Bool = bool;
using Char = char;
using UChar = unsigned char;
using Int16 = std::int16_t;
using UInt16 = std::uint16_t;
using Int32 = std::int32_t;
using UInt32 = std::uint32_t;
using Int64 = std::int64_t;
using UInt64 = std::uint64_t;
using Int = Int64;
using UInt = UInt64;
using Float32 = float;
using Float64 = double;
/// Working precision of formulas and noise: single, so that processor and card compute the same numbers.
using Float = Float32;
using HalfFloat = Imath::half;

/// UTF-8 text. Both names stand for one type; `CString` says that a name or identifier is meant.
using String = std::string;
using CString = std::string;

template <typename T>
using BaseArray = std::vector<T>;

template <typename T>
struct Vec2 {
    T x{}, y{};
    bool operator==(const Vec2&) const = default;
};

template <typename T>
struct Vec3 {
    T x{}, y{}, z{};
    bool operator==(const Vec3&) const = default;
};

template <typename T>
struct Vec4 {
    T x{}, y{}, z{}, w{};
    bool operator==(const Vec4&) const = default;
};

using Vector2d32 = Vec2<Float32>;
using Vector32 = Vec3<Float32>;
using Vector4d32 = Vec4<Float32>;
using IntVector4d32 = Vec4<Int32>;

/// Three columns of three; element (row, column) is `columns[column]` component `row`.
struct SquareMatrix32 {
    Vector32 columns[3]{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    bool operator==(const SquareMatrix32&) const = default;
};

/// Four columns of four.
struct SquareMatrix4d32 {
    Vector4d32 columns[4]{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    bool operator==(const SquareMatrix4d32&) const = default;
};

using Matrix32 = SquareMatrix4d32;

} // namespace norvi
