// What each operation of formulas computes, for one element and for a block of them.
#pragma once

#include <norvi/host/formula.h>

namespace norvi {

using ScalarFunction = Float (*)(Float x, Float y, Float z);
/// `result` overlaps none of the operands; these may be the same array.
using BlockFunction = void (*)(const Float* x, const Float* y, const Float* z, Float* result, Int count);

/// Both functions ignore the operands beyond `operandCount`, and compute the same bits.
struct OperationInfo {
    FormulaOperation operation;
    UChar operandCount;
    ScalarFunction scalar;
    BlockFunction block;
};

/// Whether row i of a table is that of the operation with number i.
template <typename Table>
constexpr bool AreInOrder(const Table& rows) {
    for (size_t i = 0; i < rows.size(); ++i)
        if (rows[i].operation != static_cast<FormulaOperation>(i))
            return false;
    return true;
}

const OperationInfo& GetOperationInfo(FormulaOperation operation);

/// The power with this constant exponent as an operation of one operand, or null where there is none.
/// Computes the same bits as the general power, faster.
const OperationInfo* FindConstantPower(Float exponent);

} // namespace norvi
