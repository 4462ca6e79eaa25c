#include "core/dispatch_kernel.h"

namespace norvi {

namespace {

/// One coordinate of the current invocation, with its parts inside and across work groups: stepped, since
/// dividing for each invocation costs more than many kernels do.
struct Coordinate {
    UInt32 global;
    UInt32 local;
    UInt32 group;

    Coordinate(UInt32 position, UInt32 groupSize)
        : global(position), local(position % groupSize), group(position / groupSize) {}

    void Step(UInt32 groupSize) {
        ++global;
        if (++local == groupSize) {
            local = 0;
            ++group;
        }
    }
};

} // namespace

Result<void> DispatchedKernel::Check() const {
    if (!kernel_)
        return NullPtrError("the active kernel has no kernel object");
    const Vec3<UInt32>& group = kernel_->GetKernelWorkGroupSize();
    if (group.x == 0 || group.y == 0 || group.z == 0)
        return IllegalStateError("the active kernel has a work group size of 0");
    return OK;
}

Result<void> DispatchedKernel::RunAlone(const Grid& grid, UInt32 count) const {
    const std::atomic<bool> never{false};
    if (count == 0)
        return OK;
    return Run(grid, 0, count, never);
}

Result<void> DispatchedKernel::RunOneByOne(const Grid& grid, UInt32 from, UInt32 to,
                                           const std::atomic<bool>& cancelled) const {
    const Vec3<UInt32> size = kernel_->GetKernelWorkGroupSize();
    Coordinate x(from % grid.x, size.x);
    Coordinate y(from / grid.x % grid.y, size.y);
    Coordinate z(from / grid.x / grid.y, size.z);
    for (UInt32 i = from; i != to; ++i) {
        if (cancelled.load(std::memory_order_relaxed))
            return OK;
        NORVI_TRY(kernel_->Kernel({x.global, y.global, z.global}, {x.local, y.local, z.local},
                                  {x.group, y.group, z.group}));
        x.Step(size.x);
        if (x.global == grid.x) {
            x = Coordinate(0, size.x);
            y.Step(size.y);
        }
        if (y.global == grid.y) {
            y = Coordinate(0, size.y);
            z.Step(size.z);
        }
    }
    return OK;
}

} // namespace norvi
