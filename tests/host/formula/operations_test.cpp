#include <functional>
#include <limits>
#include <set>

#include "formula_fixture.h"

namespace norvi {
namespace {

constexpr Float Infinity = std::numeric_limits<Float>::infinity();
constexpr Float NaN = std::numeric_limits<Float>::quiet_NaN();

// Evaluates `text` for values over the whole range of bit patterns, in the batch form.
void CompareOverAllMagnitudes(const char* text,
                              const std::function<bool(Float value, Float result)>& isRight) {
    const BoundFormula formula(text);
    ASSERT_TRUE(formula.cache) << formula.error;
    std::vector<Float> values, results(300000);
    for (size_t i = 0; i < results.size(); ++i)
        values.push_back(std::bit_cast<Float>(static_cast<UInt32>(i) * 2654435761u));
    formula.cache->Evaluate(values.data(), nullptr, results.data(), static_cast<Int>(values.size()));
    Int wrong = 0;
    for (size_t i = 0; i < values.size(); ++i)
        if (!isRight(values[i], results[i]) && ++wrong <= 3)
            ADD_FAILURE() << text << " of " << values[i] << " is " << results[i];
}

TEST(FormulaOperations, RoundExactly) {
    struct {
        const char* text;
        Float (*expected)(Float);
    } cases[] = {
        {"floor(value)", std::floor},
        {"ceil(value)", std::ceil},
        {"trunc(value)", std::trunc},
        {"abs(value)", std::fabs},
        {"round(value)", std::nearbyint},
        {"sqrt(value)", std::sqrt},
        {"fract(value)", [](Float x) { return x - std::floor(x); }},
        {"inversesqrt(value)", [](Float x) { return 1 / std::sqrt(x); }},
        {"value % 0.7", [](Float x) { return x - 0.7f * std::floor(x / 0.7f); }},
        {"value^2", [](Float x) { return x * x; }},
        {"value^3", [](Float x) { return x * x * x; }},
        {"value^4", [](Float x) { return (x * x) * (x * x); }},
        {"pow(value; 2 + 0 * sign(value))", [](Float x) { return x * x; }}, // exponent known only at run time
        {"value^5", [](Float x) { return std::pow(x, 5.0f); }},
    };
    for (const auto& test : cases)
        CompareOverAllMagnitudes(test.text,
                                 [&](Float x, Float result) { return IsSame(result, test.expected(x)); });
    for (const Float x : {0.5f, -0.5f, 1.5f, 2.5f, -2.5f, 0.49999997f, -0.0f, 8388607.5f, 8388608.0f})
        EXPECT_TRUE(IsSame(BoundFormula("round(value)").Evaluate(x), std::nearbyint(x))) << x;
}

TEST(FormulaOperations, TranscendentalFunctionsAreWithinTwoUnits) {
    for (const auto& [text, expected] : {std::pair<const char*, double (*)(double)>{"sin(value)", std::sin},
                                         {"cos(value)", std::cos},
                                         {"tan(value)", std::tan},
                                         {"asin(value)", std::asin},
                                         {"acos(value)", std::acos},
                                         {"atan(value)", std::atan},
                                         {"sinh(value)", std::sinh},
                                         {"cosh(value)", std::cosh},
                                         {"tanh(value)", std::tanh},
                                         {"exp(value)", std::exp},
                                         {"exp2(value)", std::exp2},
                                         {"log(value)", std::log},
                                         {"log2(value)", std::log2},
                                         {"log10(value)", std::log10},
                                         {"value^2.5", [](double x) { return std::pow(x, 2.5); }},
                                         {"atan2(value; 2)", [](double x) { return std::atan2(x, 2.0); }},
                                         {"atan2(2; value)", [](double x) { return std::atan2(2.0, x); }}})
        CompareOverAllMagnitudes(text, [expected = expected](Float x, Float result) {
            const auto exact = static_cast<Float>(expected(x));
            const Float next = std::nextafter(exact, Infinity), previous = std::nextafter(exact, -Infinity);
            return IsSame(result, exact) || (result <= std::nextafter(next, Infinity) &&
                                             result >= std::nextafter(previous, -Infinity));
        });
}

TEST(FormulaOperations, FollowTheirDefinitionForSpecialValues) {
    ExpectValues(R"(
1 / value @ 0 = inf,  -1 / value @ 0 = -inf,  value / value @ 0 = nan,  5 % value @ 0 = nan,
value % 3 @ -1 = 2,  mod(value; -3) @ 1 = -2,  value == value @ nan = 0,  value != value @ nan = 1,
value ? 1 : 2 @ nan = 1,  value && 1 @ nan = 1,  !value @ nan = 0,  value ? 1 : 2 @ -0.0 = 2,
-value @ 0 = -0.0,  0 - value @ 0 = 0,  sign(value) @ nan = 0,  sign(value) @ -0.1 = -1,
min(value; 1) @ nan = nan,  min(1; value) @ nan = 1,  max(value; 1) @ nan = nan,  max(1; value) @ nan = 1,
clamp(value; 2; 1) @ 5 = 1,  clamp(value; 0; 1) @ -inf = 0,  saturate(value) @ 2 = 1,
mix(10; 20; value) @ 0.25 = 12.5,  lerp(10; 20; value) @ 2 = 30,  step(1; value) @ 1 = 1,
step(1; value) @ 0.999 = 0,  smoothstep(1; 3; value) @ 2 = 0.5,  smoothstep(1; 3; value) @ 4 = 1,
smoothstep(3; 1; value) @ 3 = 0,  smoothstep(value; 2; 2) @ 2 = nan,  hypot(value; 4) @ 3 = 5,
hypot(value; 0) @ 1e30 = inf,  degrees(value) @ 3.14159265 = 180,  radians(value) @ 180 = 3.14159265,
pow(value; 0.5) @ -4 = nan,  value ^ 0 @ nan = 1)");
    EXPECT_EQ(BoundFormula("seed").Evaluate(0, 16777217), 16777216); // 2^24 + 1 as a float
}

TEST(FormulaOperations, TakeAndGiveDegreesWhereAskedTo) {
    const BoundFormula::Settings degrees{.angleUnit = FormulaParser::AngleDegrees};
    EXPECT_FLOAT_EQ(BoundFormula("sin(value)", degrees).Evaluate(30), 0.5f);
    EXPECT_FLOAT_EQ(BoundFormula("asin(value)", degrees).Evaluate(0.5f), 30);
    EXPECT_FLOAT_EQ(BoundFormula("atan2(value; 1)", degrees).Evaluate(1), 45);
    EXPECT_EQ(BoundFormula("tanh(value)", degrees).Evaluate(1), BoundFormula("tanh(value)").Evaluate(1));
}

TEST(FormulaOperations, RandomNumbersAreUniformAndDifferBySeed) {
    BoundFormula formula("rnd(value; seed)");
    constexpr int Count = 100000, Bins = 64;
    for (const bool varySeed : {false, true}) {
        std::vector<int> bins(Bins, 0);
        std::set<Float> distinct;
        double correlation = 0, previous = 0.5;
        for (int i = 0; i < Count; ++i) {
            const Float x =
                varySeed ? formula.Evaluate(0.5f, i) : formula.Evaluate(static_cast<Float>(i) * 0.01f, 1);
            ASSERT_TRUE(x >= 0 && x < 1) << x;
            ++bins[static_cast<size_t>(x * Bins)];
            distinct.insert(x);
            correlation += (x - 0.5) * (previous - 0.5) * 12 / Count;
            previous = x;
        }
        double chiSquare = 0;
        for (const int bin : bins)
            chiSquare += std::pow(bin - double(Count) / Bins, 2) / (double(Count) / Bins);
        EXPECT_LT(chiSquare, 120);                // 63 degrees of freedom: exceeded by chance once in 50,000
        EXPECT_GT(distinct.size(), Count - 500u); // of 2^24 numbers: about 300 coincide by chance
        EXPECT_LT(std::fabs(correlation), 0.015);
    }
}

TEST(FormulaOperations, RandomDependsOnTheNumbersOfItsArgumentsAlone) {
    EXPECT_EQ(BoundFormula("rnd()").Evaluate(1, 2), BoundFormula("rnd(0; 0)").Evaluate());
    EXPECT_EQ(BoundFormula("rnd(value)").Evaluate(3), BoundFormula("rnd(3; 0)").Evaluate());
    EXPECT_EQ(BoundFormula("rnd(value; seed)").Evaluate(3, -7), BoundFormula("rnd(value; -7)").Evaluate(3));
    EXPECT_EQ(BoundFormula("rnd(value)").Evaluate(-0.0f), BoundFormula("rnd(0)").Evaluate());
    EXPECT_EQ(BoundFormula("rnd(value)").Evaluate(-NaN), BoundFormula("rnd(value)").Evaluate(NaN));
    EXPECT_NE(BoundFormula("rnd(1; 0.3)").Evaluate(), BoundFormula("rnd(1; 0.7)").Evaluate());
    EXPECT_NE(BoundFormula("rnd(1; 3e9)").Evaluate(), BoundFormula("rnd(1; 1/0)").Evaluate());
    // Seeds that Float cannot tell apart.
    BoundFormula formula("rnd(value; seed)");
    EXPECT_NE(formula.Evaluate(1, 16777216), formula.Evaluate(1, 16777217));
    // Fixed for all time: scenes that users saved depend on these numbers.
    EXPECT_EQ(formula.Evaluate(0.5f, 1), 0x1.1ED286p-1f);
    EXPECT_EQ(formula.Evaluate(-2.25f, 123456789), 0x1.E333p-8f);
}

} // namespace
} // namespace norvi
