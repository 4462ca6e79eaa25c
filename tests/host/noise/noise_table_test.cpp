// What is promised of every generator, checked for each row of the table.

#include "host/noise/noise_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace norvi {
namespace {

constexpr UInt32 mask10 = 1023;

struct Place {
    Vector32 position;
    Float time;
};

/// Places without pattern in [-size, size], in exact binary fractions so that whole shifts lose nothing.
BaseArray<Place> Places(Int count, Float size) {
    UInt32 state = 1;
    const auto next = [&] {
        state = state * 1664525u + 1013904223u;
        return std::floor((static_cast<Float>(state >> 8) / 8388608.0f - 1) * size * 256) / 256;
    };
    BaseArray<Place> places;
    for (Int i = 0; i < count; ++i) {
        const Float x = next(), y = next(), z = next();
        places.push_back({{x, y, z}, next()});
    }
    return places;
}

BaseArray<Float> Values(const NoiseKind& kind, const BaseArray<Place>& places, UInt32 seed,
                        UInt32 mask = mask10) {
    BaseArray<Float> values;
    for (const Place& place : places)
        values.push_back(kind.evaluate(place.position, place.time, seed, mask));
    return values;
}

Float64 Mean(const BaseArray<Float>& a) {
    Float64 sum = 0;
    for (Float x : a)
        sum += x;
    return sum / static_cast<Float64>(a.size());
}

Float64 Correlation(const BaseArray<Float>& a, const BaseArray<Float>& b) {
    const Float64 aMean = Mean(a), bMean = Mean(b);
    Float64 ab = 0, aa = 0, bb = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        ab += (a[i] - aMean) * (b[i] - bMean);
        aa += (a[i] - aMean) * (a[i] - aMean);
        bb += (b[i] - bMean) * (b[i] - bMean);
    }
    return ab / std::sqrt(aa * bb);
}

class NoiseTable : public testing::TestWithParam<std::size_t> {
  protected:
    const NoiseKind& kind_ = noiseKinds[GetParam()];
};

TEST_P(NoiseTable, FillsItsRangeAndStaysInIt) {
    const auto& [id, minimum, maximum, isContinuous, description] = kind_.info;
    Float least = maximum, largest = minimum;
    for (Float value : Values(kind_, Places(100000, 500), 3)) {
        ASSERT_GE(value, minimum);
        ASSERT_LE(value, maximum);
        least = std::fmin(least, value);
        largest = std::fmax(largest, value);
    }
    EXPECT_GT(largest - least, 0.85f * (maximum - minimum)) << least << " to " << largest;
}

TEST_P(NoiseTable, DependsOnSeedAndTime) {
    const auto places = Places(20000, 100);
    auto later = places;
    for (Place& place : later)
        place.time += 1.5f;
    const auto values = Values(kind_, places, 7);
    EXPECT_EQ(values, Values(kind_, places, 7));
    for (UInt32 seed : {0u, 8u, 0xffffffffu})
        EXPECT_LT(std::abs(Correlation(values, Values(kind_, places, seed))), 0.1) << seed;
    EXPECT_LT(Correlation(values, Values(kind_, later, 7)), 0.9);
}

TEST_P(NoiseTable, RepeatsAfterTwoToThePowerAndNotBefore) {
    for (UInt32 power : {1u, 4u, 10u}) {
        const UInt32 mask = (1u << power) - 1;
        const auto period = static_cast<Float>(1u << power);
        const auto places = Places(2000, 50);
        const auto values = Values(kind_, places, 7, mask);
        for (Float Vector32::*axis : {&Vector32::x, &Vector32::y, &Vector32::z}) {
            auto shifted = places, halfway = places;
            for (std::size_t i = 0; i < places.size(); ++i) {
                shifted[i].position.*axis += period;
                halfway[i].position.*axis += period / 2;
            }
            const auto repeated = Values(kind_, shifted, 7, mask);
            for (std::size_t i = 0; i < places.size(); ++i)
                ASSERT_NEAR(repeated[i], values[i], 0.02) << power;
            EXPECT_LT(Correlation(values, Values(kind_, halfway, 7, mask)), 0.9) << power;
        }
        auto nextTurn = places;
        for (Place& place : nextTurn)
            place.time += 1024;
        EXPECT_EQ(Values(kind_, nextTurn, 7, mask), values);
    }
}

TEST_P(NoiseTable, HasNoJumpsIfContinuous) {
    if (!kind_.info.isContinuous)
        return;
    // Steps so small that even the steepest slope moves little, across cell borders in particular.
    const Float step = 1.0f / 65536, steepest = 60;
    for (const Place& place : Places(20000, 8)) {
        Vector32 at = place.position;
        at.x = std::round(at.x);
        const Float before = kind_.evaluate({at.x - step, at.y, at.z}, place.time, 7, mask10);
        const Float after = kind_.evaluate({at.x + step, at.y, at.z}, place.time, 7, mask10);
        ASSERT_NEAR(before, after, 2 * step * steepest) << at.x << " " << at.y << " " << at.z;
        const Float later = kind_.evaluate({at.x + step, at.y, at.z}, place.time + step, 7, mask10);
        ASSERT_NEAR(after, later, 2 * step * steepest) << at.x << " " << at.y << " " << at.z;
    }
}

TEST_P(NoiseTable, SpecialNumbersCountAsZero) {
    const Float infinity = std::numeric_limits<Float>::infinity();
    const Float odd[] = {infinity, -infinity, std::nanf(""), 1e30f, -1e30f, 1048576.0f, 3e9f};
    const Float zero = kind_.evaluate({0, 0.3f, 0}, 0, 7, mask10);
    for (Float a : odd) {
        for (Float b : odd)
            EXPECT_EQ(kind_.evaluate({a, 0.3f, b}, a, 7, mask10), zero) << a << " " << b;
    }
    for (Float edge : {-0.0f, 1e-40f, -1e-10f, 1048575.9f, -1048575.9f, -1.0f}) {
        const Float value = kind_.evaluate({edge, edge, edge}, edge, 0xffffffffu, 65535);
        EXPECT_GE(value, kind_.info.minimum) << edge;
        EXPECT_LE(value, kind_.info.maximum) << edge;
    }
}

TEST(NoiseTables, NoTwoNoisesCorrelateFully) {
    const auto places = Places(20000, 100);
    BaseArray<BaseArray<Float>> values;
    for (const NoiseKind& kind : noiseKinds) {
        values.push_back(Values(kind, places, 7));
        for (std::size_t other = 0; other + 1 < values.size(); ++other) {
            // Terraces of a noise stay close to it.
            EXPECT_LT(std::abs(Correlation(values.back(), values[other])), 0.95)
                << kind.functionName << " and " << noiseKinds[other].functionName;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AllNoises, NoiseTable, testing::Range<std::size_t>(0, noiseKinds.size()),
                         [](const auto& row) { return String(noiseKinds[row.param].functionName); });

} // namespace
} // namespace norvi
