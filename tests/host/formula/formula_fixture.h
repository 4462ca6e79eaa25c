// What the tests of formulas share.
#pragma once

#include <bit>
#include <cmath>
#include <cstdlib>

#include <norvi/host/formula.h>

#include "support/results.h"

namespace norvi {

inline constexpr Float Pi = 3.14159265f, EulerNumber = 2.71828183f;

/// A formula with the variables "value" and "seed" bound to its own cells.
class BoundFormula {
  public:
    struct Settings {
        Int32 angleUnit = FormulaParser::AngleRadians;
        Int32 folding = 1;
        Int32 sizeLimit = 10;
        bool ignoreCase = false;
    };

    explicit BoundFormula(const String& text) : BoundFormula(text, Settings()) {}

    BoundFormula(const String& text, Settings settings) {
        const FormulaParserRef parser = *FormulaParser::Alloc();
        EXPECT_TRUE(parser->AddFloatVariable("value", &value, 1).IsOk());
        EXPECT_TRUE(parser->AddIntVariable("seed", &seed, 1).IsOk());
        const Result<void> result = parser->CalculateParserCache(
            cache, text, settings.angleUnit, settings.folding, settings.sizeLimit, settings.ignoreCase);
        EXPECT_EQ(result.IsOk(), cache != nullptr);
        if (result.IsOk())
            return;
        EXPECT_TRUE(result.GetError().Is(errorkind::IllegalArgument));
        error = result.GetError().GetMessage();
    }
    BoundFormula(const BoundFormula&) = delete;

    Float Evaluate() const {
        if (!cache)
            ADD_FAILURE() << error;
        return cache ? cache->Evaluate() : 0;
    }

    Float Evaluate(Float newValue, Int32 newSeed = 0) {
        value = newValue;
        seed = newSeed;
        return Evaluate();
    }

    Float value = 0;
    Int32 seed = 0;
    FormulaParserCacheRef cache;
    String error; ///< empty if the formula is right
};

/// The same bits, or both NaN.
inline bool IsSame(Float a, Float b) {
    return (a != a && b != b) || std::bit_cast<UInt32>(a) == std::bit_cast<UInt32>(b);
}

/// Compares results bit by bit. The samples are "formula = result" or "formula @ value = result", with commas
/// between them.
inline void ExpectValues(const String& samples) {
    for (std::size_t begin = 0, end = 0; end != String::npos; begin = end + 1) {
        end = samples.find(',', begin);
        const String sample = samples.substr(begin, end - begin);
        const auto at = sample.find('@'), equals = sample.rfind(" = ");
        const Float value = at == String::npos ? 0 : std::strtof(&sample[at + 1], nullptr);
        const Float result = BoundFormula(sample.substr(0, std::min(at, equals))).Evaluate(value);
        EXPECT_TRUE(IsSame(result, std::strtof(&sample[equals + 3], nullptr))) << sample << " is " << result;
    }
}

} // namespace norvi
