// Builds the syntax tree of a formula from its leaves up.
#pragma once

#include <span>

#include <norvi/host/formula.h>

namespace norvi {

/// Operands must be added before their operation, the last of them immediately before it: the tree then
/// stands in evaluation order, and constants that were folded leave no nodes behind.
class ExpressionBuilder {
  public:
    /// @param formula text of the formula, for error messages.
    ExpressionBuilder(std::string_view formula, bool foldConstants, size_t nodeLimit)
        : formula_(formula), foldConstants_(foldConstants), nodeLimit_(nodeLimit) {}

    /// Each returns the index of the new node, or fails if the tree has too many.
    Result<Int32> AddConstant(Float value, size_t position);
    Result<Int32> AddVariable(Int32 variable, size_t position);
    Result<Int32> AddOperation(FormulaOperation operation, std::span<const Int32> operands, size_t position);

    const ExpressionNode& GetNode(Int32 index) const { return nodes_[static_cast<size_t>(index)]; }
    BaseArray<ExpressionNode> TakeNodes() { return std::move(nodes_); }

  private:
    Result<Int32> AddNode(const ExpressionNode& node);
    bool AreConstants(std::span<const Int32> operands) const;
    Float Fold(FormulaOperation operation, std::span<const Int32> operands) const;

    std::string_view formula_;
    bool foldConstants_;
    size_t nodeLimit_;
    BaseArray<ExpressionNode> nodes_;
};

} // namespace norvi
