// The names that the formula language knows.
#pragma once

#include <norvi/host/formula.h>

namespace norvi {

struct FunctionInfo {
    /// Where an angle crosses the function, for formulas in degrees.
    enum class Angle : UChar { None, Taken, Given };

    std::string_view name;
    UChar leastArguments; ///< arguments that may be left out have the value 0
    UChar mostArguments;
    FormulaOperation operation;
    Angle angle = Angle::None;
};

struct NamedConstant {
    std::string_view name;
    Float value;
};

/// Null for an unknown name.
const FunctionInfo* FindFunction(std::string_view name, Bool ignoreCase);
const NamedConstant* FindConstant(std::string_view name, Bool ignoreCase);

bool EqualNames(std::string_view a, std::string_view b, Bool ignoreCase);

void AppendFunctionNames(std::vector<std::string_view>& names);
void AppendConstantNames(std::vector<std::string_view>& names);

/// Character classes of the language: ASCII, whatever the locale.
inline bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

inline bool IsNameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

} // namespace norvi
