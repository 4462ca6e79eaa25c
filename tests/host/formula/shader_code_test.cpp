#include <gtest/gtest.h>

#include <norvi/host/formula.h>

#include "support/results.h"

namespace norvi {
namespace {

Result<String> Generate(const char* formula) {
    static const Float value = 0;
    static const Int32 seed = 0;
    NORVI_TRY_VALUE(parser, FormulaParser::Alloc());
    NORVI_TRY(parser->AddFloatVariable("value", &value, 1));
    NORVI_TRY(parser->AddIntVariable("seed", &seed, 1));
    FormulaParserCacheRef cache;
    NORVI_TRY(parser->CalculateParserCache(cache, formula, FormulaParser::AngleRadians, 1, 10, false));
    String text;
    NORVI_TRY(parser->GenerateShaderCode(*cache, "result", text));
    return text;
}

TEST(ShaderCode, IsOneStatementForEachOperation) {
    const std::pair<const char*, const char*> cases[] = {
        {"value", "result = value;"},
        {"seed", "result = float(seed);"},
        {"2", "result = 2.0;"},
        {"0 - 2.5", "result = (-2.5);"},
        {"1e20", "result = 1e+20;"},
        {"1 / 0", "result = uintBitsToFloat(2139095040u);"},
        {"value * 2", "result = value * 2.0;"},
        {"value ^ 3", "result = value * value * value;"},
        {"value < seed ? 1 : value", "{\nfloat formulaStep2 = float(value < float(seed));\nresult = "
                                     "formulaStep2 != 0.0 ? 1.0 : value;\n}"},
        {"clamp(value; 0; 1)",
         "{\nfloat formulaStep3Low = value < 0.0 ? 0.0 : value;\nresult = 1.0 < formulaStep3Low ? 1.0 : "
         "formulaStep3Low;\n}"},
    };
    for (const auto& [formula, expected] : cases)
        EXPECT_EQ(*Generate(formula), expected);
}

TEST(ShaderCode, TakesAnIntegerSeedAsItsBits) {
    const auto ofInteger = Generate("rnd(value; seed)");
    ASSERT_OK(ofInteger);
    EXPECT_NE(ofInteger->find("uint formulaStep2Seed = uint(seed) + 0x9E3779B9u;"), String::npos)
        << *ofInteger;
    const auto ofNumber = Generate("rnd(value; 2.5)");
    ASSERT_OK(ofNumber);
    EXPECT_NE(ofNumber->find("floatBitsToUint(2.5)"), String::npos) << *ofNumber;
}

} // namespace
} // namespace norvi
