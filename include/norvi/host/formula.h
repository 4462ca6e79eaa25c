// Formulas: expressions that users type and kernels evaluate once per invocation.
//
// The language is described in docs/formulas.md. All arithmetic is single precision, and the operations that
// the language itself defines (everything but the transcendental functions) round as IEEE 754 says, each by
// itself. A card that runs the generated shader text computes the same numbers, as far as it does not
// contract a product and a sum into one operation.
#pragma once

#include <memory>

#include <norvi/host/result.h>
#include <norvi/host/types.h>

namespace norvi {

struct FormulaProgram;

/// What an operation node of a formula computes. x, y and z are its operands in order; a comparison gives 1
/// or 0, and a condition is true unless it equals 0 (so NaN is true).
enum class FormulaOperation : UChar {
    Negate,          ///< -x
    Not,             ///< x == 0
    Add,             ///< x + y
    Subtract,        ///< x - y
    Multiply,        ///< x * y
    Divide,          ///< x / y
    Modulo,          ///< x - y * floor(x / y)
    Power,           ///< x * x for y = 2, x * x * x for 3, (x * x) * (x * x) for 4, else pow(x, y) of C
    Less,            ///< x < y
    LessEqual,       ///< x <= y
    Greater,         ///< x > y
    GreaterEqual,    ///< x >= y
    Equal,           ///< x == y
    NotEqual,        ///< x != y
    And,             ///< x != 0 and y != 0
    Or,              ///< x != 0 or y != 0
    Select,          ///< x != 0 ? y : z
    Sin,             ///< sine of radians, as are all angles here
    Cos,             ///<
    Tan,             ///<
    Asin,            ///<
    Acos,            ///<
    Atan,            ///<
    Atan2,           ///< angle of the point (y, x): first operand the ordinate, as in C
    Sinh,            ///<
    Cosh,            ///<
    Tanh,            ///<
    Exp,             ///<
    Exp2,            ///<
    Log,             ///< natural logarithm
    Log2,            ///<
    Log10,           ///<
    Sqrt,            ///<
    InverseSqrt,     ///< 1 / sqrt(x), rounded twice
    Hypot,           ///< sqrt(x * x + y * y)
    Abs,             ///<
    Sign,            ///< (x > 0) - (x < 0): 0 for NaN
    Floor,           ///<
    Ceil,            ///<
    Round,           ///< nearest integer, halves to the even one
    Trunc,           ///<
    Fract,           ///< x - floor(x)
    Min,             ///< y < x ? y : x
    Max,             ///< x < y ? y : x
    Clamp,           ///< Min(Max(x, y), z)
    Saturate,        ///< Clamp(x, 0, 1)
    Mix,             ///< x * (1 - z) + y * z
    Step,            ///< y < x ? 0 : 1
    SmoothStep,      ///< t * t * (3 - 2 * t) with t = Saturate((z - x) / (y - x))
    Radians,         ///< x * 0.0174532925
    Degrees,         ///< x * 57.2957795
    Random,          ///< hash of x and the seed y, see docs/formulas.md
    RandomOfInteger, ///< the same, where y is an integer variable whose 32 bits are the seed
};
inline constexpr Int FormulaOperationCount = static_cast<Int>(FormulaOperation::RandomOfInteger) + 1;

/// A node of a syntax tree.
struct ExpressionNode {
    enum class Kind : UChar { Constant, Variable, Operation };

    Kind kind = Kind::Constant;
    FormulaOperation operation{}; ///< of an operation
    UChar operandCount = 0;       ///< of an operation: 1 to 3
    Int32 operands[3] = {};       ///< of an operation: indices of nodes
    Float constant = 0;           ///< of a constant: its value; folding may yield NaN and infinities
    Int32 variable = 0;           ///< of a variable: index into `Expression::variables`
    Int32 position = 0;           ///< byte offset in the formula text of the operator, name or number
};

struct ExpressionVariable {
    String name; ///< as declared
    bool isInteger = false;
};

/// A syntax tree as a flat array in evaluation order: operands stand before their operation and each node but
/// the last, the root, is the operand of exactly one other. A writer of shader text can thus emit one
/// statement per node in order, without recursion; the tree may be as deep as it has nodes. Degrees, where
/// asked for, are explicit `Radians` and `Degrees` nodes. The value of an integer variable is converted to
/// Float, except as the second operand of `RandomOfInteger`.
struct Expression {
    BaseArray<ExpressionNode> nodes;
    BaseArray<ExpressionVariable> variables; ///< all that were declared, in the order of declaration
};

/// A compiled formula. Immutable: any number of threads may evaluate it at once, as far as the bound cells
/// allow. It does not keep the cells alive; they must outlive the last evaluation.
class FormulaParserCache {
  public:
    FormulaParserCache(Expression tree, std::unique_ptr<const FormulaProgram> program);
    ~FormulaParserCache();

    /// The value of the formula for what the bound cells hold now. Writes to no cell (there is no assignment
    /// in the language), never fails and never allocates. A NaN result has unspecified sign and payload.
    Float Evaluate() const noexcept;

    /// For each i below `count`: results[i] is what `Evaluate()` returns, bit by bit (except for sign and
    /// payload of a NaN), while the float variable "value" is values[i] and the integer variable "seed" is
    /// seeds[i]. Other variables have what their cells hold. `values` and `seeds` may each be null, which
    /// leaves that variable to its cell too. `results` must not overlap them.
    ///
    /// Cheaper than the single form from two elements on; needs about 36 KiB of stack.
    void Evaluate(const Float* values, const Int32* seeds, Float* results, Int count) const noexcept;

    const Expression& GetTree() const { return tree_; }

  private:
    Expression tree_;
    std::unique_ptr<const FormulaProgram> program_;
};

using FormulaParserCacheRef = std::shared_ptr<const FormulaParserCache>;

class FormulaParser;
using FormulaParserRef = std::shared_ptr<FormulaParser>;

/// Holds the variables of formulas and compiles formulas that use them. One parser may compile any number of
/// formulas; a compiled formula is independent of the parser. Calls on one parser must not run concurrently.
class FormulaParser {
  public:
    /// Angles of trigonometric functions.
    static constexpr Int32 AngleRadians = 0, AngleDegrees = 1;
    /// Limits: length of a formula in bytes, its nesting, and the variables of one parser.
    static constexpr Int MaxLength = 65536, MaxNesting = 256, MaxVariables = 16;

    static Result<FormulaParserRef> Alloc();

    /// Binds `name` to a cell that holds the variable's value whenever a formula is evaluated.
    /// @param name an ASCII letter or underscore, then also digits; not the name of a function or constant.
    /// @param cell must outlive every formula compiled with it; null is a null-pointer error.
    /// @param count number of elements; only 1 is supported. Any other is an illegal-argument error, as are
    ///        a bad name, a name that is already bound, and one variable too many.
    Result<void> AddFloatVariable(const String& name, const Float* cell, Int count);
    Result<void> AddIntVariable(const String& name, const Int32* cell, Int count);

    /// Compiles `formula` for the variables bound so far.
    /// @param cache receives the compiled formula; untouched on failure.
    /// @param angleUnit AngleRadians or AngleDegrees: what sin, cos and tan take, and what asin, acos, atan
    ///        and atan2 give.
    /// @param folding 1 computes constant parts while compiling, 0 keeps the tree as written. Never changes a
    ///        value.
    /// @param sizeLimit most nodes that the tree may have, in units of 1024; 1 to 64.
    /// @param ignoreCase matches names regardless of ASCII case, an exact match going first.
    ///
    /// Fails with an illegal-argument error for a formula that is wrong: "Formula error at column 5: unknown
    /// function "sni"; did you mean "sin"?". Columns count characters of `formula` from 1, across lines. The
    /// time taken is proportional to the length of the formula.
    Result<void> CalculateParserCache(FormulaParserCacheRef& cache, const String& formula, Int32 angleUnit,
                                      Int32 folding, Int32 sizeLimit, Bool ignoreCase) const;

    /// Writes the formula as statements of the kernel language (docs/kernel_language.md) that leave its value
    /// in the variable `resultName`, a float that is declared outside, as are the formula's variables. Names
    /// that the statements need for themselves begin with "formulaStep" and are declared in a block of their
    /// own.
    /// @param text receives the statements, without a line break behind the last one; untouched on failure,
    ///        which only a lack of memory is.
    Result<void> GenerateShaderCode(const FormulaParserCache& cache, const String& resultName,
                                    String& text) const;

  private:
    Result<void> AddVariable(const String& name, bool isInteger, const void* cell, Int count);

    BaseArray<ExpressionVariable> variables_;
    BaseArray<const void*> cells_;
};

/// Makes the random calls of a formula depend on a seed: "rnd(x) + rnd(y; 3)" becomes
/// "rnd(x; seed) + rnd(y; 3)" for the variable name "seed". This is a rewriting of text, not of syntax: the
/// three letters are found inside longer words too ("grnd(x)" becomes "grnd(x; seed)"), the argument list
/// ends at the first ")", and it is left alone where it is empty or holds a ";" already. Fails only for want
/// of memory.
Result<String> InjectSeed(const String& formula, const String& seedVariable);

} // namespace norvi
