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

void LoadBlock(const VariableLoad& load, const Int32* seeds, Float* block, Int count) {
    if (load.isBatchInput && load.intCell && seeds)
        std::transform(seeds, seeds + count, block, [&load](Int32 seed) { return FromInteger(load, seed); });
    else
        std::fill_n(block, count, Load(load));
}

} // namespace

FormulaParserCache::FormulaParserCache(Expression tree, std::unique_ptr<const FormulaProgram> program)
    : tree_(std::move(tree)), program_(std::move(program)) {}

FormulaParserCache::~FormulaParserCache() = default;

Float FormulaParserCache::Evaluate() const noexcept {
    const FormulaProgram& program = *program_;
    Float slots[MaxSlots], value = 0;
    const Float* const banks[Operand::BankCount] = {slots, program.constants.data(), &value};
    const auto get = [&banks](Operand operand) { return banks[operand.bank][operand.index]; };
    for (const VariableLoad& load : program.loads)
        (load.place.bank == Operand::Values ? value : slots[load.place.index]) = Load(load);
    for (const Instruction& instruction : program.instructions)
        slots[instruction.target] = instruction.scalar(
            get(instruction.operands[0]), get(instruction.operands[1]), get(instruction.operands[2]));
    return get(program.result);
}

void FormulaParserCache::Evaluate(const Float* values, const Int32* seeds, Float* results,
                                  Int count) const noexcept {
    const FormulaProgram& program = *program_;
    alignas(64) Float slots[BatchFloats];
    Float* const spare = slots + program.slotCount * program.blockSize;
    const Float* banks[Operand::BankCount] = {slots, program.constantBlocks.data(), spare};
    const auto get = [&](Operand operand) { return banks[operand.bank] + operand.index * program.blockSize; };
    for (Int first = 0; first < count; first += program.blockSize) {
        const Int size = std::min(program.blockSize, count - first);
        for (const VariableLoad& load : program.loads) {
            if (load.place.bank == Operand::Slots)
                LoadBlock(load, seeds ? seeds + first : nullptr, slots + load.place.index * program.blockSize,
                          size);
            else if (values)
                banks[Operand::Values] = values + first;
            else
                std::fill_n(spare, size, Load(load));
        }
        if (program.instructions.empty())
            std::copy_n(get(program.result), size, results + first);
        for (const Instruction& instruction : program.instructions) {
            const bool isLast = &instruction == &program.instructions.back();
            instruction.block(
                get(instruction.operands[0]), get(instruction.operands[1]), get(instruction.operands[2]),
                isLast ? results + first : slots + instruction.target * program.blockSize, size);
        }
    }
}

} // namespace norvi
