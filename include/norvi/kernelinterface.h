// Kernels on the processor: compiled objects of registered classes.
#pragma once

#include <unordered_map>

#include <norvi/host/datatype.h>
#include <norvi/host/object.h>

namespace norvi {

/// A member of a kernel object that callers can set by name.
struct KernelParameter {
    DataType type;
    void* address = nullptr; ///< of the member, inside this kernel object
};

/// Parameters by the name they have in the kernel source. Addresses of entries hold while the map grows.
using KernelParameterMap = std::unordered_map<CString, KernelParameter>;

/// A kernel. Its class is entered in the registry `net.norvi.registry.kernelclasses` under the name of its
/// source file. Derive from KernelBase, which provides all but `Kernel` and `Init`.
class KernelInterface : public ObjectInterface {
  public:
    static constexpr const char* InterfaceId = "net.norvi.interface.kernelinterface";

    /// One invocation. Called from many workers at once on one object: it may read the object's members and
    /// write through the buffers, textures and counters they point to, but not the members themselves.
    /// @param InGlobalInvocationID position in the grid
    /// @param InLocalInvocationID position inside the work group
    /// @param InWorkGroupID position of the work group
    virtual Result<void> Kernel(const Vec3<UInt32>& InGlobalInvocationID,
                                const Vec3<UInt32>& InLocalInvocationID,
                                const Vec3<UInt32>& InWorkGroupID) = 0;

    /// Sets the member `paramName`. For a member of pointer type `data` itself is stored; otherwise `data` is
    /// the address of a value of the member's type, which is assigned. An unknown name succeeds and changes
    /// nothing, so that one set of bindings can serve kernels with different parameters.
    virtual Result<void> Set(CString paramName, const void* data) noexcept = 0;

    /// Called once on every new object, copies included: enters the parameters and the work group size.
    virtual Result<void> Init() noexcept = 0;

    virtual const KernelParameterMap& GetKernelParameterMap() const noexcept = 0;
    /// At least 1 in each component after Init.
    virtual const Vec3<UInt32>& GetKernelWorkGroupSize() const noexcept = 0;
    /// Up to this number of invocations a one-dimensional dispatch stays on the caller's thread.
    virtual const Int& GetSingleThreadedThreshold() const noexcept = 0;
    /// Smallest number of invocations that a worker takes at a time.
    virtual const Int& GetGranularity() const noexcept = 0;
};

/// What a kernel may offer beside KernelInterface: running consecutive invocations in one call, which costs
/// far less than a call each and lets the compiler vectorise the body. For kernels whose
/// invocations do not depend on each other, results are those of calling `Kernel` for each. That another
/// worker's failure has ended a dispatch is noticed between ranges.
class KernelRangeInterface {
  public:
    static constexpr const char* InterfaceId = "net.norvi.interface.kernelrangeinterface";

    virtual ~KernelRangeInterface() = default;

    /// Runs invocations `first` to `last` - 1 of a grid of `gridX` x `gridY` x any depth; invocation i stands
    /// at (i mod gridX, i / gridX mod gridY, i / gridX / gridY). Stops at the first failure and returns it.
    virtual Result<void> KernelRange(UInt32 first, UInt32 last, UInt32 gridX, UInt32 gridY) = 0;
};

namespace Kernel {
using KernelRef = Ref<KernelInterface>;
}

} // namespace norvi
