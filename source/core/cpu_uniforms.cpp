// Uniforms and atomic counters, and UpdateUniforms, which writes all bindings into the kernel object.
#include <algorithm>

#include <norvi/host/registry.h>

#include "core/number_conversion.h"
#include "core/parallelprogram_cpu_impl.h"

namespace norvi {

namespace {

constexpr Int32 NoisePermutationTablePower = 10;

Failure TypeMismatch(const InternedId& name, const char* what, DataType given, DataType needed,
                     SourceLocation at = SourceLocation::Current()) {
    return IllegalStateError(
        Format("@ '@' is of type @, but the kernel's parameter is of type @", what, name, given, needed), at);
}

const KernelParameter* FindParameter(const KernelInterface& kernel, const InternedId& name) {
    const KernelParameterMap& parameters = kernel.GetKernelParameterMap();
    const auto found = parameters.find(name.ToString());
    return found == parameters.end() ? nullptr : &found->second;
}

/// Sets a value of exactly the member's type, or a number that fits it exactly. Anything else would be read
/// past its end, or as what it is not.
Result<void> SetUniformValue(KernelInterface& kernel, const InternedId& name, const Data& value) {
    const KernelParameter* parameter = FindParameter(kernel, name);
    if (!parameter)
        return OK;
    if (parameter->type->kind == DataTypeKind::Pointer)
        return TypeMismatch(name, "uniform", value.GetType(), parameter->type);
    if (value.GetType() == parameter->type)
        return kernel.Set(name.ToString(), value.GetAddress());
    if (IsNumber(value.GetType()) && IsNumber(parameter->type)) {
        if (const auto converted = ConvertNumberExactly(value.GetType(), value.GetAddress(), parameter->type))
            return kernel.Set(name.ToString(), converted->GetAddress());
        return IllegalStateError(
            Format("uniform '@' is @ of type @, which does not fit the kernel's parameter of "
                   "type @ exactly",
                   name, value, value.GetType(), parameter->type));
    }
    return TypeMismatch(name, "uniform", value.GetType(), parameter->type);
}

Result<void> SetBuffer(KernelInterface& kernel, const InternedId& name, DataType elementType,
                       const UntypedBlock& block) {
    const KernelParameter* parameter = FindParameter(kernel, name);
    if (!parameter)
        return OK;
    const DataType member = parameter->type;
    // A view of objects, such as the noise generators, is no place for a buffer's bytes.
    if (member->kind != DataTypeKind::Block || !member.GetElementType()->isTrivial ||
        member.GetElementType()->size != elementType->size)
        return TypeMismatch(name, "buffer with elements", elementType, member);
    return kernel.Set(name.ToString(), &block);
}

} // namespace

Result<Bool> SetTexture(KernelInterface& kernel, const InternedId& name, TextureSamplerDataHelper& texture) {
    const KernelParameter* parameter = FindParameter(kernel, name);
    if (!parameter)
        return false;
    if (!AcceptsTexture(parameter->type, texture))
        return IllegalStateError(Format(
            "texture '@' is of another kind than the kernel's parameter of type @", name, parameter->type));
    NORVI_TRY(kernel.Set(name.ToString(), &texture));
    return true;
}

Result<void> SetTypedParameter(KernelInterface& kernel, const InternedId& name, DataType type,
                               const void* data) {
    const KernelParameter* parameter = FindParameter(kernel, name);
    if (parameter && parameter->type != type)
        return TypeMismatch(name, "what is bound to", type, parameter->type);
    return kernel.Set(name.ToString(), data);
}

Result<void> ParallelProgramCPUImpl::AddAtomicCounter(const InternedId& attr, const Data&) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        AtomicUInt32& counter = atomicStore_.emplace_back(0u);
        globalAtomics_.Set(attr, &counter);
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::SetAtomicCounterToActiveKernel(const InternedId& attr) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(link, globalAtomics_.Get(attr));
        NORVI_TRY(CheckActiveKernel());
        NORVI_TRY(link.GetAs<AtomicUInt32*>());
        activeKernel_->atomicBindings.Set(attr, link);
        return OK;
    });
}

Result<AtomicUInt32*> ParallelProgramCPUImpl::FindAtomicCounter(const InternedId& attr) const {
    const Data* link = globalAtomics_.Find(attr);
    if (!link)
        return IllegalArgumentError("atomic identifier not found");
    return link->GetAs<AtomicUInt32*>();
}

Result<void> ParallelProgramCPUImpl::SetAtomicCounter(const InternedId& attr, UInt32 value) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(counter, FindAtomicCounter(attr));
        counter->exchange(value);
        return OK;
    });
}

Result<UInt32> ParallelProgramCPUImpl::GetAtomicCounter(const InternedId& attr) noexcept {
    return CatchOutOfMemory([&]() -> Result<UInt32> {
        NORVI_TRY_VALUE(counter, FindAtomicCounter(attr));
        return counter->load();
    });
}

Result<void> ParallelProgramCPUImpl::SetUniform(const InternedId& attr, const Data& data) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(CheckActiveKernel());
        activeKernel_->uniforms.Set(attr, data);
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::UpdateUniforms() noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(CheckActiveKernel());
        if (!activeKernel_->kernel)
            return NullPtrError("the active kernel has no kernel object");
        NORVI_TRY(UpdatePlainUniforms());
        NORVI_TRY(UpdateBuffers());
        NORVI_TRY(UpdateTextures());
        NORVI_TRY(UpdateAtomicCounters());
        NORVI_TRY(UpdateNoise());
        return UpdateColorConversion();
    });
}

Result<void> ParallelProgramCPUImpl::UpdatePlainUniforms() {
    for (const auto& [key, value] : activeKernel_->uniforms) {
        NORVI_TRY_VALUE(name, key.GetAs<InternedId>());
        NORVI_TRY(SetUniformValue(*activeKernel_->kernel, name, value));
    }
    return OK;
}

Result<void> ParallelProgramCPUImpl::UpdateBuffers() {
    KernelData& data = *activeKernel_;
    // Exchanged only when it is whole: what the kernel object points to must stay in the list.
    BaseArray<BoundBuffer> bound;
    bound.reserve(static_cast<std::size_t>(data.bufferBindings.GetCount()));
    for (const auto& [key, value] : data.bufferBindings) {
        NORVI_TRY_VALUE(name, key.GetAs<InternedId>());
        NORVI_TRY_VALUE(array, value.GetAs<ArrayRef*>());
        bound.push_back({name, array, {}});
    }
    data.boundBuffers = std::move(bound);
    return RefreshBuffers();
}

/// Writes those buffers into the kernel object whose memory has changed since it was last done, and gives
/// buffers that a caller has read back, and still holds, memory of their own. Done before each dispatch, so
/// that a kernel never works on memory that is gone or that shows through in what was read.
Result<void> ParallelProgramCPUImpl::RefreshBuffers() {
    for (BoundBuffer& bound : activeKernel_->boundBuffers) {
        if (!*bound.array || (*bound.array)->GetCount() == 0)
            return IllegalStateError("stored data block has size 0");
        NORVI_TRY_VALUE(array, bound.array->MakeWritable());
        const UntypedBlock block = array->GetBlock(0);
        if (block.data == bound.block.data && block.count == bound.block.count)
            continue;
        NORVI_TRY(SetBuffer(*activeKernel_->kernel, bound.name, array->GetType(), block));
        bound.block = block;
    }
    return OK;
}

Result<void> ParallelProgramCPUImpl::UpdateAtomicCounters() {
    for (const auto& [key, value] : activeKernel_->atomicBindings) {
        NORVI_TRY_VALUE(name, key.GetAs<InternedId>());
        NORVI_TRY_VALUE(counter, value.GetAs<AtomicUInt32*>());
        NORVI_TRY(SetTypedParameter(*activeKernel_->kernel, name, DataType::Of<AtomicUInt32*>(), counter));
    }
    return OK;
}

Result<void> ParallelProgramCPUImpl::UpdateNoise() {
    KernelData& data = *activeKernel_;
    // The kernel object points to the former ones until it gets these.
    BaseArray<NoiseRef> noises;
    // A second Init appends the ids again; only the first of each are used.
    const auto known = std::min<std::size_t>(NoiseParameterCount, noiseModeIds_.size());
    for (std::size_t n = 0; n < known; ++n) {
        // A missing mode ends the list; a mode without a seed is a fault of the caller.
        if (!data.uniforms.Contains(noiseModeIds_[n]))
            break;
        NORVI_TRY_VALUE(mode, data.uniforms.GetAs<Int32>(noiseModeIds_[n]));
        NORVI_TRY_VALUE(seed, data.uniforms.GetAs<Int32>(noiseSeedIds_[n]));
        NORVI_TRY(AppendNoise(noises, mode, seed));
    }
    if (noises.empty())
        return OK;
    std::swap(data.noiseObjects, noises);
    data.noiseBlock = Block<NoiseRef>(data.noiseObjects.data(), static_cast<Int>(data.noiseObjects.size()));
    return SetTypedParameter(*data.kernel, noiseDataId_, DataType::Of<Block<NoiseRef>>(), &data.noiseBlock);
}

Result<void> ParallelProgramCPUImpl::AppendNoise(BaseArray<NoiseRef>& noises, Int32 mode, Int32 seed) {
    const char* classId = NoiseClassIdOfMode(static_cast<UInt32>(mode));
    NORVI_TRY_VALUE(noise, NoiseRef::Create(Registry::Get(registryid::NoiseClasses).FindEntryValue(classId)));
    NORVI_TRY(noise->Init(seed, NoisePermutationTablePower, DataDictionary()));
    noises.push_back(std::move(noise));
    return OK;
}

} // namespace norvi
