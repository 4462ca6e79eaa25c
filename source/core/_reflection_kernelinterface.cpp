// The reflection record of the kernel interface.
#include <norvi/kernelinterface.h>

#include <norvi/host/module.h>

namespace norvi {

namespace {

const InterfaceRecord g_kernelRecord{
    KernelInterface::InterfaceId,
    "norvi::Kernel::KernelRef",
    {
        {"Kernel",
         "Result<void>",
         {{"InGlobalInvocationID", "const Vec3<UInt32>&"},
          {"InLocalInvocationID", "const Vec3<UInt32>&"},
          {"InWorkGroupID", "const Vec3<UInt32>&"}}},
        {"Set", "Result<void>", {{"paramName", "CString"}, {"data", "const void*"}}},
        {"Init", "Result<void>", {}},
        {"GetKernelParameterMap", "const HashMap<CString, KernelParameter>&", {}},
        {"GetKernelWorkGroupSize", "const Vec3<UInt32>&", {}},
        {"GetSingleThreadedThreshold", "const Int&", {}},
        {"GetGranularity", "const Int&", {}},
    }};

InterfaceDeclaration g_kernelDeclaration(g_norvi, g_kernelRecord);

} // namespace

} // namespace norvi
