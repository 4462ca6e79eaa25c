// Life of the program and its kernel table. The other operations stand in cpu_buffers.cpp, cpu_uniforms.cpp,
// cpu_dispatch.cpp, cpu_formulas.cpp, cpu_textures.cpp and cpu_color.cpp.
#include "core/parallelprogram_cpu_impl.h"

#include <algorithm>

#include <norvi/host/module.h>

namespace norvi {

namespace {

RegistryDeclaration g_kernelClasses(g_norvi, registryid::KernelClasses);

Result<void> AppendInterned(BaseArray<InternedId>& ids, const char* pattern, Int index) {
    NORVI_TRY_VALUE(id, InternedId::Create(Format(pattern, index)));
    ids.push_back(id);
    return OK;
}

} // namespace

KernelRangeInterface* FindRangeInterface(KernelInterface& kernel) {
    return static_cast<KernelRangeInterface*>(kernel.QueryInterface(KernelRangeInterface::InterfaceId));
}

ParallelProgramCPUImpl::~ParallelProgramCPUImpl() = default;

void* ParallelProgramCPUImpl::QueryInterface(const Id& interfaceId) {
    return interfaceId == InterfaceId ? static_cast<ParallelProgramInterface*>(this) : nullptr;
}

Result<void> ParallelProgramCPUImpl::Init(const Url&, const DrawportContextRef&, Int32, Bool) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(noiseData, InternedId::Create("noiseData"));
        noiseDataId_ = noiseData;
        // An Init after another one, or after one that failed halfway, must not shift seeds against modes.
        noiseSeedIds_.clear();
        noiseModeIds_.clear();
        for (Int index = 0; index < NoiseParameterCount; ++index) {
            NORVI_TRY(AppendInterned(noiseSeedIds_, "noiseSeed_@", index));
            NORVI_TRY(AppendInterned(noiseModeIds_, "noiseMode_@", index));
        }
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::Execute(Bool) noexcept {
    return OK;
}

Result<void> ParallelProgramCPUImpl::CreateKernelObject(KernelData& data, const Class* kernelClass) {
    NORVI_TRY_VALUE(kernel, Kernel::KernelRef::Create(kernelClass));
    data.kernel = kernel;
    NORVI_TRY(data.kernel->Init());
    data.range = FindRangeInterface(*data.kernel);
    return OK;
}

Result<void> ParallelProgramCPUImpl::AddKernel(const InternedId& kernelId, const Url& file, Bool,
                                               const DataDictionary&) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        const auto [entry, isNew] = kernels_.try_emplace(kernelId);
        if (!isNew)
            return IllegalArgumentError("Kernel id is already used");
        KernelData& data = entry->second;
        const auto fill = [&]() -> Result<void> {
            data.file = file;
            data.name = file.GetName();
            const Class* kernelClass = g_kernelClasses.Get().FindEntryValue(data.name);
            if (!kernelClass)
                return NullPtrError(Format("no kernel class '@' is registered", data.name));
            return CreateKernelObject(data, kernelClass);
        };
        if (auto filled = CatchOutOfMemory(fill); !filled) {
            kernels_.erase(entry);
            return filled;
        }
        data.id = kernelId;
        activeKernel_ = &data;
        activeKernelId_ = kernelId;
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::CopyKernel(const InternedId& sourceKernelId,
                                                const InternedId& newKernelId, Bool,
                                                const DataDictionary& extraData) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        if (sourceKernelId == newKernelId)
            return OK;
        const auto found = kernels_.find(sourceKernelId);
        if (found == kernels_.end())
            return IllegalArgumentError("source kernel could not be found");
        const KernelData& source = found->second;
        const auto [entry, isNew] = kernels_.try_emplace(newKernelId);
        if (!isNew)
            return IllegalArgumentError("Kernel id is already used");
        KernelData& copy = entry->second;
        copy.id = source.id;
        copy.file = source.file;
        copy.bufferBindings = source.bufferBindings;
        copy.atomicBindings = source.atomicBindings;
        copy.uniforms = source.uniforms;
        copy.textureBindings = source.textureBindings;
        copy.formulas = source.formulas;
        // Unlike AddKernel, a failure leaves the entry in the table.
        NORVI_TRY(CreateKernelObject(copy, source.kernel ? source.kernel->GetClass() : nullptr));
        copy.extra = extraData.IsEmpty() ? source.extra : extraData;
        return OK;
    });
}

void ParallelProgramCPUImpl::WaitForKernelCompile() noexcept {}

Result<void> ParallelProgramCPUImpl::WaitForKernelCompileError() noexcept {
    return OK;
}

Bool ParallelProgramCPUImpl::HasKernel(const InternedId& kernelId) noexcept {
    return kernels_.contains(kernelId);
}

Int ParallelProgramCPUImpl::GetProgramCount(const String& programName) noexcept {
    if (programName.empty())
        return 0;
    return std::count_if(kernels_.begin(), kernels_.end(),
                         [&](const auto& entry) { return entry.second.name == programName; });
}

void ParallelProgramCPUImpl::SetActiveKernel(const InternedId& kernelId) noexcept {
    if (kernelId == activeKernelId_)
        return;
    if (const auto found = kernels_.find(kernelId); found != kernels_.end()) {
        activeKernel_ = &found->second;
        activeKernelId_ = kernelId;
    }
}

InternedId ParallelProgramCPUImpl::GetActiveKernelId() noexcept {
    return activeKernelId_;
}

Result<void> ParallelProgramCPUImpl::CheckActiveKernel() const {
    if (!activeKernel_)
        return IllegalStateError("no active kernel set");
    return OK;
}

Result<void> ParallelProgramCPUImpl::Reset() noexcept {
    kernels_.clear();
    activeKernel_ = nullptr;
    activeKernelId_ = {};
    textureStore_.clear();
    bufferStore_.clear();
    globalBuffers_.Clear();
    globalAtomics_.Clear();
    globalTextures_.Clear();
    return OK;
}

// What a card needs and the processor does not.

Result<void> ParallelProgramCPUImpl::AddMemoryBarrier() noexcept {
    return OK;
}

Result<void> ParallelProgramCPUImpl::CheckActiveKernelForUpdatedShaders() noexcept {
    return OK;
}

Result<void> ParallelProgramCPUImpl::UpdateDrawportContext(const DrawportContextRef&) noexcept {
    return OK;
}

void ParallelProgramCPUImpl::ReloadKernels() noexcept {}

Bool ParallelProgramCPUImpl::GetMemoryInformation(Int& freeMemory, Int& totalMemory) noexcept {
    freeMemory = -1;
    totalMemory = -1;
    return true;
}

std::pair<Int, Int> ParallelProgramCPUImpl::GetAvailableAndTotalVRAMBudget() noexcept {
    constexpr Int unlimited = Int{1} << 40;
    return {unlimited, unlimited};
}

} // namespace norvi
