// The executable form of a formula: straight-line instructions on numbered slots.
#pragma once

#include <norvi/host/formula.h>

#include "operations.h"

namespace norvi {

/// Where an instruction finds an operand.
struct Operand {
    enum Bank : UInt16 { Slots, Constants, Values, BankCount };

    UInt16 bank = Slots;
    UInt16 index = 0;
};

struct Instruction {
    ScalarFunction scalar;
    BlockFunction block;
    Operand operands[3]; ///< those that the operation lacks repeat the first, so that all can be read
    UInt16 target;       ///< a slot, and none of the operands; the last instruction's is the formula's value
};

/// A variable that is read before the instructions run: into a slot, but for the float variable "value",
/// which has a bank of its own so that the batch form can read the caller's array where it lies.
struct VariableLoad {
    Int32 variable = 0;               ///< its index in the tree
    const Float* floatCell = nullptr; ///< this or the other is null
    const Int32* intCell = nullptr;
    bool asBits = false;       ///< an integer goes into the slot as it is, not as a number
    bool isBatchInput = false; ///< the batch form has an array for it
    Operand place;
};

struct FormulaProgram {
    BaseArray<VariableLoad> loads;
    BaseArray<Instruction> instructions;
    BaseArray<Float> constants;
    BaseArray<Float> constantBlocks; ///< each constant `blockSize` times
    Operand result;
    Int slotCount = 0;
    Int blockSize = 0; ///< elements that the batch form computes at a time
};

/// Each variable can be loaded as a number and as bits. Each level of nesting holds at most two operands back
/// while it reads the next one; the rest is for that one, for the result, and in the batch form for the cell
/// of "value".
inline constexpr Int MaxSlots = 2 * FormulaParser::MaxVariables + 2 * FormulaParser::MaxNesting + 5;

/// A larger block would not make the cost of starting an instruction noticeably smaller; below the smaller
/// size that cost would exceed the arithmetic's.
inline constexpr Int MaxBlockSize = 256, MinBlockSize = 16;
/// Floats on the stack of a batch evaluation, about what a first-level cache holds.
inline constexpr Int BatchFloats = MinBlockSize * MaxSlots;

/// @param tree as ParseFormula makes it.
/// @param cells of the variables of the tree: Float or Int32, as their type says.
FormulaProgram BuildProgram(const Expression& tree, const BaseArray<const void*>& cells);

} // namespace norvi
