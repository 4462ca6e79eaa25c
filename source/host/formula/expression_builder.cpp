#include "expression_builder.h"

#include <algorithm>

#include <fmt/format.h>

#include "formula_error.h"
#include "operations.h"

namespace norvi {

using Kind = ExpressionNode::Kind;

Result<Int32> ExpressionBuilder::AddNode(const ExpressionNode& node) {
    if (nodes_.size() >= nodeLimit_)
        return FormulaError(
            formula_, static_cast<size_t>(node.position),
            fmt::format("the formula has more than {} numbers, variables and operations", nodeLimit_));
    nodes_.push_back(node);
    return static_cast<Int32>(nodes_.size()) - 1;
}

Result<Int32> ExpressionBuilder::AddConstant(Float value, size_t position) {
    ExpressionNode node;
    node.kind = Kind::Constant;
    node.constant = value;
    node.position = static_cast<Int32>(position);
    return AddNode(node);
}

Result<Int32> ExpressionBuilder::AddVariable(Int32 variable, size_t position) {
    ExpressionNode node;
    node.kind = Kind::Variable;
    node.variable = variable;
    node.position = static_cast<Int32>(position);
    return AddNode(node);
}

Result<Int32> ExpressionBuilder::AddOperation(FormulaOperation operation, std::span<const Int32> operands,
                                              size_t position) {
    if (foldConstants_ && AreConstants(operands)) {
        const Float value = Fold(operation, operands);
        // Each is a single node, so they are the last ones.
        nodes_.resize(nodes_.size() - operands.size());
        return AddConstant(value, position);
    }
    ExpressionNode node;
    node.kind = Kind::Operation;
    node.operation = operation;
    node.operandCount = static_cast<UChar>(operands.size());
    std::copy(operands.begin(), operands.end(), node.operands);
    node.position = static_cast<Int32>(position);
    return AddNode(node);
}

bool ExpressionBuilder::AreConstants(std::span<const Int32> operands) const {
    return std::all_of(operands.begin(), operands.end(),
                       [this](Int32 operand) { return GetNode(operand).kind == Kind::Constant; });
}

Float ExpressionBuilder::Fold(FormulaOperation operation, std::span<const Int32> operands) const {
    Float values[3] = {};
    std::transform(operands.begin(), operands.end(), values,
                   [this](Int32 operand) { return GetNode(operand).constant; });
    return GetOperationInfo(operation).scalar(values[0], values[1], values[2]);
}

} // namespace norvi
