// Global textures and their links to kernels.
#include <algorithm>

#include "core/byte_range.h"
#include "core/parallelprogram_cpu_impl.h"

namespace norvi {

namespace {

/// The texture that a table holds under `attr`, or an illegal-argument error with this message.
Result<TextureSamplerDataHelper*> FindTexture(const DataDictionary& table, const InternedId& attr,
                                              const char* message) {
    if (const Data* link = table.Find(attr))
        return link->GetAs<TextureSamplerDataHelper*>();
    return IllegalArgumentError(message);
}

} // namespace

Result<void> ParallelProgramCPUImpl::StoreTextureBindData(const InternedId& attr,
                                                          const TextureBindData& texBindData, Bool) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(entry, MakeSamplerEntry(texBindData));
        std::list<std::shared_ptr<SamplerEntry>> node{std::make_shared<SamplerEntry>(std::move(entry))};
        globalTextures_.Set(attr, &node.front()->helper);
        // An entry that was replaced in the table stays: kernels may be bound to it.
        textureStore_.splice(textureStore_.end(), node);
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::CreateTexture(const InternedId& attr,
                                                   TextureBindData& texBindData) noexcept {
    texBindData._data = nullptr;
    return StoreTextureBindData(attr, texBindData, false);
}

Result<void> ParallelProgramCPUImpl::UpdateTextureBindData(const InternedId& attr,
                                                           const TextureBindData& texBindData) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(texture, FindTexture(globalTextures_, attr, "texture sampler identifier not found"));
        const SamplingData& stored = texture->samplingData;
        if (texBindData._size != stored._size)
            return IllegalArgumentError(
                "Size of input TextureBindData differs from the size of the stored texture.");
        if (texBindData._data && stored._data)
            CopyBytes(texBindData._data, stored._data, stored._size);
        return OK;
    });
}

Result<Data> ParallelProgramCPUImpl::GetTextureData(const InternedId& attr, const Vec3<Int>&,
                                                    const Vec3<Int>&) noexcept {
    return CatchOutOfMemory([&]() -> Result<Data> {
        NORVI_TRY_VALUE(texture, FindTexture(globalTextures_, attr, "texture sampler identifier not found"));
        NORVI_TRY_VALUE(copy, CopySamplingData(texture->samplingData));
        return Data(std::move(copy));
    });
}

Result<void> ParallelProgramCPUImpl::CopyTextureBytes(const InternedId& sourceAttr,
                                                      const InternedId& targetAttr, Int bytesCount,
                                                      Int sourceBytesOffset, Int targetBytesOffset) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(source,
                        FindTexture(globalTextures_, sourceAttr, "source texture could not be found."));
        NORVI_TRY_VALUE(target,
                        FindTexture(globalTextures_, targetAttr, "target texture could not be found."));
        const SamplingData& from = source->samplingData;
        const SamplingData& to = target->samplingData;
        if (bytesCount < 0) {
            if (from._size != to._size)
                return IllegalArgumentError(
                    "If bytesCount is negative, both textures should be of the same size.");
            bytesCount = from._size;
            sourceBytesOffset = targetBytesOffset = 0;
        }
        if (!Fits(sourceBytesOffset, bytesCount, from._size))
            return IllegalArgumentError("bytesCount + sourceBytesOffset is larger than source texture size.");
        if (!Fits(targetBytesOffset, bytesCount, to._size))
            return IllegalArgumentError("bytesCount + targetBytesOffset is larger than target texture size.");
        CopyBytes(from._data + sourceBytesOffset, to._data + targetBytesOffset, bytesCount);
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::SetKernelTextureLink(const InternedId& attr, const Data& data) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(CheckActiveKernel());
        NORVI_TRY_VALUE(texture, data.GetAs<TextureSamplerDataHelper*>());
        if (!texture)
            return IllegalStateError("The texture link is null.");
        activeKernel_->textureBindings.Set(attr, data);
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::SetTextureToActiveKernelSameId(const InternedId& attr,
                                                                    Bool onlySetIfFound) noexcept {
    return SetTextureToActiveKernel(attr, attr, onlySetIfFound);
}

Result<void> ParallelProgramCPUImpl::SetTextureToActiveKernel(const InternedId& attr,
                                                              const InternedId& attrKernel, Bool) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(link, globalTextures_.Get(attr));
        return SetKernelTextureLink(attrKernel, link);
    });
}

Result<void> ParallelProgramCPUImpl::SwapTextures(const InternedId& textureOne,
                                                  const InternedId& textureTwo) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(one, FindTexture(globalTextures_, textureOne, "buffer one could not be found"));
        NORVI_TRY_VALUE(two, FindTexture(globalTextures_, textureTwo, "buffer two could not be found"));
        globalTextures_.Set(textureOne, two);
        globalTextures_.Set(textureTwo, one);
        return OK;
    });
}

Result<void> ParallelProgramCPUImpl::DeleteTexture(const InternedId& textureId, Bool) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        if (!HasTexture(textureId))
            return OK;
        NORVI_TRY_VALUE(texture, globalTextures_.GetAs<TextureSamplerDataHelper*>(textureId));
        for (auto& [kernelId, kernel] : kernels_) {
            BaseArray<Data> bound;
            for (const auto& [name, link] : kernel.textureBindings) {
                NORVI_TRY_VALUE(other, link.GetAs<TextureSamplerDataHelper*>());
                if (other == texture)
                    bound.push_back(name);
            }
            for (const Data& name : bound)
                kernel.textureBindings.Erase(name);
        }
        globalTextures_.Erase(textureId);
        // Kernel objects that the texture was written into still hold it.
        textureStore_.remove_if([&](const auto& entry) { return &entry->helper == texture; });
        return OK;
    });
}

Bool ParallelProgramCPUImpl::HasTexture(const InternedId& attr) noexcept {
    return globalTextures_.Contains(attr);
}

Result<void> ParallelProgramCPUImpl::UpdateTextures() {
    KernelData& data = *activeKernel_;
    for (const auto& [key, value] : data.textureBindings) {
        NORVI_TRY_VALUE(name, key.GetAs<InternedId>());
        NORVI_TRY_VALUE(texture, value.GetAs<TextureSamplerDataHelper*>());
        const auto owner = std::find_if(textureStore_.begin(), textureStore_.end(),
                                        [&](const auto& entry) { return &entry->helper == texture; });
        // The member keeps its value when the texture is deleted, so the texture has to outlive that. Links
        // to textures of other programs are their makers' to keep.
        auto& held = data.heldTextures[name];
        NORVI_TRY_VALUE(isSet, SetTexture(*data.kernel, name, *texture));
        if (isSet)
            held = owner == textureStore_.end() ? nullptr : *owner;
    }
    return OK;
}

// What out-of-core memory and the renderer need and the processor does not.

Result<void> ParallelProgramCPUImpl::SetTextureOutOfCoreDeleteOrder(const BaseArray<InternedId>&) noexcept {
    return OK;
}

Result<void> ParallelProgramCPUImpl::SetOutOfCoreState(Bool) noexcept {
    return OK;
}

Bool ParallelProgramCPUImpl::GetOutOfCoreState() noexcept {
    return false;
}

Result<DrawportTextureHandle> ParallelProgramCPUImpl::GetTextureSamplerHandle(const InternedId&) noexcept {
    return DrawportTextureHandle{};
}

Result<DrawportTextureHandle> ParallelProgramCPUImpl::GetTextureHandle(const InternedId&) noexcept {
    return DrawportTextureHandle{};
}

Result<DrawportTextureItemRef> ParallelProgramCPUImpl::GetTextureSamplerCacheRef(const InternedId&) noexcept {
    return DrawportTextureItemRef{};
}

Result<DrawportTextureItemRef> ParallelProgramCPUImpl::GetTextureCacheRef(const InternedId&) noexcept {
    return DrawportTextureItemRef{};
}

Result<void> ParallelProgramCPUImpl::AddTextureMemoryBarrier() noexcept {
    return OK;
}

void ParallelProgramCPUImpl::GetSupportReadWritePixelFormats(Bool& readWrite16bit,
                                                             Bool& readWrite8bit) noexcept {
    readWrite16bit = false;
    readWrite8bit = true;
}

} // namespace norvi
