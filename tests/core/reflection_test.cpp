// The contracts: which operations there are, in which order, with which parameter names.
#include <cstring>

#include <norvi/host/module.h>
#include <norvi/kernelinterface.h>
#include <norvi/parallelprogram.h>

#include "support/results.h"

namespace norvi {
namespace {

/// Offset of a virtual operation in its class's table, up to a constant. A pointer to a virtual member begins
/// with it.
template <typename Member>
std::ptrdiff_t TableOffset(Member member) {
    std::ptrdiff_t offset;
    static_assert(sizeof member == 2 * sizeof offset);
    std::memcpy(&offset, &member, sizeof offset);
    return offset;
}

struct OperationRow {
    std::ptrdiff_t tableOffset;
    const char* signature;
};

using P = ParallelProgramInterface;
using AttrOnly = Result<Data> (P::*)(const InternedId&);
using Range = Result<Data> (P::*)(const InternedId&, Int, Int);
using StoreData = Result<void> (P::*)(const InternedId&, const Data&);
using StoreUntyped = Result<void> (P::*)(const InternedId&, DataType, UntypedArray&&);

#define ROW(name, parameters)                                                                                \
    { TableOffset(&P::name), "" #name "(" parameters ")" }
#define OVERLOAD(type, name, parameters)                                                                     \
    { TableOffset(static_cast<type>(&P::name)), #name "(" parameters ")" }
const OperationRow programOperations[] = {
    ROW(Init, "resourcePath, context, deviceIndex, createOffscreenContext"),
    ROW(Execute, "wait"),
    ROW(AddKernel, "kernelId, file, wait, extraData"),
    ROW(CopyKernel, "sourceKernelId, newKernelId, wait, extraData"),
    ROW(WaitForKernelCompile, ""),
    ROW(WaitForKernelCompileError, ""),
    ROW(HasKernel, "kernelId"),
    ROW(GetProgramCount, "programName"),
    ROW(SetActiveKernel, "kernelId"),
    ROW(GetActiveKernelId, ""),
    ROW(SetBufferToActiveKernelSameId, "attr"),
    ROW(SetBufferToActiveKernel, "attr, attrKernel"),
    ROW(SetGlobalBufferLink, "attr, data"),
    ROW(GetGlobalBufferLink, "attr"),
    OVERLOAD(AttrOnly, GetGlobalBufferData, "attr"),
    OVERLOAD(Range, GetGlobalBufferData, "attr, offset, count"),
    ROW(SetKernelBufferLink, "attr, data"),
    ROW(GetKernelBufferLink, "attr"),
    ROW(GetKernelBufferData, "attr"),
    ROW(CreateUniformBuffer, "attr, dataType, count"),
    ROW(ResizeUniformBuffer, "attr, count, forceResize"),
    OVERLOAD(StoreData, StoreUniformBufferData, "attr, data"),
    OVERLOAD(StoreUntyped, StoreUniformBufferData, "attr, dataType, data"),
    ROW(UpdateUniformBufferData, "attr, offset, data"),
    ROW(CopyBufferData, "sourceAttr, targetAttr, count, sourceOffset, targetOffset"),
    ROW(CopyBufferDataBytes, "sourceAttr, targetAttr, bytesCount, sourceBytesOffset, targetBytesOffset"),
    ROW(SetTextureOutOfCoreDeleteOrder, "deleteOrder"),
    ROW(SetOutOfCoreState, "useOutOfCore"),
    ROW(GetOutOfCoreState, ""),
    ROW(SetTextureToActiveKernelSameId, "attr, onlySetIfFound"),
    ROW(SetTextureToActiveKernel, "attr, attrKernel, onlySetIfFound"),
    ROW(StoreTextureBindData, "attr, texBindData, outOfCore"),
    ROW(GetTextureSamplerHandle, "attr"),
    ROW(GetTextureHandle, "attr"),
    ROW(GetTextureSamplerCacheRef, "attr"),
    ROW(GetTextureCacheRef, "attr"),
    ROW(CreateTexture, "attr, texBindData"),
    ROW(UpdateTextureBindData, "attr, texBindData"),
    ROW(SetKernelTextureLink, "attr, data"),
    ROW(GetTextureData, "attr, regionMin, regionMax"),
    ROW(CopyTextureBytes, "sourceAttr, targetAttr, bytesCount, sourceBytesOffset, targetBytesOffset"),
    ROW(AddAtomicCounter, "attr, data"),
    ROW(SetAtomicCounterToActiveKernel, "attr"),
    ROW(SetAtomicCounter, "attr, value"),
    ROW(GetAtomicCounter, "attr"),
    ROW(SetUniform, "attr, data"),
    ROW(SetFormula, "attr, data"),
    ROW(SwapBuffers, "bufferOne, bufferTwo"),
    ROW(SwapTextures, "textureOne, textureTwo"),
    ROW(DeleteTexture, "textureId, softDelete"),
    ROW(DeleteUniformBuffer, "bufferId"),
    ROW(UpdateUniforms, ""),
    ROW(DispatchKernel, "countX, countY, countZ, disableBarrier"),
    ROW(DispatchIndirectKernel, "buffer, offset, disableBarrier"),
    ROW(AddMemoryBarrier, ""),
    ROW(AddTextureMemoryBarrier, ""),
    ROW(CheckActiveKernelForUpdatedShaders, ""),
    ROW(UpdateDrawportContext, "newDrawportContext"),
    ROW(Reset, ""),
    ROW(ReloadKernels, ""),
    ROW(GetMemoryInformation, "freeMemory, totalMemory"),
    ROW(GetSupportReadWritePixelFormats, "readWrite16bit, readWrite8bit"),
    ROW(GetAvailableAndTotalVRAMBudget, ""),
    ROW(HasTexture, "attr"),
    ROW(HasBuffer, "attr"),
    ROW(SetRenderSpace, "renderingSpace"),
    ROW(UpdateColorConversionActiveKernel, "inputSpace, outputSpace, functionName, functionNameInverse"),
};
static_assert(std::size(programOperations) == 67);

const OperationRow kernelOperations[] = {
    {TableOffset(&KernelInterface::Kernel),
     "Kernel(InGlobalInvocationID, InLocalInvocationID, InWorkGroupID)"},
    {TableOffset(&KernelInterface::Set), "Set(paramName, data)"},
    {TableOffset(&KernelInterface::Init), "Init()"},
    {TableOffset(&KernelInterface::GetKernelParameterMap), "GetKernelParameterMap()"},
    {TableOffset(&KernelInterface::GetKernelWorkGroupSize), "GetKernelWorkGroupSize()"},
    {TableOffset(&KernelInterface::GetSingleThreadedThreshold), "GetSingleThreadedThreshold()"},
    {TableOffset(&KernelInterface::GetGranularity), "GetGranularity()"},
};

String SignatureOf(const OperationRecord& operation) {
    String text = operation.name;
    const char* separator = "(";
    for (const ParameterRecord& parameter : operation.parameters) {
        text += separator;
        text += parameter.name;
        separator = ", ";
    }
    return text + (operation.parameters.empty() ? "()" : ")");
}

/// Compares rows with the record that the loaded module publishes, and with the class's table.
template <std::size_t count>
void ExpectContract(const OperationRow (&rows)[count], const char* id, const char* referenceType) {
    ModuleLoader loader;
    ASSERT_OK(loader.Load(NORVI_MODULE_DIR "/norvi.so"));
    const InterfaceRecord* record = nullptr;
    for (Declaration* entry = loader.GetModules().at(0).record->GetFirst(); entry; entry = entry->GetNext())
        if (entry->GetKind() == Declaration::Kind::Interface && String(entry->GetId()) == id)
            record = &static_cast<InterfaceDeclaration*>(entry)->GetRecord();
    ASSERT_NE(record, nullptr);
    EXPECT_STREQ(record->referenceType, referenceType);
    ASSERT_EQ(record->operations.size(), count);
    for (std::size_t i = 0; i < count; ++i) {
        EXPECT_EQ(SignatureOf(record->operations[i]), rows[i].signature);
        EXPECT_EQ(rows[i].tableOffset - rows[0].tableOffset, static_cast<std::ptrdiff_t>(i * sizeof(void*)))
            << rows[i].signature;
    }
}

TEST(Reflection, ProgramOperationsStandInTheOrderOfTheContract) {
    ExpectContract(programOperations, "net.norvi.drawportmisc.interface.parallelprogram",
                   "norvi::ParallelProgramRef");
}

TEST(Reflection, KernelOperationsStandInTheOrderOfTheContract) {
    ExpectContract(kernelOperations, "net.norvi.interface.kernelinterface", "norvi::Kernel::KernelRef");
}

} // namespace
} // namespace norvi
