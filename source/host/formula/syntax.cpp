#include "syntax.h"

#include <fmt/format.h>

#include "expression_builder.h"
#include "formula_error.h"
#include "functions.h"
#include "tokenizer.h"

namespace norvi {

namespace {

struct BinaryOperator {
    std::string_view symbol;
    int precedence;
    FormulaOperation operation;
};

using Op = FormulaOperation;

// Precedences as in C and the shading languages; power, which those lack, binds tighter than a sign
// before it.
constexpr BinaryOperator g_binaryOperators[] = {
    {"||", 1, Op::Or},    {"&&", 2, Op::And},       {"==", 3, Op::Equal},   {"!=", 3, Op::NotEqual},
    {"<", 4, Op::Less},   {"<=", 4, Op::LessEqual}, {">", 4, Op::Greater},  {">=", 4, Op::GreaterEqual},
    {"+", 5, Op::Add},    {"-", 5, Op::Subtract},   {"*", 6, Op::Multiply}, {"/", 6, Op::Divide},
    {"%", 6, Op::Modulo}, {"^", 7, Op::Power},
};
constexpr int ConditionalPrecedence = 0;
constexpr int PowerPrecedence = 7;

const BinaryOperator* FindBinaryOperator(const Token& token) {
    for (const BinaryOperator& row : g_binaryOperators)
        if (token.IsSymbol(row.symbol))
            return &row;
    return nullptr;
}

// Reads by recursive descent, operators by precedence climbing. Every recursion goes through
// ReadExpression, which limits its depth. Each Read operation adds the nodes of what it reads and returns
// the index of the last one.
class SyntaxReader {
  public:
    SyntaxReader(std::string_view formula, const BaseArray<ExpressionVariable>& variables,
                 const SyntaxSettings& settings)
        : formula_(formula),
          variables_(variables),
          settings_(settings),
          tokenizer_(formula),
          builder_(formula, settings.foldConstants, settings.nodeLimit) {}

    Result<Expression> Read();

  private:
    Result<Int32> ReadExpression(int leastPrecedence);
    Result<Int32> ReadSigned();
    Result<Int32> ReadOperand();
    Result<Int32> ReadConditional(Int32 condition);
    Result<Int32> ReadGroup();
    Result<Int32> ReadName();
    Result<Int32> ReadCall(const Token& name);
    Result<Int32> AddCall(const FunctionInfo& function, BaseArray<Int32> arguments, size_t position);

    Result<void> Advance();
    Result<void> Expect(std::string_view symbol, const Token& opening);
    Failure UnexpectedToken() const;
    Failure UnknownVariable(const Token& name) const;
    Failure UnknownFunction(const Token& name) const;
    Failure WrongArgumentCount(const FunctionInfo& function, size_t given, size_t position) const;
    Failure ErrorAt(const Token& token, std::string_view reason,
                    SourceLocation at = SourceLocation::Current()) const {
        return FormulaError(formula_, token.position, reason, at);
    }

    Int32 FindVariable(std::string_view name, bool ignoreCase) const;

    std::string_view formula_;
    const BaseArray<ExpressionVariable>& variables_;
    SyntaxSettings settings_;
    Tokenizer tokenizer_;
    ExpressionBuilder builder_;
    Token token_; // the next one that is not yet used
    Int nesting_ = 0;
};

Result<Expression> SyntaxReader::Read() {
    NORVI_TRY(Advance());
    if (token_.kind == Token::Kind::End)
        return ErrorAt(token_, "the formula is empty");
    NORVI_TRY(ReadExpression(ConditionalPrecedence));
    if (token_.kind != Token::Kind::End)
        return UnexpectedToken();
    return Expression{builder_.TakeNodes(), variables_};
}

Result<Int32> SyntaxReader::ReadExpression(int leastPrecedence) {
    if (++nesting_ > FormulaParser::MaxNesting)
        return ErrorAt(token_, fmt::format("nested more than {} levels deep", FormulaParser::MaxNesting));
    NORVI_TRY_VALUE(first, ReadSigned());
    Int32 left = first;
    for (;;) {
        const BinaryOperator* found = FindBinaryOperator(token_);
        if (!found || found->precedence < leastPrecedence)
            break;
        const Token symbol = token_;
        NORVI_TRY(Advance());
        const bool groupsFromRight = found->operation == Op::Power;
        NORVI_TRY_VALUE(right, ReadExpression(found->precedence + (groupsFromRight ? 0 : 1)));
        const Int32 operands[] = {left, right};
        NORVI_TRY_VALUE(operation, builder_.AddOperation(found->operation, operands, symbol.position));
        left = operation;
    }
    if (leastPrecedence == ConditionalPrecedence && token_.IsSymbol("?")) {
        NORVI_TRY_VALUE(conditional, ReadConditional(left));
        left = conditional;
    }
    --nesting_;
    return left;
}

Result<Int32> SyntaxReader::ReadConditional(Int32 condition) {
    const Token symbol = token_;
    NORVI_TRY(Advance());
    NORVI_TRY_VALUE(whenTrue, ReadExpression(ConditionalPrecedence));
    NORVI_TRY(Expect(":", symbol));
    NORVI_TRY_VALUE(whenFalse, ReadExpression(ConditionalPrecedence));
    const Int32 operands[] = {condition, whenTrue, whenFalse};
    return builder_.AddOperation(Op::Select, operands, symbol.position);
}

Result<Int32> SyntaxReader::ReadSigned() {
    const bool isMinus = token_.IsSymbol("-"), isNot = token_.IsSymbol("!");
    if (!isMinus && !isNot && !token_.IsSymbol("+"))
        return ReadOperand();
    const Token symbol = token_;
    NORVI_TRY(Advance());
    NORVI_TRY_VALUE(operand, ReadExpression(PowerPrecedence));
    if (!isMinus && !isNot)
        return Int32(operand);
    return builder_.AddOperation(isMinus ? Op::Negate : Op::Not, {&operand, 1}, symbol.position);
}

Result<Int32> SyntaxReader::ReadOperand() {
    const Token token = token_;
    if (token.kind == Token::Kind::Number) {
        NORVI_TRY(Advance());
        return builder_.AddConstant(token.number, token.position);
    }
    if (token.kind == Token::Kind::Name)
        return ReadName();
    if (token.IsSymbol("("))
        return ReadGroup();
    constexpr std::string_view Expected = "a number, a name or \"(\"";
    if (token.kind == Token::Kind::End)
        return ErrorAt(token, fmt::format("the formula ends where {} is expected", Expected));
    return ErrorAt(token, fmt::format("{} is expected before {}", Expected, Quote(token.text)));
}

Result<Int32> SyntaxReader::ReadGroup() {
    const Token opening = token_;
    NORVI_TRY(Advance());
    NORVI_TRY_VALUE(inner, ReadExpression(ConditionalPrecedence));
    NORVI_TRY(Expect(")", opening));
    return Int32(inner);
}

Result<Int32> SyntaxReader::ReadName() {
    const Token name = token_;
    NORVI_TRY(Advance());
    if (token_.IsSymbol("("))
        return ReadCall(name);
    for (const bool ignoreCase : {false, true}) {
        if (ignoreCase && !settings_.ignoreCase)
            break;
        const Int32 variable = FindVariable(name.text, ignoreCase);
        if (variable >= 0)
            return builder_.AddVariable(variable, name.position);
        if (const NamedConstant* constant = FindConstant(name.text, ignoreCase))
            return builder_.AddConstant(constant->value, name.position);
    }
    return UnknownVariable(name);
}

Result<Int32> SyntaxReader::ReadCall(const Token& name) {
    const FunctionInfo* function = FindFunction(name.text, settings_.ignoreCase);
    if (!function)
        return UnknownFunction(name);
    const Token opening = token_;
    NORVI_TRY(Advance());
    BaseArray<Int32> arguments;
    if (!token_.IsSymbol(")")) {
        for (;;) {
            NORVI_TRY_VALUE(argument, ReadExpression(ConditionalPrecedence));
            arguments.push_back(argument);
            if (!token_.IsSymbol(";"))
                break;
            NORVI_TRY(Advance());
        }
    }
    NORVI_TRY(Expect(")", opening));
    if (arguments.size() < function->leastArguments || arguments.size() > function->mostArguments)
        return WrongArgumentCount(*function, arguments.size(), name.position);
    return AddCall(*function, std::move(arguments), name.position);
}

Result<Int32> SyntaxReader::AddCall(const FunctionInfo& function, BaseArray<Int32> arguments,
                                    size_t position) {
    while (arguments.size() < function.mostArguments) {
        NORVI_TRY_VALUE(missing, builder_.AddConstant(0, position));
        arguments.push_back(missing);
    }
    Op operation = function.operation;
    if (operation == Op::Random) {
        const ExpressionNode& seed = builder_.GetNode(arguments[1]);
        const bool isVariable = seed.kind == ExpressionNode::Kind::Variable;
        if (isVariable && variables_[static_cast<size_t>(seed.variable)].isInteger)
            operation = Op::RandomOfInteger;
    }
    const auto angle = settings_.anglesInDegrees ? function.angle : FunctionInfo::Angle::None;
    if (angle == FunctionInfo::Angle::Taken) {
        NORVI_TRY_VALUE(radians, builder_.AddOperation(Op::Radians, arguments, position));
        arguments[0] = radians;
    }
    NORVI_TRY_VALUE(call, builder_.AddOperation(operation, arguments, position));
    if (angle == FunctionInfo::Angle::Given)
        return builder_.AddOperation(Op::Degrees, {&call, 1}, position);
    return Int32(call);
}

Result<void> SyntaxReader::Advance() {
    NORVI_TRY_VALUE(next, tokenizer_.Next());
    token_ = next;
    return OK;
}

Result<void> SyntaxReader::Expect(std::string_view symbol, const Token& opening) {
    if (!token_.IsSymbol(symbol))
        return ErrorAt(token_, fmt::format("missing {} for the {} at column {}", Quote(symbol),
                                           Quote(opening.text), GetColumn(formula_, opening.position)));
    return Advance();
}

Failure SyntaxReader::UnexpectedToken() const {
    if (token_.IsSymbol(")"))
        return ErrorAt(token_, "\")\" without a \"(\" before it");
    return ErrorAt(token_, fmt::format("an operator is expected before {}", Quote(token_.text)));
}

Failure SyntaxReader::UnknownVariable(const Token& name) const {
    if (const FunctionInfo* function = FindFunction(name.text, settings_.ignoreCase))
        return ErrorAt(name, fmt::format("function \"{}\" without \"(\" behind it", function->name));
    std::vector<std::string_view> candidates;
    for (const ExpressionVariable& variable : variables_)
        candidates.push_back(variable.name);
    AppendConstantNames(candidates);
    return ErrorAt(name, "unknown variable " + Quote(name.text) + DidYouMean(name.text, candidates));
}

Failure SyntaxReader::UnknownFunction(const Token& name) const {
    if (FindVariable(name.text, settings_.ignoreCase) >= 0 || FindConstant(name.text, settings_.ignoreCase))
        return ErrorAt(name, fmt::format("{} is not a function; an operator is missing before the \"(\"",
                                         Quote(name.text)));
    std::vector<std::string_view> candidates;
    AppendFunctionNames(candidates);
    return ErrorAt(name, "unknown function " + Quote(name.text) + DidYouMean(name.text, candidates));
}

Failure SyntaxReader::WrongArgumentCount(const FunctionInfo& function, size_t given, size_t position) const {
    String taken =
        fmt::format("{} argument{}", function.mostArguments, function.mostArguments == 1 ? "" : "s");
    if (function.leastArguments < function.mostArguments)
        taken = fmt::format("{} to {}", function.leastArguments, taken);
    return FormulaError(formula_, position,
                        fmt::format("function \"{}\" takes {}, not {}", function.name, taken, given));
}

Int32 SyntaxReader::FindVariable(std::string_view name, bool ignoreCase) const {
    for (size_t i = 0; i < variables_.size(); ++i)
        if (EqualNames(variables_[i].name, name, ignoreCase))
            return static_cast<Int32>(i);
    return -1;
}

} // namespace

Result<Expression> ParseFormula(std::string_view formula, const BaseArray<ExpressionVariable>& variables,
                                const SyntaxSettings& settings) {
    return SyntaxReader(formula, variables, settings).Read();
}

} // namespace norvi
