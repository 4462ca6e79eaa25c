#include <algorithm>

#include <fmt/format.h>

#include "formula_error.h"
#include "functions.h"
#include "program.h"
#include "syntax.h"

namespace norvi {

namespace {

constexpr Int32 LargestSizeLimit = 64;
constexpr size_t NodesPerSizeUnit = 1024;
// Constants are numbered in 16 bits, and there are never more of them than nodes.
static_assert(LargestSizeLimit * NodesPerSizeUnit <= 65536);

bool IsName(std::string_view name) {
    return !name.empty() && IsNameStart(name[0]) &&
           std::all_of(name.begin(), name.end(), [](char c) { return IsNameStart(c) || IsDigit(c); });
}

Result<SyntaxSettings> CheckSettings(Int32 angleUnit, Int32 folding, Int32 sizeLimit, bool ignoreCase) {
    if (angleUnit != FormulaParser::AngleRadians && angleUnit != FormulaParser::AngleDegrees)
        return IllegalArgumentError(
            fmt::format("Angle unit of a formula is neither 0 (radians) nor 1 (degrees) but {}", angleUnit));
    if (folding != 0 && folding != 1)
        return IllegalArgumentError(
            fmt::format("Folding of a formula is neither 0 (off) nor 1 (on) but {}", folding));
    if (sizeLimit < 1 || sizeLimit > LargestSizeLimit)
        return IllegalArgumentError(
            fmt::format("Size limit of a formula is not in 1 to {} but {}", LargestSizeLimit, sizeLimit));
    return SyntaxSettings{angleUnit == FormulaParser::AngleDegrees, folding == 1, ignoreCase,
                          static_cast<size_t>(sizeLimit) * NodesPerSizeUnit};
}

} // namespace

Result<FormulaParserRef> FormulaParser::Alloc() {
    return CatchOutOfMemory([]() -> Result<FormulaParserRef> { return std::make_shared<FormulaParser>(); });
}

Result<void> FormulaParser::AddFloatVariable(const String& name, const Float* cell, Int count) {
    return AddVariable(name, false, cell, count);
}

Result<void> FormulaParser::AddIntVariable(const String& name, const Int32* cell, Int count) {
    return AddVariable(name, true, cell, count);
}

Result<void> FormulaParser::AddVariable(const String& name, bool isInteger, const void* cell, Int count) {
    return CatchOutOfMemory([&]() -> Result<void> {
        if (count != 1)
            return IllegalArgumentError(
                fmt::format("Formula variable {} has {} elements; only 1 is supported", Quote(name), count));
        if (!cell)
            return NullPtrError(fmt::format("Formula variable {} has no cell", Quote(name)));
        if (!IsName(name))
            return IllegalArgumentError(fmt::format("{} is no name of a formula variable", Quote(name)));
        if (FindFunction(name, false) || FindConstant(name, false))
            return IllegalArgumentError(
                fmt::format("Formula variable {} has the name of a function or constant", Quote(name)));
        for (const ExpressionVariable& other : variables_)
            if (other.name == name)
                return IllegalArgumentError(fmt::format("Formula variable {} is already bound", Quote(name)));
        if (variables_.size() >= static_cast<size_t>(MaxVariables))
            return IllegalArgumentError(fmt::format(
                "Formula variable {} is one more than the {} that are allowed", Quote(name), MaxVariables));
        cells_.reserve(variables_.size() + 1); // so that the two arrays never differ in length
        variables_.push_back({name, isInteger});
        cells_.push_back(cell);
        return OK;
    });
}

Result<void> FormulaParser::CalculateParserCache(FormulaParserCacheRef& cache, const String& formula,
                                                 Int32 angleUnit, Int32 folding, Int32 sizeLimit,
                                                 Bool ignoreCase) const {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(settings, CheckSettings(angleUnit, folding, sizeLimit, ignoreCase));
        if (formula.size() > static_cast<size_t>(MaxLength))
            return FormulaError(formula, static_cast<size_t>(MaxLength),
                                fmt::format("the formula is longer than {} bytes", MaxLength));
        NORVI_TRY_VALUE(tree, ParseFormula(formula, variables_, settings));
        auto program = std::make_unique<const FormulaProgram>(BuildProgram(tree, cells_));
        cache = std::make_shared<const FormulaParserCache>(std::move(tree), std::move(program));
        return OK;
    });
}

} // namespace norvi
