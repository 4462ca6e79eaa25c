#include <limits>
#include <random>

#include "formula_fixture.h"

namespace norvi {
namespace {

// Writes random formulas with every operator and function.
class FormulaWriter {
  public:
    explicit FormulaWriter(unsigned start) : random_(start) {}

    String Write(int depth) {
        if (depth == 0 || Pick(6) == 0)
            return WriteLeaf();
        static const char* const functions[] = {
            "sin",  "cos",   "tan",   "asin",  "acos",  "atan",        "sinh",    "cosh",    "tanh",
            "exp",  "exp2",  "log",   "log2",  "log10", "sqrt",        "abs",     "sign",    "floor",
            "ceil", "round", "trunc", "fract", "rnd",   "inversesqrt", "radians", "degrees", "saturate"};
        static const char* const pairs[] = {"atan2", "hypot", "pow", "mod", "min", "max", "step", "rnd"};
        static const char* const triples[] = {"clamp", "mix", "smoothstep"};
        static const char* const operators[] = {
            "+", "-", "*", "/", "%", "^", "<", "<=", ">", ">=", "==", "!=", "&&", "||", "+", "*"};
        const String first = Write(depth - 1);
        switch (Pick(6)) {
        case 0:
            return String(functions[Pick(27)]) + "(" + first + ")";
        case 1:
            return String(pairs[Pick(8)]) + "(" + first + "; " + Write(depth - 1) + ")";
        case 2:
            return String(triples[Pick(3)]) + "(" + first + "; " + Write(depth - 1) + "; " +
                   Write(depth - 1) + ")";
        case 3:
            return "(" + first + " ? " + Write(depth - 1) + " : " + Write(depth - 1) + ")";
        case 4:
            return (Pick(2) ? "-" : "!") + first;
        default:
            return "(" + first + " " + operators[Pick(16)] + " " + Write(depth - 1) + ")";
        }
    }

    Float WriteNumber() {
        static const Float special[] = {0,          -0.0f,         1,        -1, 0.5f, 1e-40f, 3e38f,
                                        8388607.5f, std::nanf(""), -INFINITY};
        return Pick(4) == 0 ? special[Pick(10)] : std::normal_distribution<Float>(0, 3)(random_);
    }

  private:
    size_t Pick(size_t count) { return random_() % count; }

    String WriteLeaf() {
        static const char* const leaves[] = {"value", "value", "seed", "rnd(value; seed)", "2", "3", "0.37",
                                             "0",     "pi",    "1e-3"};
        return leaves[Pick(10)];
    }

    std::mt19937 random_;
};

TEST(FormulaParserCache, BatchSingleAndUnfoldedFormsGiveTheSameBits) {
    FormulaWriter writer(7);
    const Int counts[] = {1, 7, 16, 255, 256, 257, 700};
    for (int round = 0; round < 700; ++round) {
        const String text = writer.Write(1 + round % 6);
        BoundFormula formula(text), unfolded(text, {.folding = 0});
        ASSERT_TRUE(formula.cache && unfolded.cache) << text << ": " << formula.error;
        const Int count = counts[round % 7];
        std::vector<Float> values, results(static_cast<size_t>(count) + 1, -12345);
        std::vector<Int32> seeds;
        for (Int i = 0; i < count; ++i) {
            values.push_back(writer.WriteNumber());
            seeds.push_back(static_cast<Int32>(i * 77773 - 1000));
        }
        formula.cache->Evaluate(values.data(), seeds.data(), results.data(), count);
        EXPECT_EQ(results.back(), -12345) << "written behind the end";
        for (size_t i = 0; i < values.size(); ++i) {
            const Float single = formula.Evaluate(values[i], seeds[i]);
            ASSERT_TRUE(IsSame(single, results[i])) << text << " of " << values[i] << ", " << seeds[i];
            const Float asWritten = unfolded.Evaluate(values[i], seeds[i]);
            ASSERT_TRUE(IsSame(single, asWritten))
                << text << " of " << values[i] << ": " << single << ", " << asWritten;
        }
    }
}

// Formulas that hold back as many operands as any can: two on each level of nesting.
TEST(FormulaParserCache, EvaluatesTheDeepestFormulas) {
    String sum = "value", clamps = "value", choices = "value";
    for (Int i = 0; i < FormulaParser::MaxNesting / 2 - 1; ++i)
        sum = "-value+(" + sum + ")";
    for (Int i = 0; i < FormulaParser::MaxNesting - 2; ++i) {
        clamps = "clamp(-value; -seed; " + clamps + ")";
        choices = "-value ? -seed : " + choices;
    }
    for (const String& text : {sum, clamps, choices}) {
        BoundFormula formula(text);
        ASSERT_TRUE(formula.cache) << formula.error;
        const Float values[] = {1, 2, 3};
        const Int32 seeds[] = {-5, 2, 0};
        Float results[3];
        formula.cache->Evaluate(values, seeds, results, 3);
        for (size_t i = 0; i < 3; ++i)
            EXPECT_EQ(results[i], formula.Evaluate(values[i], seeds[i])) << i;
    }
    EXPECT_EQ(BoundFormula(sum).Evaluate(2), -2 * (FormulaParser::MaxNesting / 2 - 2));
    EXPECT_EQ(BoundFormula(clamps).Evaluate(2, -3), 2);
    EXPECT_EQ(BoundFormula(choices).Evaluate(2, -3), 3);
}

TEST(FormulaParserCache, ReadsItsCellsAtEachEvaluationAndNeverWritesThem) {
    Float value = 1, gain = 10;
    Int32 seed = 3;
    FormulaParserCacheRef cache;
    {
        const FormulaParserRef parser = *FormulaParser::Alloc();
        ASSERT_TRUE(parser->AddFloatVariable("value", &value, 1).IsOk());
        ASSERT_TRUE(parser->AddFloatVariable("gain", &gain, 1).IsOk());
        ASSERT_TRUE(parser->AddIntVariable("seed", &seed, 1).IsOk());
        ASSERT_TRUE(
            parser->CalculateParserCache(cache, "value * gain + seed + 0 * rnd(1; seed)", 0, 1, 10, false));
    }
    EXPECT_EQ(cache->Evaluate(), 13); // the parser is gone
    value = 2, gain = 100, seed = -5;
    EXPECT_EQ(cache->Evaluate(), 195);

    const Float values[] = {1, 2, 3};
    const Int32 seeds[] = {7, 8, 9};
    Float results[3];
    const auto evaluate = [&](const Float* v, const Int32* s) {
        cache->Evaluate(v, s, results, 3);
        return std::vector<Float>(results, results + 3);
    };
    EXPECT_EQ(evaluate(values, seeds), (std::vector<Float>{107, 208, 309}));
    EXPECT_EQ(evaluate(values, nullptr), (std::vector<Float>{95, 195, 295}));
    EXPECT_EQ(evaluate(nullptr, seeds), (std::vector<Float>{207, 208, 209}));
    EXPECT_EQ(evaluate(nullptr, nullptr), (std::vector<Float>{195, 195, 195}));
    cache->Evaluate(values, seeds, results, 0);
    EXPECT_EQ(results[0], 195);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(seed, -5);
}

TEST(FormulaParserCache, BatchArraysStandOnlyForVariablesOfTheirTypes) {
    Int32 value = 4;
    Float seed = 0.5f;
    const FormulaParserRef parser = *FormulaParser::Alloc();
    ASSERT_TRUE(parser->AddIntVariable("value", &value, 1).IsOk());
    ASSERT_TRUE(parser->AddFloatVariable("seed", &seed, 1).IsOk());
    FormulaParserCacheRef cache;
    ASSERT_TRUE(parser->CalculateParserCache(cache, "value + seed", 0, 1, 10, false).IsOk());
    const Float values[] = {100};
    const Int32 seeds[] = {200};
    Float result = 0;
    cache->Evaluate(values, seeds, &result, 1);
    EXPECT_EQ(result, 4.5f);
}

} // namespace
} // namespace norvi
