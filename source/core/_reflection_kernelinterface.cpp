// The reflection record of the kernel interface.
#include <norvi/kernelinterface.h>

#include <norvi/host/module.h>

namespace norvi {

namespace {

const InterfaceRecord g_record{KernelInterface::InterfaceId,
                               "norvi::Kernel::KernelRef",
                               {
                                   {"Kernel",
                                    "Result<void>",
                                    {{"InGlobalInvocationID", "Vec3<UInt32>"},
                                     {"InLocalInvocationID", "Vec3<UInt32>"},
                                     {"InWorkGroupID", "Vec3<UInt32>"}}},
                                   {"Set", "Result<void>", {{"paramName", "CString"}, {"data", "void*"}}},
                                   {"Init", "Result<void>", {}},
                                   {"GetKernelParameterMap", "HashMap<CString, KernelParameter>", {}},
                                   {"GetKernelWorkGroupSize", "Vec3<UInt32>", {}},
                                   {"GetSingleThreadedThreshold", "Int", {}},
                                   {"GetGranularity", "Int", {}},
                               }};

InterfaceDeclaration g_declaration(g_norvi, g_record);

} // namespace

} // namespace norvi
