// User formulas: the macro that leaves a hole for one in a kernel.
#include <norvi/host/formula.h>
#include <norvi/host/text.h>

#include "macro_handlers.h"
#include "text_lines.h"

namespace norvi {

namespace {

constexpr const char* ResultName = "resultFloat32";

/// Statements that leave the value of `formula` in the result variable.
Result<String> GenerateStatements(const String& formula) {
    NORVI_TRY_VALUE(parser, FormulaParser::Alloc());
    // The generated text reads the kernel's variables of these names; the cells only stand for them.
    const Float value = 0;
    const Int32 seed = 0;
    NORVI_TRY(parser->AddFloatVariable("value", &value, 1));
    NORVI_TRY(parser->AddIntVariable("seed", &seed, 1));
    FormulaParserCacheRef cache;
    NORVI_TRY(parser->CalculateParserCache(cache, formula, FormulaParser::AngleRadians, 1, 10, false));
    String text;
    NORVI_TRY(parser->GenerateShaderCode(*cache, ResultName, text));
    return text;
}

/// The same, generated once in a parse, however often the formula is met.
Result<const String*> FindStatements(MacroContext& context, const String& name, const String& formula) {
    auto found = context.formulaStatements.find(name);
    if (found == context.formulaStatements.end()) {
        NORVI_TRY_VALUE(statements, GenerateStatements(formula));
        found = context.formulaStatements.emplace(name, std::move(statements)).first;
    }
    return &found->second;
}

} // namespace

Result<void> RewriteFormula(const MacroEntry& entry, String& line, size_t position) {
    const size_t close = line.rfind(')');
    if (close == String::npos)
        return IllegalStateError("FORMULAPARSE missing )");
    const size_t begin = position + std::string_view("FORMULAPARSE(").size();
    const Words arguments = SplitAt(Between(line, begin, close), ", ");
    if (arguments.size() != 4)
        return IllegalStateError(
            "FORMULAPARSE macro needs three parameters. The parser name, the input value and the datatype");
    const std::string_view name = arguments[0], input = arguments[1], seed = arguments[2],
                           type = arguments[3];
    const auto& formulas = entry.context->shader.formulas;
    const auto formula = formulas.find(String(name));
    if (formula == formulas.end()) {
        line = Format("@ @Result = @(@); ", type, name, type, input);
        return OK;
    }
    NORVI_TRY_VALUE(statements, FindStatements(*entry.context, formula->first, formula->second));
    const String setup = Format("// setup input and result\n"
                                "float resultFloat32 = 0.0;\n"
                                "float value = @;\n"
                                "int seed = @;\n\n",
                                input, seed);
    line = Format("@// generated formula code\n@\n@ = seed;\n@ @Result =  @(resultFloat32);", setup,
                  *statements, seed, type, name, type);
    return OK;
}

} // namespace norvi
