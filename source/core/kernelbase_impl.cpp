// The class of what all kernels have in common. Kernel classes of other modules contain its code, which is
// inline; entered as a class of its own it is a kernel that does nothing.
#include <norvi/kernel/kernel_base.h>

#include <norvi/host/module.h>

namespace norvi {

namespace {

class KernelBaseImpl final : public KernelOf<KernelBaseImpl> {
  public:
    Result<void> Init() noexcept override { return OK; }
    Result<void> Kernel(const Vec3<UInt32>&, const Vec3<UInt32>&, const Vec3<UInt32>&) override { return OK; }
};

ClassDeclaration g_kernelBase(g_norvi, "net.norvi.kernelclasses.base", &MakeObject<KernelBaseImpl>,
                              registryid::KernelClasses);

} // namespace

} // namespace norvi
