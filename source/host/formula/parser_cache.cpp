// Evaluation of compiled formulas.
#include <algorithm>
#include <bit>

#include "program.h"

namespace norvi {

namespace {

Float FromInteger(const VariableLoad& load, Int32 value) {
    return load.asBits ? std::bit_cast<Float>(value) : static_cast<Float>(value);
}

Float Load(const VariableLoad& load) {
    return load.floatCell ? *load.floatCell : FromInteger(load, *load.intCell);
}

void LoadBlock(const VariableLoad& load, const Float* values, const Int32* seeds, Float* slot, Int count) {
    if (load.isBatchInput && load.floatCell && values)
        std::copy_n(values, count, slot);
    else if (load.isBatchInput && load.intCell && seeds)
        std::transform(seeds, seeds + count, slot, [&load](Int32 seed) { return FromInteger(load, seed); });
    else
        std::fill_n(slot, count, Load(load));
}

template <typename T>
T* Advance(T* array, Int elements) {
    return array ? array + elements : nullptr;
}

} // namespace

FormulaParserCache::FormulaParserCache(Expression tree, std::unique_ptr<const FormulaProgram> program)
    : tree_(std::move(tree)), program_(std::move(program)) {}

FormulaParserCache::~FormulaParserCache() = default;

Float FormulaParserCache::Evaluate() const noexcept {
    const FormulaProgram& program = *program_;
    Float slots[MaxSlots];
    const Float* const banks[Operand::BankCount] = {slots, program.constants.data()};
    const auto get = [&banks](Operand operand) { return banks[operand.bank][operand.index]; };
    for (const VariableLoad& load : program.loads)
        slots[load.slot] = Load(load);
    for (const Instruction& instruction : program.instructions)
        slots[instruction.target] = instruction.scalar(
            get(instruction.operands[0]), get(instruction.operands[1]), get(instruction.operands[2]));
    return get(program.result);
}

void FormulaParserCache::Evaluate(const Float* values, const Int32* seeds, Float* results,
                                  Int count) const noexcept {
    const FormulaProgram& program = *program_;
    alignas(64) Float slots[BatchFloats];
    const Float* const banks[Operand::BankCount] = {slots, program.constantBlocks.data()};
    const auto get = [&](Operand operand) { return banks[operand.bank] + operand.index * program.blockSize; };
    for (Int first = 0; first < count; first += program.blockSize) {
        const Int size = std::min(program.blockSize, count - first);
        for (const VariableLoad& load : program.loads)
            LoadBlock(load, Advance(values, first), Advance(seeds, first),
                      slots + load.slot * program.blockSize, size);
        for (const Instruction& instruction : program.instructions)
            instruction.block(get(instruction.operands[0]), get(instruction.operands[1]),
                              get(instruction.operands[2]), slots + instruction.target * program.blockSize,
                              size);
        std::copy_n(get(program.result), size, results + first);
    }
}

} // namespace norvi
