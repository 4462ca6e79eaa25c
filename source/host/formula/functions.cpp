#include "functions.h"

#include <algorithm>

namespace norvi {

namespace {

using Op = FormulaOperation;
using Angle = FunctionInfo::Angle;

constexpr FunctionInfo g_functions[] = {
    {"sin", 1, 1, Op::Sin, Angle::Taken},
    {"cos", 1, 1, Op::Cos, Angle::Taken},
    {"tan", 1, 1, Op::Tan, Angle::Taken},
    {"asin", 1, 1, Op::Asin, Angle::Given},
    {"acos", 1, 1, Op::Acos, Angle::Given},
    {"atan", 1, 1, Op::Atan, Angle::Given},
    {"atan2", 2, 2, Op::Atan2, Angle::Given},
    {"sinh", 1, 1, Op::Sinh},
    {"cosh", 1, 1, Op::Cosh},
    {"tanh", 1, 1, Op::Tanh},
    {"exp", 1, 1, Op::Exp},
    {"exp2", 1, 1, Op::Exp2},
    {"log", 1, 1, Op::Log},
    {"log2", 1, 1, Op::Log2},
    {"log10", 1, 1, Op::Log10},
    {"sqrt", 1, 1, Op::Sqrt},
    {"inversesqrt", 1, 1, Op::InverseSqrt},
    {"hypot", 2, 2, Op::Hypot},
    {"pow", 2, 2, Op::Power},
    {"mod", 2, 2, Op::Modulo},
    {"abs", 1, 1, Op::Abs},
    {"sign", 1, 1, Op::Sign},
    {"floor", 1, 1, Op::Floor},
    {"ceil", 1, 1, Op::Ceil},
    {"round", 1, 1, Op::Round},
    {"trunc", 1, 1, Op::Trunc},
    {"fract", 1, 1, Op::Fract},
    {"min", 2, 2, Op::Min},
    {"max", 2, 2, Op::Max},
    {"clamp", 3, 3, Op::Clamp},
    {"saturate", 1, 1, Op::Saturate},
    {"mix", 3, 3, Op::Mix},
    {"lerp", 3, 3, Op::Mix},
    {"step", 2, 2, Op::Step},
    {"smoothstep", 3, 3, Op::SmoothStep},
    {"radians", 1, 1, Op::Radians},
    {"degrees", 1, 1, Op::Degrees},
    {"rnd", 0, 2, Op::Random},
};

constexpr NamedConstant g_constants[] = {
    {"pi", 3.14159265f},
    {"e", 2.71828183f},
};

char FoldCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

template <typename Row, size_t Count>
const Row* FindRow(const Row (&table)[Count], std::string_view name, Bool ignoreCase) {
    for (const Row& row : table)
        if (EqualNames(row.name, name, ignoreCase))
            return &row;
    return nullptr;
}

} // namespace

bool EqualNames(std::string_view a, std::string_view b, Bool ignoreCase) {
    if (!ignoreCase)
        return a == b;
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return FoldCase(x) == FoldCase(y); });
}

const FunctionInfo* FindFunction(std::string_view name, Bool ignoreCase) {
    return FindRow(g_functions, name, ignoreCase);
}

const NamedConstant* FindConstant(std::string_view name, Bool ignoreCase) {
    return FindRow(g_constants, name, ignoreCase);
}

void AppendFunctionNames(std::vector<std::string_view>& names) {
    for (const FunctionInfo& function : g_functions)
        names.push_back(function.name);
}

void AppendConstantNames(std::vector<std::string_view>& names) {
    for (const NamedConstant& constant : g_constants)
        names.push_back(constant.name);
}

} // namespace norvi
