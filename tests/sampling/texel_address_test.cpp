// The remainder that repeating needs, against whole-number arithmetic and the library's function.
//
// By default some thousand floats of each power of two are tried. NORVI_FULL_SWEEP=1 tries all 2^32 for each
// extent, which takes a minute or more.
#include "sampling/texel_address.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace norvi {

namespace {

/// The remainders of mantissa * 2^exponent for one mantissa after the other, counted in units of the lowest
/// bit or of 1, whichever is smaller.
class CountedRemainders {
  public:
    CountedRemainders(UInt64 mantissa, int exponent, UInt64 extent)
        : unit_(std::ldexp(1.0, std::min(exponent, 0))) {
        // Below 1 every number is its own remainder: no mantissa comes near the modulus.
        modulus_ = exponent < -25 ? UInt64{1} << 58 : extent << std::max(-exponent, 0);
        remainder_ = mantissa % modulus_;
        step_ = 1 % modulus_;
        for (int i = 0; i < exponent; ++i) {
            remainder_ = remainder_ * 2 % modulus_;
            step_ = step_ * 2 % modulus_;
        }
    }

    Float32 TakeNext() {
        const auto result = static_cast<Float32>(static_cast<double>(remainder_) * unit_);
        remainder_ += step_;
        remainder_ -= remainder_ >= modulus_ ? modulus_ : 0;
        return result;
    }

  private:
    double unit_;
    UInt64 modulus_, remainder_, step_;
};

/// How many of `count` floats from `first` on, and of their negatives, have another remainder.
Int CountDifferent(UInt32 first, UInt32 count, Float32 extent) {
    const UInt32 exponentBits = first >> 23;
    const UInt32 mantissa = (first & 0x7FFFFF) | (exponentBits != 0 ? 0x800000 : 0);
    CountedRemainders expected(mantissa, static_cast<int>(std::max(exponentBits, 1u)) - 150,
                               static_cast<UInt64>(extent));
    Int different = 0;
    for (UInt32 bits = first; bits < first + count; ++bits) {
        const auto value = std::bit_cast<Float32>(bits);
        const Float32 found = Remainder(value, extent);
        different += !(found == expected.TakeNext() && Remainder(-value, extent) == -found);
    }
    return different;
}

constexpr Float32 extents[] = {1, 2, 3, 5, 640, 1000, 1024, 16777213, 4294967296.0f};

TEST(TexelAddress, RemainderIsExactForEveryFloat) {
    const char* sweep = std::getenv("NORVI_FULL_SWEEP");
    const bool isFull = sweep && *sweep == '1';
    constexpr UInt32 mantissas = 1 << 23, part = 2000;
    for (const Float32 extent : extents) {
        Int different = 0;
        for (UInt32 exponentBits = 0; exponentBits < 255; ++exponentBits) {
            const UInt32 first = exponentBits << 23;
            if (isFull)
                different += CountDifferent(first, mantissas, extent);
            else
                for (const UInt32 begin : {0u, mantissas / 3, mantissas - part})
                    different += CountDifferent(first + begin, part, extent);
        }
        EXPECT_EQ(different, 0) << extent;
    }
}

TEST(TexelAddress, RemainderIsTheLibrarys) {
    for (const Float32 extent : extents)
        for (UInt64 bits = 0; bits < UInt64{1} << 32; bits += 40009) {
            const auto value = std::bit_cast<Float32>(static_cast<UInt32>(bits));
            const Float32 expected = fmodf(value, extent), found = Remainder(value, extent);
            ASSERT_TRUE(found == expected || (std::isnan(found) && std::isnan(expected)))
                << value << " " << extent;
        }
}

TEST(TexelAddress, FractionIsThatAboveTheFloor) {
    for (const Float32 value :
         {0.0f, 0.25f, -0.25f, 1.0f, -1.0f, -7.75f, -1e-30f, 8388607.5f, -8388607.5f, 3e9f, -3e9f, 1e30f})
        EXPECT_EQ(FractionOf(value), value - std::floor(value)) << value;
    EXPECT_TRUE(std::isnan(FractionOf(std::numeric_limits<Float32>::infinity())));
}

} // namespace

} // namespace norvi
