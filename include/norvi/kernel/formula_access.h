// How a kernel's body gets at its formulas: one value at a time, or a block of invocations together.
//
// Evaluating a formula costs far less for many values at once. A body that allows it is run over a block of
// invocations several times: each run ends at the first formula that has no results yet and leaves its input
// there, then that formula is evaluated for the whole block. The last run finds all results and completes.
#pragma once

#include <algorithm>

#include <norvi/kernel/calls.h>

namespace norvi::kernel {

/// Evaluates each formula where it stands.
struct DirectFormulas {
    template <int Index>
    bool Evaluate(FormulaData* formula, float& value, int& seed) {
        value = EvaluateFormula(formula, value, seed);
        return true;
    }
};

/// Inputs and results of `FormulaCount` formulas for a block of invocations.
template <int FormulaCount>
class FormulaBlock {
  public:
    static constexpr int Size = 256;

    /// The access of one invocation, number `invocation` of the block, in the run that gathers the inputs of
    /// formula `Run`. False: the invocation has to end here and will be run again.
    template <int Run>
    struct Access {
        template <int Index>
        [[gnu::always_inline]] inline bool Evaluate(FormulaData* formula, float& value, const int& seed) {
            if constexpr (Index < Run) {
                value = block.results_[Index][invocation];
                return true;
            } else {
                if constexpr (Index == Run) {
                    block.formula_ = formula;
                    block.inputs_[invocation] = value;
                    block.seeds_[invocation] = seed;
                }
                isUnfinished = true;
                return false;
            }
        }

        FormulaBlock& block;
        int invocation;
        bool isUnfinished = false;
    };

    void SetUnfinished(int invocation, bool isUnfinished) { isUnfinished_[invocation] = isUnfinished; }
    bool IsUnfinished(int invocation) const { return isUnfinished_[invocation] != 0; }
    bool AreAllUnfinished(int count) const {
        int unfinished = 0;
        for (int i = 0; i < count; ++i)
            unfinished += isUnfinished_[i];
        return unfinished == count;
    }

    /// Evaluates formula `Run` for the first `count` inputs.
    template <int Run>
    void EvaluateRun(int count) {
        if (formula_)
            formula_->cache->Evaluate(inputs_, seeds_, results_[Run], count);
        else
            std::copy_n(inputs_, count, results_[Run]);
        formula_ = nullptr;
    }

  private:
    FormulaData* formula_ = nullptr;
    // All elements are of one size, which is what lets the loops over them be vectorised together. Inputs of
    // invocations that do not come to a formula are evaluated too, and the results left alone.
    float inputs_[Size]{};
    int seeds_[Size]{};
    int isUnfinished_[Size];
    float results_[std::max(FormulaCount, 1)][Size];
};

} // namespace norvi::kernel
