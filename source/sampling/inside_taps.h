// The taps of a linear sample whose texels all lie inside the first layer, next to each other: nearly all
// samples. All axes are computed at once, in one lane each.
#pragma once

#include <cstddef>
#include <cstring>

#include "sampling/texel_address.h"
#include "sampling/texel_decode.h"

namespace norvi {

using Int4 = Int32 __attribute__((vector_size(16)));

template <int Dims>
class InsideTaps {
  public:
    [[gnu::always_inline]] InsideTaps(const Float32* coordinates, const SamplingData& data) {
        // The lane behind the last axis holds other fields; nothing comes of it. Beyond the signed range
        // extents become negative, and nothing is inside.
        static_assert(sizeof(SamplingData) - offsetof(SamplingData, _width) >= sizeof(Int4));
        Int4 extents;
        std::memcpy(&extents, &data._width, sizeof(extents));
        extent_ = __builtin_convertvector(extents, Float4);
        position_ = Load(coordinates) * (data._flags.AreCoordinatesNormalized() ? extent_ : One) - 0.5f * One;
        first_ = __builtin_convertvector(position_, Int4);
        fractions_ = position_ - __builtin_convertvector(first_, Float4);
        isInside_ = AreInside(position_, position_ + One);
        // Indices of such a large store wrap round.
        isSmall_ = data._lastTexel != std::numeric_limits<UInt32>::max();
    }

    bool AreAll(Int32 layer) const {
        bool areAll = layer == 0 && isSmall_;
        for (int axis = 0; axis < Dims; ++axis)
            areAll &= isInside_[axis] != 0;
        return areAll;
    }

    /// Wraps the taps on those axes that repeat: then they are inside too, but for those at the seam.
    [[gnu::always_inline]] void Repeat(const SamplingData& data) {
        const Int4 wrapBits{3, 3 << 2, 3 << 4, 0};
        const Int4 flags = Int4{} + static_cast<Int32>(data._flags.bits);
        const Int4 repeats = (flags & wrapBits) == WRAP_REPEAT;
        const Float4 first = Repeated(position_);
        isInside_ = (isInside_ & ~repeats) | (AreInside(first, Repeated(position_ + One)) & repeats);
        // The fraction is that of the position before the wrap.
        const Float4 towardsZero = __builtin_convertvector(first_, Float4);
        const Int4 below = towardsZero > position_; // -1 where it is
        fractions_ = position_ - (towardsZero + __builtin_convertvector(below, Float4));
        first_ = (first_ & ~repeats) | (__builtin_convertvector(first, Int4) & repeats);
    }

    UInt32 GetFirstIndex(const SamplingData& data) const {
        UInt32 texel[Dims];
        for (int axis = 0; axis < Dims; ++axis)
            texel[axis] = static_cast<UInt32>(first_[axis]);
        return TexelIndex<Dims>(data, 0, texel);
    }

    Float4 GetFractions() const { return fractions_; }

  private:
    static constexpr Float4 One{1.0f, 1.0f, 1.0f, 1.0f};

    static Float4 Load(const Float32* coordinates) {
        if constexpr (Dims == 1)
            return Float4{coordinates[0]};
        else if constexpr (Dims == 2)
            return Float4{coordinates[0], coordinates[1]};
        else
            return Float4{coordinates[0], coordinates[1], coordinates[2]};
    }

    /// NaN is not inside. Close below a whole number adding 1 rounds up, and the taps are not neighbours.
    Int4 AreInside(Float4 first, Float4 second) const {
        const Int4 isNext = __builtin_convertvector(second, Int4) == __builtin_convertvector(first, Int4) + 1;
        return (first >= Float4{}) & (second < extent_) & isNext;
    }

    /// See Remainder, which tells why this is exact. Far out the quotient is without meaning; from 2^25 on
    /// both taps are one position, so they are never taken for neighbours.
    Float4 Repeated(Float4 position) const {
        using Double4 = Float64 __attribute__((vector_size(32)));
        const Double4 dividend = __builtin_convertvector(position, Double4);
        const Double4 divisor = __builtin_convertvector(extent_, Double4);
        const Int4 quotient = __builtin_convertvector(dividend / divisor, Int4);
        const Float4 remainder =
            __builtin_convertvector(dividend - __builtin_convertvector(quotient, Double4) * divisor, Float4);
        const Int4 isNegative = position < Float4{};
        return remainder - extent_ * __builtin_convertvector(isNegative, Float4);
    }

    Float4 extent_;
    Float4 position_;
    Float4 fractions_;
    Int4 first_;
    Int4 isInside_;
    bool isSmall_;
};

} // namespace norvi
