#include "core/number_conversion.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace norvi {
namespace {

template <typename T>
using Limits = std::numeric_limits<T>;

TEST(NumberConversion, KeepsTheExactValueOrGivesNothing) {
    const Float32 infinity = Limits<Float32>::infinity();
    const struct {
        Data source;
        Data expected; ///< of the target type
        bool fits;
    } rows[] = {
        {Int32{-1}, Int64{-1}, true},
        {Int32{-1}, UInt32{}, false},
        {Int32{-1}, UInt64{}, false},
        {Int32{-1}, Float32{-1}, true},
        {Int32{16777216}, Float32{16777216}, true},
        {Int32{16777217}, Float32{}, false},
        {Int32{16777217}, Float64{16777217}, true},
        {Int32{2049}, HalfFloat{}, false},
        {UInt32{0xffffffff}, Int32{}, false},
        {UInt32{0xffffffff}, Float32{}, false},
        {UInt32{0xffffffff}, Float64{4294967295.0}, true},
        {UInt32{255}, UChar{255}, true},
        {UInt32{256}, UChar{}, false},
        {Int32{-128}, std::int8_t{-128}, true},
        {Int32{-129}, std::int8_t{}, false},
        {Int64{1} << 62, Float32{4611686018427387904.0f}, true},
        {Limits<Int64>::max(), Float64{}, false},
        {Limits<Int64>::min(), Float64{-9223372036854775808.0}, true},
        {Limits<Int64>::min(), UInt64{}, false},
        {Limits<UInt64>::max(), Float64{}, false},
        {Limits<UInt64>::max(), Int64{}, false},
        {UInt64{1} << 63, Float32{9223372036854775808.0f}, true},
        {Float32{0.5f}, HalfFloat(0.5f), true},
        {Float32{0.5f}, Int32{}, false},
        {Float32{0.1f}, HalfFloat(), false},
        {Float32{-0.0f}, Int32{0}, true},
        {Float64{0.1}, Float32{}, false},
        {Float64{0.1f}, Float32{0.1f}, true},
        {Float64{1e300}, Float32{}, false},
        {Float64{65504}, HalfFloat(65504.0f), true},
        {Float64{65536}, HalfFloat(), false},
        {Float64{-2147483648.0}, Limits<Int32>::min(), true},
        {Float64{2147483648.0}, Int32{}, false},
        {Float64{18446744073709551616.0}, UInt64{}, false},
        {Float64{18446744073709549568.0}, UInt64{18446744073709549568u}, true},
        {Float64{-1}, UInt32{}, false},
        {infinity, Float64{infinity}, true},
        {infinity, HalfFloat(infinity), true},
        {infinity, Int64{}, false},
        {Float32{NAN}, Int32{}, false},
        {HalfFloat(1.5f), Float32{1.5f}, true},
        {HalfFloat(1.5f), Int16{}, false},
        {Int32{1}, true, false},
        {true, Int32{1}, false},
    };
    for (const auto& row : rows) {
        const DataType target = row.expected.GetType();
        const auto converted = ConvertNumberExactly(row.source.GetType(), row.source.GetAddress(), target);
        ASSERT_EQ(converted.has_value(), row.fits)
            << row.source.ToString() << " of " << row.source.GetType().ToString() << " to "
            << target.ToString();
        if (row.fits) {
            EXPECT_EQ(*converted, row.expected);
        }
    }
}

TEST(NumberConversion, EveryTypeGoesToEveryOther) {
    const Data ones[] = {std::int8_t{1}, UChar{1},  Int16{1},        UInt16{1},  Int32{1},  UInt32{1},
                         Int64{1},       UInt64{1}, HalfFloat(1.0f), Float32{1}, Float64{1}};
    for (const Data& source : ones)
        for (const Data& target : ones) {
            EXPECT_TRUE(IsNumber(source.GetType()));
            EXPECT_EQ(ConvertNumberExactly(source.GetType(), source.GetAddress(), target.GetType()), target);
        }
    const Data nan = Float64{NAN};
    const DataType floats[] = {DataType::Of<HalfFloat>(), DataType::Of<Float32>(), DataType::Of<Float64>()};
    for (const DataType target : floats)
        EXPECT_TRUE(ConvertNumberExactly(nan.GetType(), nan.GetAddress(), target).has_value());
    EXPECT_FALSE(IsNumber(DataType::Of<Bool>()));
    EXPECT_FALSE(IsNumber(DataType::Of<Vector32>()));
    EXPECT_FALSE(IsNumber({}));
}

} // namespace
} // namespace norvi
