// From a coordinate to a texel: wrap modes and indices.
#pragma once

#include <bit>
#include <cmath>
#include <limits>

#include <norvi/texture_records.h>

namespace norvi {

/// The remainder of `value` beyond 2^52, by whole numbers: 24 bits times a power of two.
[[gnu::noinline]] inline Float32 RemainderOfHuge(Float32 value, Float32 divisor) {
    if (!std::isfinite(value))
        return std::numeric_limits<Float32>::quiet_NaN();
    const auto bits = std::bit_cast<UInt32>(value);
    const auto extent = static_cast<UInt64>(divisor);
    UInt64 remainder = (bits & 0x7FFFFF) | 0x800000;
    for (int exponent = static_cast<int>(bits >> 23 & 255) - 150; exponent > 0; exponent -= 31)
        remainder = (remainder % extent << std::min(exponent, 31));
    return std::copysign(static_cast<Float32>(remainder % extent), value);
}

/// fmodf(value, divisor), exactly, for whole divisors from 1 to 2^32: the library's function takes some
/// hundred times as long. A zero may have the other sign.
///
/// Below 2^52 the quotient of doubles never rounds up to the next whole number, as a float that misses a
/// multiple of the divisor misses it by at least 2^-52 of its size. Product and difference are exact: whole
/// numbers below 2^53, and a multiple of the float's last place below the divisor.
inline Float32 Remainder(Float32 value, Float32 divisor) {
    const Float64 dividend = value, extent = divisor;
    if (std::abs(dividend) < 0x1p52) [[likely]] {
        const auto quotient = static_cast<Float64>(static_cast<Int64>(dividend / extent));
        return static_cast<Float32>(dividend - quotient * extent);
    }
    return RemainderOfHuge(value, divisor);
}

/// In texels.
inline Float32 ScaledPosition(Float32 coordinate, Float32 extent, PackedTextureFlags flags) {
    return coordinate * (flags.AreCoordinatesNormalized() ? extent : 1.0f);
}

/// The texel of a position: towards zero, modulo 2^32. What is far out of range, NaN included, gives 2^31.
inline UInt32 TexelOfPosition(Float32 position) {
    return std::abs(position) < 0x1p62f ? static_cast<UInt32>(static_cast<Int64>(position)) : 0x80000000u;
}

/// Where a position is read, once it is wrapped; a position outside a border is left as it is. What lies
/// inside the extent stays in each mode, and nothing branches on it: this is for positions of which many are
/// outside.
/// @param extent of the axis, converted to float
inline UInt32 WrapPosition(Float32 position, Float32 extent, UInt32 wrap) {
    if (wrap == WRAP_REPEAT) {
        position = Remainder(position, extent) + extent * static_cast<Float32>(position < 0.0f);
    } else if (wrap == WRAP_CLAMP) {
        const Float32 last = extent - 1.0f;
        position = 0.0f < position ? position : 0.0f;
        position = last < position ? last : position;
    }
    return TexelOfPosition(position);
}

/// position - floor(position), without the library's call.
inline Float32 FractionOf(Float32 position) {
    if (!(std::abs(position) < 0x1p31f))
        return position - position;
    const auto towardsZero = static_cast<Float32>(static_cast<Int32>(position));
    return position - (towardsZero - static_cast<Float32>(towardsZero > position));
}

/// The texel that is read at `texel`, which lies outside the extent and is not on a border.
[[gnu::noinline]] inline UInt32 WrapTexelOutside(Int32 texel, UInt32 extent, UInt32 wrap) {
    if (wrap == WRAP_REPEAT) {
        // Through floats: far out, neighbouring texels become one.
        const UInt32 remainder =
            TexelOfPosition(Remainder(static_cast<Float32>(texel), static_cast<Float32>(extent)));
        return texel < 0 ? remainder + extent : remainder;
    }
    if (wrap == WRAP_CLAMP)
        return texel < 0 ? 0 : extent - 1;
    return static_cast<UInt32>(texel);
}

inline UInt32 GetExtent(const SamplingData& data, int axis) {
    return axis == 0 ? data._width : axis == 1 ? data._height : data._depth;
}

/// Modulo 2^32.
/// @param texel one number for each axis
template <int Dims>
UInt32 TexelIndex(const SamplingData& data, UInt32 layer, const UInt32* texel) {
    UInt32 index = layer;
    for (int axis = Dims - 1; axis >= 0; --axis)
        index = index * GetExtent(data, axis) + texel[axis];
    return index;
}

/// The bytes of a texel. Coordinates without wrap, layers and the rule that a negative multiple of the extent
/// repeats to the extent itself lead past the end of the store: there a texel of zero bytes is read.
template <std::size_t TexelBytes>
const UChar* TexelAt(const SamplingData& data, UInt32 index) {
    alignas(16) static constexpr UChar nothing[16]{};
    static_assert(TexelBytes <= sizeof(nothing));
    return index <= data._lastTexel ? data._data + std::size_t{index} * TexelBytes : nothing;
}

} // namespace norvi
