#include "program.h"

#include <algorithm>
#include <cassert>

namespace norvi {

namespace {

using Kind = ExpressionNode::Kind;

class ProgramBuilder {
  public:
    ProgramBuilder(const Expression& tree, const BaseArray<const void*>& cells)
        : tree_(tree), cells_(cells), places_(tree.nodes.size()) {}

    FormulaProgram Build();

  private:
    Operand GetPlace(size_t node, bool asBits);
    Operand LoadVariable(Int32 variable, bool asBits);
    Operand AddConstant(Float value);
    Operand AddInstruction(const ExpressionNode& node);
    UInt16 AddSlot();
    UInt16 TakeTemporary();
    void MakeBlocks();

    const ExpressionNode& GetNode(Int32 index) const { return tree_.nodes[static_cast<size_t>(index)]; }

    const Expression& tree_;
    const BaseArray<const void*>& cells_;
    BaseArray<Operand> places_; // of the results of operation nodes
    BaseArray<UInt16> freeTemporaries_;
    FormulaProgram program_;
};

FormulaProgram ProgramBuilder::Build() {
    for (size_t i = 0; i < tree_.nodes.size(); ++i)
        if (tree_.nodes[i].kind == Kind::Operation)
            places_[i] = AddInstruction(tree_.nodes[i]);
    program_.result = GetPlace(tree_.nodes.size() - 1, false);
    MakeBlocks();
    return std::move(program_);
}

Operand ProgramBuilder::GetPlace(size_t index, bool asBits) {
    const ExpressionNode& node = tree_.nodes[index];
    if (node.kind == Kind::Constant)
        return AddConstant(node.constant);
    if (node.kind == Kind::Variable)
        return LoadVariable(node.variable, asBits);
    return places_[index];
}

Operand ProgramBuilder::LoadVariable(Int32 index, bool asBits) {
    for (const VariableLoad& load : program_.loads)
        if (load.variable == index && load.asBits == asBits)
            return load.place;
    const ExpressionVariable& variable = tree_.variables[static_cast<size_t>(index)];
    const void* cell = cells_[static_cast<size_t>(index)];
    VariableLoad load;
    load.variable = index;
    if (variable.isInteger)
        load.intCell = static_cast<const Int32*>(cell);
    else
        load.floatCell = static_cast<const Float*>(cell);
    load.asBits = asBits;
    load.isBatchInput = variable.name == (variable.isInteger ? "seed" : "value");
    if (load.isBatchInput && load.floatCell)
        load.place = {Operand::Values, 0};
    else // not a slot that was free: instructions before this one would overwrite the variable
        load.place = {Operand::Slots, AddSlot()};
    program_.loads.push_back(load);
    return load.place;
}

Operand ProgramBuilder::AddConstant(Float value) {
    program_.constants.push_back(value);
    return {Operand::Constants, static_cast<UInt16>(program_.constants.size() - 1)};
}

Operand ProgramBuilder::AddInstruction(const ExpressionNode& node) {
    const OperationInfo* info = &GetOperationInfo(node.operation);
    if (node.operation == FormulaOperation::Power && GetNode(node.operands[1]).kind == Kind::Constant)
        if (const OperationInfo* power = FindConstantPower(GetNode(node.operands[1]).constant))
            info = power;
    Instruction instruction{info->scalar, info->block, {}, 0};
    for (int i = 0; i < info->operandCount; ++i) {
        const bool asBits = node.operation == FormulaOperation::RandomOfInteger && i == 1;
        instruction.operands[i] = GetPlace(static_cast<size_t>(node.operands[i]), asBits);
    }
    std::fill(instruction.operands + info->operandCount, instruction.operands + 3, instruction.operands[0]);
    instruction.target = TakeTemporary();
    // Only now, as the target must be none of them. A result is used once, a variable any number of times.
    for (int i = 0; i < info->operandCount; ++i)
        if (GetNode(node.operands[i]).kind == Kind::Operation)
            freeTemporaries_.push_back(instruction.operands[i].index);
    program_.instructions.push_back(instruction);
    return {Operand::Slots, instruction.target};
}

UInt16 ProgramBuilder::AddSlot() {
    assert(program_.slotCount < MaxSlots);
    return static_cast<UInt16>(program_.slotCount++);
}

UInt16 ProgramBuilder::TakeTemporary() {
    if (freeTemporaries_.empty())
        return AddSlot();
    const UInt16 slot = freeTemporaries_.back();
    freeTemporaries_.pop_back();
    return slot;
}

void ProgramBuilder::MakeBlocks() {
    const Int arrays = program_.slotCount + 1 + static_cast<Int>(program_.constants.size());
    const Int size = std::clamp(BatchFloats / arrays, MinBlockSize, MaxBlockSize);
    program_.blockSize = size / MinBlockSize * MinBlockSize;
    const auto elements = static_cast<size_t>(program_.blockSize);
    program_.constantBlocks.reserve(program_.constants.size() * elements);
    for (const Float constant : program_.constants)
        program_.constantBlocks.insert(program_.constantBlocks.end(), elements, constant);
}

} // namespace

FormulaProgram BuildProgram(const Expression& tree, const BaseArray<const void*>& cells) {
    return ProgramBuilder(tree, cells).Build();
}

} // namespace norvi
