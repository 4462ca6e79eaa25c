// Running the active kernel over a grid. The path for kernels with formulas stands in cpu_formulas.cpp.
#include <algorithm>

#include "core/dispatch_kernel.h"
#include "core/parallelprogram_cpu_impl.h"

namespace norvi {

Result<void> ParallelProgramCPUImpl::DispatchKernel(UInt32 countX, UInt32 countY, UInt32 countZ,
                                                    Bool) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(CheckActiveKernel());
        if (countY == 1 && countZ == 1)
            return Dispatch1D(countX);
        return Dispatch3D({countX, countY, countZ});
    });
}

Result<void> ParallelProgramCPUImpl::DispatchIndirectKernel(const InternedId& buffer, UInt32 offset,
                                                            Bool) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(CheckActiveKernel());
        NORVI_TRY_VALUE(array, FindBuffer(buffer, "buffer for update could not be found"));
        if ((*array)->GetType() != DataType::Of<Vec3<UInt32>>())
            return IllegalArgumentError("buffer is not of the correct type for dispatch indirect");
        if (offset >= (*array)->GetCount())
            return IllegalArgumentError("dispatch offset out of buffer range");
        const auto groups = *static_cast<const Vec3<UInt32>*>((*array)->GetElement(offset));
        if (groups.x == 0 || groups.y == 0 || groups.z == 0)
            return OK;
        // Counts are compared as signed values: one of the upper half counts as 1.
        const auto atLeastOne = [](UInt32 count) { return std::max(static_cast<Int32>(count), 1); };
        NORVI_TRY(DispatchedKernel(activeKernel_->kernel.get(), activeKernel_->range).Check());
        const Vec3<UInt32>& g = activeKernel_->kernel->GetKernelWorkGroupSize();
        const Vec3<UInt32> counts{atLeastOne(groups.x) * g.x, atLeastOne(groups.y) * g.y,
                                  atLeastOne(groups.z) * g.z};
        if (counts.y == 1 && counts.z == 1)
            return Dispatch1D(counts.x);
        return Dispatch3D(counts);
    });
}

Result<void> ParallelProgramCPUImpl::Dispatch1D(UInt32 count) {
    NORVI_TRY(RefreshBuffers());
    if (!activeKernel_->formulas.IsEmpty())
        return DispatchFormulas(count);
    return DispatchPlain(count);
}

Result<void> ParallelProgramCPUImpl::DispatchPlain(UInt32 count) {
    const DispatchedKernel kernel(activeKernel_->kernel.get(), activeKernel_->range);
    NORVI_TRY(kernel.Check());
    const Grid grid = Grid::Linear(count);
    if (kernel->GetSingleThreadedThreshold() >= Int{count})
        return kernel.RunAlone(grid, count);
    const auto body = [&](Int, UInt32 from, UInt32 to, const std::atomic<bool>& cancelled) {
        return kernel.Run(grid, from, to, cancelled);
    };
    return ParallelFor(0, count, kernel->GetGranularity(), MakeLoopBody(body));
}

Result<void> ParallelProgramCPUImpl::Dispatch3D(const Vec3<UInt32>& counts) {
    constexpr Int granularity = 64;
    NORVI_TRY(RefreshBuffers());
    NORVI_TRY(ForgetFormulas());
    const DispatchedKernel kernel(activeKernel_->kernel.get(), activeKernel_->range);
    NORVI_TRY(kernel.Check());
    // A count below the group size is raised to it: kernels check their own bounds. The total wraps in 32
    // bits.
    const Vec3<UInt32>& g = kernel->GetKernelWorkGroupSize();
    const Grid grid{std::max(counts.x, g.x), std::max(counts.y, g.y)};
    const UInt32 total = grid.x * grid.y * std::max(counts.z, g.z);
    const auto body = [&](Int, UInt32 from, UInt32 to, const std::atomic<bool>& cancelled) {
        return kernel.Run(grid, from, to, cancelled);
    };
    return ParallelFor(0, total, granularity, MakeLoopBody(body));
}

} // namespace norvi
