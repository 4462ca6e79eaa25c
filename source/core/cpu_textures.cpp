// Textures and colour conversion, which are not implemented yet, and the operations about textures that do
// nothing on the processor.
#include "core/parallelprogram_cpu_impl.h"

namespace norvi {

namespace {

Failure NotImplemented(const char* operation, SourceLocation at = SourceLocation::Current()) {
    return CatchOutOfMemory([&] {
        return FunctionNotImplementedError(
            Format("@ is not implemented: the program on the processor has no textures yet", operation), at);
    });
}

} // namespace

Result<void> ParallelProgramCPUImpl::SetTextureToActiveKernelSameId(const InternedId&, Bool) noexcept {
    return NotImplemented("SetTextureToActiveKernelSameId");
}

Result<void> ParallelProgramCPUImpl::SetTextureToActiveKernel(const InternedId&, const InternedId&,
                                                              Bool) noexcept {
    return NotImplemented("SetTextureToActiveKernel");
}

Result<void> ParallelProgramCPUImpl::StoreTextureBindData(const InternedId&, const TextureBindData&,
                                                          Bool) noexcept {
    return NotImplemented("StoreTextureBindData");
}

Result<void> ParallelProgramCPUImpl::CreateTexture(const InternedId&, TextureBindData&) noexcept {
    return NotImplemented("CreateTexture");
}

Result<void> ParallelProgramCPUImpl::UpdateTextureBindData(const InternedId&,
                                                           const TextureBindData&) noexcept {
    return NotImplemented("UpdateTextureBindData");
}

Result<void> ParallelProgramCPUImpl::SetKernelTextureLink(const InternedId&, const Data&) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(CheckActiveKernel());
        return NotImplemented("SetKernelTextureLink");
    });
}

Result<Data> ParallelProgramCPUImpl::GetTextureData(const InternedId&, const Vec3<Int>&,
                                                    const Vec3<Int>&) noexcept {
    return NotImplemented("GetTextureData");
}

Result<void> ParallelProgramCPUImpl::CopyTextureBytes(const InternedId&, const InternedId&, Int, Int,
                                                      Int) noexcept {
    return NotImplemented("CopyTextureBytes");
}

Result<void> ParallelProgramCPUImpl::SwapTextures(const InternedId&, const InternedId&) noexcept {
    return NotImplemented("SwapTextures");
}

Result<void> ParallelProgramCPUImpl::DeleteTexture(const InternedId&, Bool) noexcept {
    return NotImplemented("DeleteTexture");
}

Bool ParallelProgramCPUImpl::HasTexture(const InternedId&) noexcept {
    return false;
}

void ParallelProgramCPUImpl::SetRenderSpace(const ColorProfile& renderingSpace) noexcept {
    // Without memory for its name the space stays as it was: the operation has no result to say so with.
    const auto replaced = CatchOutOfMemory([&]() -> Result<void> {
        renderSpace_ = renderingSpace;
        return OK;
    });
    static_cast<void>(replaced);
}

Result<void> ParallelProgramCPUImpl::UpdateColorConversionActiveKernel(const ColorProfile&,
                                                                       const ColorProfile&, const String&,
                                                                       const String&) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(CheckActiveKernel());
        return NotImplemented("UpdateColorConversionActiveKernel");
    });
}

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
