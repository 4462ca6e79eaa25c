// Reads the text of a formula into a syntax tree.
#pragma once

#include <norvi/host/formula.h>

namespace norvi {

struct SyntaxSettings {
    bool anglesInDegrees = false;
    bool foldConstants = true;
    bool ignoreCase = false;
    size_t nodeLimit = 0;
};

/// The tree of `formula`, whose names of variables are looked up in `variables`. Recursion is bounded by
/// FormulaParser::MaxNesting, whatever the text.
Result<Expression> ParseFormula(std::string_view formula, const BaseArray<ExpressionVariable>& variables,
                                const SyntaxSettings& settings);

} // namespace norvi
