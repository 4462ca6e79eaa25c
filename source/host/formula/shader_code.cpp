// Formulas as text of the kernel language.
#include <array>
#include <bit>
#include <cmath>

#include <norvi/host/text.h>

#include "operations.h"

namespace norvi {

namespace {

/// How an operation is written: "$x", "$y" and "$z" stand for its operands and "$r" begins names of its own.
/// The last line is the value, those before it are statements.
struct OperationText {
    FormulaOperation operation;
    std::string_view text;
};

using Op = FormulaOperation;

#define MIX_BITS(h)                                                                                          \
    h " = (" h " ^ (" h " >> 16u)) * 0x7FEB352Du;\n" h " = (" h " ^ (" h " >> 15u)) * 0x846CA68Bu;\n" h      \
      " = " h " ^ (" h " >> 16u);\n"
#define CANONICAL_BITS(x) "(isnan(" x ") ? 0x7FC00000u : " x " == 0.0 ? 0u : floatBitsToUint(" x "))"
#define RANDOM(seedBits)                                                                                     \
    "uint $rSeed = " seedBits " + 0x9E3779B9u;\n" MIX_BITS("$rSeed") "uint $rHash = " CANONICAL_BITS(        \
        "$x") " ^ $rSeed;\n" MIX_BITS("$rHash") "float($rHash >> 8u) / 16777216.0"

// Small integer powers are products. Elsewhere the shading languages' pow knows no negative base.
constexpr std::string_view powerText =
    "float $rPower = pow(abs($x), $y);\n"
    "float $rOfNegative = fract($y) != 0.0 ? uintBitsToFloat(0x7FC00000u) : mod($y, 2.0) == 1.0 ? -$rPower : "
    "$rPower;\n"
    "$y == 0.0 ? 1.0 : $y == 2.0 ? $x * $x : $y == 3.0 ? $x * $x * $x : $y == 4.0 ? ($x * $x) * ($x * $x) : "
    "$x >= 0.0 ? $rPower : $rOfNegative";

// An integral seed stands for that integer, as in rnd(x; 3).
constexpr std::string_view randomText =
    "bool $rIsInteger = abs($y) < 2147483648.0 && $y == floor($y);\n" RANDOM(
        "($rIsInteger ? uint(int($rIsInteger ? $y : 0.0)) : " CANONICAL_BITS("$y") ")");

constexpr std::array<OperationText, FormulaOperationCount> operationTexts{{
    {Op::Negate, "-$x"},
    {Op::Not, "float($x == 0.0)"},
    {Op::Add, "$x + $y"},
    {Op::Subtract, "$x - $y"},
    {Op::Multiply, "$x * $y"},
    {Op::Divide, "$x / $y"},
    {Op::Modulo, "$x - $y * floor($x / $y)"},
    {Op::Power, powerText},
    {Op::Less, "float($x < $y)"},
    {Op::LessEqual, "float($x <= $y)"},
    {Op::Greater, "float($x > $y)"},
    {Op::GreaterEqual, "float($x >= $y)"},
    {Op::Equal, "float($x == $y)"},
    {Op::NotEqual, "float($x != $y)"},
    {Op::And, "float($x != 0.0 && $y != 0.0)"},
    {Op::Or, "float($x != 0.0 || $y != 0.0)"},
    {Op::Select, "$x != 0.0 ? $y : $z"},
    {Op::Sin, "sin($x)"},
    {Op::Cos, "cos($x)"},
    {Op::Tan, "tan($x)"},
    {Op::Asin, "asin($x)"},
    {Op::Acos, "acos($x)"},
    {Op::Atan, "atan($x)"},
    {Op::Atan2, "atan($x, $y)"},
    {Op::Sinh, "sinh($x)"},
    {Op::Cosh, "cosh($x)"},
    {Op::Tanh, "tanh($x)"},
    {Op::Exp, "exp($x)"},
    {Op::Exp2, "exp2($x)"},
    {Op::Log, "log($x)"},
    {Op::Log2, "log2($x)"},
    {Op::Log10, "log($x) * 0.4342944819"},
    {Op::Sqrt, "sqrt($x)"},
    {Op::InverseSqrt, "1.0 / sqrt($x)"},
    {Op::Hypot, "sqrt($x * $x + $y * $y)"},
    {Op::Abs, "abs($x)"},
    {Op::Sign, "float($x > 0.0) - float($x < 0.0)"},
    {Op::Floor, "floor($x)"},
    {Op::Ceil, "ceil($x)"},
    {Op::Round, "roundEven($x)"},
    {Op::Trunc, "trunc($x)"},
    {Op::Fract, "$x - floor($x)"},
    {Op::Min, "$y < $x ? $y : $x"},
    {Op::Max, "$x < $y ? $y : $x"},
    {Op::Clamp, "float $rLow = $x < $y ? $y : $x;\n$z < $rLow ? $z : $rLow"},
    {Op::Saturate, "float $rLow = $x < 0.0 ? 0.0 : $x;\n1.0 < $rLow ? 1.0 : $rLow"},
    {Op::Mix, "$x * (1.0 - $z) + $y * $z"},
    {Op::Step, "$y < $x ? 0.0 : 1.0"},
    {Op::SmoothStep, "float $rPlace = ($z - $x) / ($y - $x);\n"
                     "$rPlace = $rPlace < 0.0 ? 0.0 : $rPlace;\n"
                     "$rPlace = 1.0 < $rPlace ? 1.0 : $rPlace;\n"
                     "$rPlace * $rPlace * (3.0 - 2.0 * $rPlace)"},
    {Op::Radians, "$x * 0.0174532925"},
    {Op::Degrees, "$x * 57.2957795"},
    {Op::Random, randomText},
    {Op::RandomOfInteger, RANDOM("uint($y)")},
}};

/// Shorter texts of powers with these constant exponents.
constexpr struct {
    Float exponent;
    std::string_view text;
} constantPowers[] = {{2, "$x * $x"}, {3, "$x * $x * $x"}, {4, "($x * $x) * ($x * $x)"}};

static_assert(AreInOrder(operationTexts));

String LiteralText(Float value) {
    if (!std::isfinite(value))
        return Format("uintBitsToFloat(@u)", std::bit_cast<UInt32>(value));
    String text = ToText(value);
    if (text.find_first_of(".e") == String::npos)
        text += ".0";
    return std::signbit(value) ? "(" + text + ")" : text;
}

class ShaderCodeWriter {
  public:
    ShaderCodeWriter(const Expression& tree, const String& resultName)
        : tree_(tree), resultName_(resultName) {}

    String Write() {
        const size_t root = tree_.nodes.size() - 1;
        for (size_t i = 0; i < root; ++i)
            if (tree_.nodes[i].kind == ExpressionNode::Kind::Operation)
                text_ += Format("float @ = @;\n", NameOf(i), WriteOperation(i));
        const bool isOperation = tree_.nodes[root].kind == ExpressionNode::Kind::Operation;
        const String value = isOperation ? WriteOperation(root) : OperandText(root, false);
        const String assignment = Format("@ = @;", resultName_, value);
        return text_.empty() ? assignment : "{\n" + text_ + assignment + "\n}";
    }

  private:
    static String NameOf(size_t node) { return Format("formulaStep@", UInt64{node}); }

    /// @param asInteger leaves an integer variable what it is.
    String OperandText(size_t index, bool asInteger) const {
        const ExpressionNode& node = tree_.nodes[index];
        if (node.kind == ExpressionNode::Kind::Operation)
            return NameOf(index);
        if (node.kind == ExpressionNode::Kind::Constant)
            return LiteralText(node.constant);
        const ExpressionVariable& variable = tree_.variables[static_cast<size_t>(node.variable)];
        return variable.isInteger && !asInteger ? Format("float(@)", variable.name) : variable.name;
    }

    std::string_view FindText(const ExpressionNode& node) const {
        if (node.operation == Op::Power) {
            const ExpressionNode& exponent = tree_.nodes[static_cast<size_t>(node.operands[1])];
            for (const auto& power : constantPowers)
                if (exponent.kind == ExpressionNode::Kind::Constant && exponent.constant == power.exponent)
                    return power.text;
        }
        return operationTexts[static_cast<size_t>(node.operation)].text;
    }

    /// Writes the operation's statements, and gives its value.
    String WriteOperation(size_t index) {
        const String text = Substitute(FindText(tree_.nodes[index]), index);
        const size_t value = text.rfind('\n') + 1;
        text_ += text.substr(0, value);
        return text.substr(value);
    }

    String Substitute(std::string_view pattern, size_t index) const {
        const ExpressionNode& node = tree_.nodes[index];
        String text;
        for (size_t mark = pattern.find('$'); mark != pattern.npos; mark = pattern.find('$')) {
            text += pattern.substr(0, mark);
            const char letter = pattern[mark + 1];
            text += letter == 'r' ? NameOf(index)
                                  : OperandText(static_cast<size_t>(node.operands[letter - 'x']),
                                                node.operation == Op::RandomOfInteger && letter == 'y');
            pattern.remove_prefix(mark + 2);
        }
        return text.append(pattern);
    }

    const Expression& tree_;
    const String& resultName_;
    String text_;
};

} // namespace

Result<void> FormulaParser::GenerateShaderCode(const FormulaParserCache& cache, const String& resultName,
                                               String& text) const {
    return CatchOutOfMemory([&]() -> Result<void> {
        text = ShaderCodeWriter(cache.GetTree(), resultName).Write();
        return OK;
    });
}

} // namespace norvi
