// Runs of invocations of one kernel object.
#pragma once

#include <algorithm>

#include <norvi/kernelinterface.h>

#include "core/parallel_for.h"

namespace norvi {

/// How invocation numbers map to positions: i stands at (i mod x, i / x mod y, i / x / y).
struct Grid {
    UInt32 x;
    UInt32 y;

    static Grid Linear(UInt32 count) { return {std::max(count, 1u), 1}; }
};

/// A kernel object during a dispatch: run in ranges where it can, else invocation by invocation.
class DispatchedKernel {
  public:
    DispatchedKernel(KernelInterface* kernel, KernelRangeInterface* range)
        : kernel_(kernel), range_(GetLoopTuning().useRanges ? range : nullptr) {}

    /// A kernel entry without an object, which a failed copy leaves behind, is a null-pointer error; a kernel
    /// class that set no work group size is an illegal-state error.
    Result<void> Check() const;
    const KernelInterface* operator->() const { return kernel_; }

    /// Invocations `from` to `to` - 1 in order; stops at the first failure, or, with success, soon after
    /// `cancelled` is set.
    Result<void> Run(const Grid& grid, UInt32 from, UInt32 to, const std::atomic<bool>& cancelled) const {
        return range_ ? range_->KernelRange(from, to, grid.x, grid.y)
                      : RunOneByOne(grid, from, to, cancelled);
    }
    /// Invocations 0 to `count` - 1 on this thread.
    Result<void> RunAlone(const Grid& grid, UInt32 count) const;

  private:
    Result<void> RunOneByOne(const Grid& grid, UInt32 from, UInt32 to,
                             const std::atomic<bool>& cancelled) const;

    KernelInterface* kernel_;
    KernelRangeInterface* range_;
};

} // namespace norvi
