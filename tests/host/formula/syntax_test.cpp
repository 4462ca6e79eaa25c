#include <random>
#include <sstream>

#include "formula_fixture.h"

namespace norvi {
namespace {

TEST(FormulaSyntax, GroupsOperatorsByPrecedenceAndSide) {
    ExpectValues(R"(
1 + 2 * 3 = 7,  (1 + 2) * 3 = 9,  10 - 4 - 3 = 3,  24 / 4 / 2 = 3,  7 % 4 * 2 = 6,  2 ^ 3 ^ 2 = 512,
-2 ^ 2 = -4,  (-2) ^ 2 = 4,  2 ^ -1 = 0.5,  2 ^ -1 * 4 = 2,  -2 * 3 = -6,  - -2 = 2,  +2 - +3 = -1,
!0 + 1 = 2,  !2 = 0,  !!2 = 1,  !0 ^ 0 = 0,  1 < 2 < 2 = 1,  3 > 2 == 1 = 1,  1 + 1 >= 2 = 1,
1 <= 0 || 1 = 1,  1 || 0 && 0 = 1,  2 && 3 = 1,  1 != 1 = 0,  0 ? 1 : 2 = 2,  1 ? 2 : 3 ? 4 : 5 = 2,
0 ? 2 : 0 ? 4 : 5 = 5,  1 ? 0 ? 1 : 2 : 3 = 2,  0 || 1 ? 2 : 3 = 2,  1 + (0 ? 1 : 2) = 3,
max(1 ? 2 : 3; 1) = 2,  0 ? 1 : 2 + 3 = 5)");
}

TEST(FormulaSyntax, ReadsNumbersNamesAndBlanks) {
    ExpectValues(R"(
1.5 = 1.5,  .5 = 0.5,  1. = 1,  1e-3 = 1e-3,  2.5E+2 = 250,  007 = 7,  pi = 3.14159265,  e = 2.71828183,
16777217 = 16777216,  0.1 = 0.1,  1e-45 = 0x1p-149,  value @ 5 = 5)");
    EXPECT_EQ(BoundFormula(" \t\r\n1\n+\n2 ").Evaluate(), 3);
    EXPECT_EQ(BoundFormula("seed*2").Evaluate(0, 3), 6);
}

TEST(FormulaSyntax, ReportsErrorsWithColumnReasonAndText) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "1: the formula is empty"},
        {" \n", "3: the formula is empty"},
        {"1 + sni(2)", "5: unknown function \"sni\"; did you mean \"sin\"?"},
        {"valeu", "1: unknown variable \"valeu\"; did you mean \"value\"?"},
        {"Value", "1: unknown variable \"Value\"; did you mean \"value\"?"},
        {"foo", "1: unknown variable \"foo\""},
        {"grnd(1)", "1: unknown function \"grnd\"; did you mean \"rnd\"?"},
        {"sin", "1: function \"sin\" without \"(\" behind it"},
        {"2*value(1)", "3: \"value\" is not a function; an operator is missing before the \"(\""},
        {"pi(1)", "1: \"pi\" is not a function; an operator is missing before the \"(\""},
        {"1 +", "4: the formula ends where a number, a name or \"(\" is expected"},
        {"1 * / 2", "5: a number, a name or \"(\" is expected before \"/\""},
        {"sin(;1)", "5: a number, a name or \"(\" is expected before \";\""},
        {"max(1;)", "7: a number, a name or \"(\" is expected before \")\""},
        {"2 pi", "3: an operator is expected before \"pi\""},
        {"1.2.3", "4: an operator is expected before \".3\""},
        {"2e", "2: an operator is expected before \"e\""},
        {"1; 2", "2: an operator is expected before \";\""},
        {"1)", "2: \")\" without a \"(\" before it"},
        {"(1 + 2", "7: missing \")\" for the \"(\" at column 1"},
        {"1 + max(1; 2", "13: missing \")\" for the \"(\" at column 8"},
        {"1 ? 2", "6: missing \":\" for the \"?\" at column 3"},
        {"sin()", "1: function \"sin\" takes 1 argument, not 0"},
        {"1+clamp(1; 2)", "3: function \"clamp\" takes 3 arguments, not 2"},
        {"rnd(1; 2; 3)", "1: function \"rnd\" takes 0 to 2 arguments, not 3"},
        {"1e39", "1: number \"1e39\" is out of the range of single precision"},
        {"max(1, 2)",
         "6: unexpected character \",\"; arguments are separated by \";\", and \".\" is the decimal point"},
        {"seed = 1", "6: unexpected character \"=\"; \"==\" compares, and there is no assignment"},
        {"1 & 2", "3: unexpected character \"&\"; \"&&\" is the logical and"},
        {"1 + \xC3\xA4", "5: unexpected character \"\\xC3\\xA4\""},
        {"1 $", "3: unexpected character \"$\""},
        {"1 + .", "5: unexpected character \".\""},
        {"1 \x80", "3: unexpected character \"\\x80\""},
    };
    for (const auto& [text, message] : cases)
        EXPECT_EQ(BoundFormula(text).error, "Formula error at column " + String(message)) << text;
    EXPECT_EQ(BoundFormula(String("1\0", 2)).error,
              "Formula error at column 2: unexpected character \"\\x00\"");
    EXPECT_EQ(BoundFormula(String(50, 'x')).error,
              "Formula error at column 1: unknown variable \"" + String(40, 'x') + "...\"");
}

TEST(FormulaSyntax, LimitsNesting) {
    const auto repeat = [](const char* text, Int count) {
        String result;
        for (Int i = 0; i < count; ++i)
            result += text;
        return result;
    };
    struct {
        const char* opening;
        const char* closing;
    } cases[] = {{"(", ")"}, {"-", ""}, {"abs(", ")"}, {"2^", ""}, {"1?", ":0"}, {"0?1:", ""}};
    for (const auto& test : cases) {
        const Int most = FormulaParser::MaxNesting - 1; // the innermost 1 is a level too
        const BoundFormula within(repeat(test.opening, most) + "1" + repeat(test.closing, most));
        EXPECT_EQ(within.error, "") << test.opening;
        for (const Int count : {most + 1, Int(5000)}) {
            const BoundFormula beyond(repeat(test.opening, count) + "1" + repeat(test.closing, count));
            EXPECT_NE(beyond.error.find("nested more than 256 levels deep"), String::npos) << beyond.error;
        }
    }
    // Chains that group from the left are long, not deep.
    EXPECT_EQ(BoundFormula("value" + repeat("+1", 4000)).Evaluate(2), 4002);
}

TEST(FormulaSyntax, LimitsLengthAndSize) {
    const String padded = "1" + String(static_cast<size_t>(FormulaParser::MaxLength) - 1, ' ');
    EXPECT_EQ(BoundFormula(padded).Evaluate(), 1);
    EXPECT_EQ(BoundFormula(padded + " ").error,
              "Formula error at column 65537: the formula is longer than 65536 bytes");

    String sum = "seed"; // of n terms: 2 n - 1 nodes
    for (int i = 1; i < 512; ++i)
        sum += "+seed";
    EXPECT_EQ(BoundFormula(sum, {.sizeLimit = 1}).Evaluate(0, 2), 1024);
    EXPECT_EQ(
        BoundFormula(sum + "+1", {.sizeLimit = 1}).error,
        "Formula error at column 2560: the formula has more than 1024 numbers, variables and operations");
    EXPECT_EQ(BoundFormula(sum + "+1", {.sizeLimit = 2}).Evaluate(0, 2), 1025);
}

String WriteNode(const Expression& tree, Int32 index) {
    const ExpressionNode& node = tree.nodes.at(static_cast<size_t>(index));
    std::ostringstream text;
    if (node.kind == ExpressionNode::Kind::Constant)
        text << node.constant;
    else if (node.kind == ExpressionNode::Kind::Variable)
        text << tree.variables.at(static_cast<size_t>(node.variable)).name;
    else
        text << static_cast<int>(node.operation);
    text << "@" << node.position;
    for (int i = 0; i < node.operandCount; ++i)
        text << (i == 0 ? "(" : ", ") << WriteNode(tree, node.operands[i]);
    if (node.operandCount > 0)
        text << ")";
    return text.str();
}

String Write(const BoundFormula& formula) {
    return WriteNode(formula.cache->GetTree(), static_cast<Int32>(formula.cache->GetTree().nodes.size()) - 1);
}

TEST(FormulaSyntax, KeepsTheTreeInEvaluationOrder) {
    const auto name = [](FormulaOperation operation) { return std::to_string(static_cast<int>(operation)); };
    using Op = FormulaOperation;
    EXPECT_EQ(Write(BoundFormula("value + 2 * seed")),
              name(Op::Add) + "@6(value@0, " + name(Op::Multiply) + "@10(2@8, seed@12))");
    // Constants fold into one node; what stands beside a variable stays.
    EXPECT_EQ(Write(BoundFormula("(1 + 2) * 3 + value")), name(Op::Add) + "@12(9@8, value@14)");
    EXPECT_EQ(Write(BoundFormula("1 + 2", {.folding = 0})), name(Op::Add) + "@2(1@0, 2@4)");
    // Only an integer variable itself is a seed of 32 bits.
    EXPECT_EQ(Write(BoundFormula("rnd(value; seed)")), name(Op::RandomOfInteger) + "@0(value@4, seed@11)");
    EXPECT_EQ(Write(BoundFormula("rnd(value; value)")), name(Op::Random) + "@0(value@4, value@11)");
    EXPECT_EQ(Write(BoundFormula("rnd(value)")), name(Op::Random) + "@0(value@4, 0@0)");
    // Degrees are explicit.
    const BoundFormula::Settings degrees{.angleUnit = FormulaParser::AngleDegrees};
    EXPECT_EQ(Write(BoundFormula("sin(value)", degrees)),
              name(Op::Sin) + "@0(" + name(Op::Radians) + "@0(value@4))");
    EXPECT_EQ(Write(BoundFormula("acos(value)", degrees)),
              name(Op::Degrees) + "@0(" + name(Op::Acos) + "@0(value@5))");
}

// Any text gives a tree that can be evaluated, or an error with a column.
TEST(FormulaSyntax, SurvivesRandomText) {
    const char* pieces[] = {"(",  ")",    ";",    "rnd(", "sin(", "clamp(", "value", "seed", "1",  ".5", "+",
                            "-",  "*",    "/",    "^",    "?",    ":",      "!",     "&&",   "==", "<",  " ",
                            "1e", "mix(", "\xFF", "\n",   "pi",   "x",      "max(",  "%",    "=",  "\""};
    std::mt19937 random(1);
    Int compiled = 0;
    for (int i = 0; i < 20000; ++i) {
        String text;
        for (auto length = random() % 12; length > 0; --length)
            text += pieces[random() % std::size(pieces)];
        BoundFormula formula(text);
        if (formula.cache) {
            formula.Evaluate(1, 2);
            ++compiled;
        } else {
            EXPECT_EQ(formula.error.rfind("Formula error at column ", 0), 0u) << text;
        }
    }
    EXPECT_GT(compiled, 200);
}

} // namespace
} // namespace norvi
