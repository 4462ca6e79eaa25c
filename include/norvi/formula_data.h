// A formula as a kernel sees it: the parsed form for one worker.
#pragma once

#include <atomic>

#include <norvi/host/formula.h>

namespace norvi {

/// State of a once-only initialisation that may fail. Whoever comes first runs it; others wait and share its
/// result. A failure stays until the object is replaced.
class InitOnceState {
  public:
    /// Runs `initialize` (giving a Result<void>) unless it has succeeded or failed before.
    /// @param yield called while another thread is at it.
    template <typename Initialize, typename Yield>
    Result<void> Run(Initialize&& initialize, Yield yield) {
        for (UInt32 state = state_.load(std::memory_order_acquire); state != Done;
             state = state_.load(std::memory_order_acquire)) {
            if (state == Failed)
                return failure_.Copy();
            if (state == NotDone && state_.compare_exchange_weak(state, Running, std::memory_order_acquire)) {
                failure_ = initialize();
                state_.store(failure_ ? Done : Failed, std::memory_order_release);
            } else if (state == Running) {
                yield();
            }
        }
        return OK;
    }

  private:
    static constexpr UInt32 NotDone = 0, Failed = 1, Running = 3, Done = 8;

    std::atomic<UInt32> state_{NotDone};
    Result<void> failure_;
};

/// One worker's form of one formula. A kernel evaluates it by writing `value` and `seed` and running `cache`;
/// since these are written during evaluation, each worker has an element of its own.
struct FormulaData {
    FormulaParserRef parser;
    FormulaParserCacheRef cache;
    std::shared_ptr<Float> value; ///< the formula variable "value"
    std::shared_ptr<Int32> seed;  ///< the formula variable "seed"
    InitOnceState initState;
};

} // namespace norvi
