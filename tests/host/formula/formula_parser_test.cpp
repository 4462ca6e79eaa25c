#include "formula_fixture.h"

namespace norvi {
namespace {

TEST(FormulaParser, RefusesVariablesThatItCannotBind) {
    const FormulaParserRef parser = *FormulaParser::Alloc();
    Float cell = 0;
    ASSERT_TRUE(parser->AddFloatVariable("x", &cell, 1).IsOk());
    const struct {
        const char* name;
        Int count;
        const char* message;
    } cases[] = {
        {"y", 2, "Formula variable \"y\" has 2 elements; only 1 is supported"},
        {"y", 0, "Formula variable \"y\" has 0 elements; only 1 is supported"},
        {"", 1, "\"\" is no name of a formula variable"},
        {"2y", 1, "\"2y\" is no name of a formula variable"},
        {"a b", 1, "\"a b\" is no name of a formula variable"},
        {"pi", 1, "Formula variable \"pi\" has the name of a function or constant"},
        {"sin", 1, "Formula variable \"sin\" has the name of a function or constant"},
        {"x", 1, "Formula variable \"x\" is already bound"},
    };
    for (const auto& [name, count, message] : cases)
        EXPECT_TRUE(
            FailsWith(parser->AddFloatVariable(name, &cell, count), errorkind::IllegalArgument, message));
    EXPECT_TRUE(FailsWith(parser->AddFloatVariable("y", nullptr, 1), errorkind::NullPtr,
                          "Formula variable \"y\" has no cell"));
    const Int32 integer = 0;
    EXPECT_TRUE(FailsWith(parser->AddIntVariable("x", &integer, 1), errorkind::IllegalArgument,
                          "Formula variable \"x\" is already bound"));
}

TEST(FormulaParser, LimitsTheNumberOfVariables) {
    const FormulaParserRef parser = *FormulaParser::Alloc();
    std::vector<Int32> cells;
    for (Int i = 0; i < FormulaParser::MaxVariables; ++i)
        cells.push_back(static_cast<Int32>(1) << i);
    String sum = "0";
    for (size_t i = 0; i < cells.size(); ++i) {
        const String name(i + 2, 'v');
        ASSERT_TRUE(parser->AddIntVariable(name, &cells[i], 1).IsOk());
        sum += " + " + name + " + 0 * rnd(" + name + "; " + name + ")";
    }
    FormulaParserCacheRef cache;
    ASSERT_TRUE(parser->CalculateParserCache(cache, sum, 0, 1, 10, false).IsOk());
    EXPECT_EQ(cache->Evaluate(), 65535);
    EXPECT_EQ(parser->AddIntVariable("more", &cells[0], 1).GetError().GetMessage(),
              "Formula variable \"more\" is one more than the 16 that are allowed");
}

TEST(FormulaParser, ChecksItsSettings) {
    const FormulaParserRef parser = *FormulaParser::Alloc();
    struct {
        Int32 angleUnit, folding, sizeLimit;
        const char* message;
    } cases[] = {
        {2, 1, 10, "Angle unit of a formula is neither 0 (radians) nor 1 (degrees) but 2"},
        {0, -1, 10, "Folding of a formula is neither 0 (off) nor 1 (on) but -1"},
        {0, 1, 0, "Size limit of a formula is not in 1 to 64 but 0"},
        {0, 1, 65, "Size limit of a formula is not in 1 to 64 but 65"},
    };
    for (const auto& test : cases) {
        FormulaParserCacheRef cache;
        EXPECT_TRUE(FailsWith(
            parser->CalculateParserCache(cache, "1", test.angleUnit, test.folding, test.sizeLimit, false),
            errorkind::IllegalArgument, test.message));
        EXPECT_FALSE(cache);
    }
}

TEST(FormulaParser, AFailureLeavesTheCacheAsItWas) {
    const FormulaParserRef parser = *FormulaParser::Alloc();
    FormulaParserCacheRef cache;
    ASSERT_TRUE(parser->CalculateParserCache(cache, "1 + 1", 0, 1, 10, false).IsOk());
    ASSERT_FALSE(parser->CalculateParserCache(cache, "1 +", 0, 1, 10, false).IsOk());
    EXPECT_EQ(cache->Evaluate(), 2);
}

TEST(FormulaParser, IgnoresCaseWhereAskedToAndPrefersTheExactName) {
    const FormulaParserRef parser = *FormulaParser::Alloc();
    const Float lower = 1, upper = 2, constant = 3;
    ASSERT_TRUE(parser->AddFloatVariable("x", &lower, 1).IsOk());
    ASSERT_TRUE(parser->AddFloatVariable("X", &upper, 1).IsOk());
    ASSERT_TRUE(parser->AddFloatVariable("E", &constant, 1).IsOk());
    FormulaParserCacheRef cache;
    ASSERT_TRUE(
        parser->CalculateParserCache(cache, "x * 100 + X * 10 + E + 0 * e * SIN(Pi)", 0, 1, 10, true));
    EXPECT_EQ(cache->Evaluate(), 123);
    ASSERT_TRUE(parser->CalculateParserCache(cache, "e", 0, 1, 10, true).IsOk());
    EXPECT_EQ(cache->Evaluate(), EulerNumber);
    EXPECT_FALSE(parser->CalculateParserCache(cache, "SIN(x)", 0, 1, 10, false).IsOk());
}

} // namespace
} // namespace norvi
