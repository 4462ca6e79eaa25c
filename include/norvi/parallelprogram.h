// The contract of all compute programs.
//
// Order of a program's life: create from the class id, `Init`, `AddKernel`, create resources,
// `SetActiveKernel`, bind, `UpdateUniforms`, `DispatchKernel`, `Execute`, read back, `Reset` or release.
//
// Global resources (buffers, textures, atomic counters) belong to the program and outlive kernels. A kernel
// parameter is addressed by the text of an InternedId, which equals its name in the kernel source. Operations
// on the active kernel fail with the illegal-state error "no active kernel set" when there is none. A failing
// operation leaves the program usable.
//
// Threads: a program is driven by one thread at a time; parallelism lies inside a dispatch.
#pragma once

#include <norvi/drawport/handles.h>
#include <norvi/host/array.h>
#include <norvi/host/color_profile.h>
#include <norvi/host/dictionary.h>
#include <norvi/host/object.h>
#include <norvi/host/url.h>
#include <norvi/texture_records.h>

namespace norvi {

/// Classes that implement the interface.
namespace programid {
inline constexpr const char* CpuProgram = "net.norvi.drawportmisc.cpuprogram";
} // namespace programid

class ParallelProgramInterface : public ObjectInterface {
  public:
    static constexpr const char* InterfaceId = "net.norvi.drawportmisc.interface.parallelprogram";

    /// Prepares the program for use; must come first.
    virtual Result<void> Init(const Url& resourcePath, const DrawportContextRef& context, Int32 deviceIndex,
                              Bool createOffscreenContext) noexcept = 0;
    /// Submits recorded work; with `wait`, returns when it is finished.
    virtual Result<void> Execute(Bool wait) noexcept = 0;
    /// Adds a kernel under an id, from a kernel file or kernel class name. An id that is used already is an
    /// illegal argument. A failure leaves no entry under `kernelId`.
    virtual Result<void> AddKernel(const InternedId& kernelId, const Url& file, Bool wait,
                                   const DataDictionary& extraData) noexcept = 0;
    /// Adds a second kernel with the same code and bindings as another.
    virtual Result<void> CopyKernel(const InternedId& sourceKernelId, const InternedId& newKernelId,
                                    Bool wait, const DataDictionary& extraData) noexcept = 0;
    /// Blocks until background compiles are done.
    virtual void WaitForKernelCompile() noexcept = 0;
    /// The same, and reports the first compile failure.
    virtual Result<void> WaitForKernelCompileError() noexcept = 0;
    /// Is a kernel stored under this id.
    virtual Bool HasKernel(const InternedId& kernelId) noexcept = 0;
    /// How many kernels were made from the file of this name; 0 for the empty name. Copies do not count.
    virtual Int GetProgramCount(const String& programName) noexcept = 0;
    /// Chooses the active kernel. An unknown id changes nothing.
    virtual void SetActiveKernel(const InternedId& kernelId) noexcept = 0;
    /// The active kernel's id; empty when none is active.
    virtual InternedId GetActiveKernelId() noexcept = 0;
    /// Binds global buffer `attr` to the active kernel's parameter `attr`.
    virtual Result<void> SetBufferToActiveKernelSameId(const InternedId& attr) noexcept = 0;
    /// Binds global buffer `attr` to the active kernel's parameter `attrKernel`.
    virtual Result<void> SetBufferToActiveKernel(const InternedId& attr,
                                                 const InternedId& attrKernel) noexcept = 0;
    /// Registers a link value as global buffer `attr`: two ids then name one buffer.
    virtual Result<void> SetGlobalBufferLink(const InternedId& attr, const Data& data) noexcept = 0;
    /// The link value of a global buffer.
    virtual Result<Data> GetGlobalBufferLink(const InternedId& attr) noexcept = 0;
    /// The whole contents of a global buffer, as an ArrayRef that shares the memory until somebody writes.
    virtual Result<Data> GetGlobalBufferData(const InternedId& attr) noexcept = 0;
    /// A range of a global buffer, in elements, as an ArrayRef with memory of its own. A count of -1 gives
    /// the whole buffer as above.
    virtual Result<Data> GetGlobalBufferData(const InternedId& attr, Int offset, Int count) noexcept = 0;
    /// Binds a link value to the active kernel's parameter `attr`.
    virtual Result<void> SetKernelBufferLink(const InternedId& attr, const Data& data) noexcept = 0;
    /// The link value bound to the active kernel's parameter.
    virtual Result<Data> GetKernelBufferLink(const InternedId& attr) noexcept = 0;
    /// The contents of the buffer bound to the active kernel's parameter, as an ArrayRef.
    virtual Result<Data> GetKernelBufferData(const InternedId& attr) noexcept = 0;
    /// Creates a global buffer of `count` elements, or keeps an existing one that is large enough. Elements
    /// that are new are not initialised.
    virtual Result<void> CreateUniformBuffer(const InternedId& attr, DataType dataType,
                                             Int count) noexcept = 0;
    /// Resizes a global buffer to at least one element.
    virtual Result<void> ResizeUniformBuffer(const InternedId& attr, Int count,
                                             Bool forceResize) noexcept = 0;
    /// Stores an array or block as global buffer `attr`, creating it if needed. An existing buffer grows if
    /// it must and never shrinks.
    virtual Result<void> StoreUniformBufferData(const InternedId& attr, const Data& data) noexcept = 0;
    /// The same from untyped memory with an explicit element type; `data` is empty afterwards.
    virtual Result<void> StoreUniformBufferData(const InternedId& attr, DataType dataType,
                                                UntypedArray&& data) noexcept = 0;
    /// Overwrites part of an existing buffer from element `offset` on.
    virtual Result<void> UpdateUniformBufferData(const InternedId& attr, Int offset,
                                                 const Data& data) noexcept = 0;
    /// Copies elements between buffers of one element type. The stretches must not overlap.
    virtual Result<void> CopyBufferData(const InternedId& sourceAttr, const InternedId& targetAttr, Int count,
                                        Int sourceOffset, Int targetOffset) noexcept = 0;
    /// Copies bytes between buffers. The stretches must not overlap.
    virtual Result<void> CopyBufferDataBytes(const InternedId& sourceAttr, const InternedId& targetAttr,
                                             Int bytesCount, Int sourceBytesOffset,
                                             Int targetBytesOffset) noexcept = 0;
    /// Sets the eviction order of the out-of-core memory scheme.
    virtual Result<void>
    SetTextureOutOfCoreDeleteOrder(const BaseArray<InternedId>& deleteOrder) noexcept = 0;
    /// Switches the out-of-core memory scheme.
    virtual Result<void> SetOutOfCoreState(Bool useOutOfCore) noexcept = 0;
    /// Whether the scheme is on.
    virtual Bool GetOutOfCoreState() noexcept = 0;
    /// Binds global texture `attr` to the active kernel's parameter `attr`.
    virtual Result<void> SetTextureToActiveKernelSameId(const InternedId& attr,
                                                        Bool onlySetIfFound) noexcept = 0;
    /// Binds global texture `attr` to the active kernel's parameter `attrKernel`.
    virtual Result<void> SetTextureToActiveKernel(const InternedId& attr, const InternedId& attrKernel,
                                                  Bool onlySetIfFound) noexcept = 0;
    /// Stores a texture with its pixels and sampling settings.
    virtual Result<void> StoreTextureBindData(const InternedId& attr, const TextureBindData& texBindData,
                                              Bool outOfCore) noexcept = 0;
    /// A bindless handle of a texture with sampler.
    virtual Result<DrawportTextureHandle> GetTextureSamplerHandle(const InternedId& attr) noexcept = 0;
    /// A bindless handle of a texture.
    virtual Result<DrawportTextureHandle> GetTextureHandle(const InternedId& attr) noexcept = 0;
    /// The renderer-side cache entry of a texture with sampler.
    virtual Result<DrawportTextureItemRef> GetTextureSamplerCacheRef(const InternedId& attr) noexcept = 0;
    /// The renderer-side cache entry of a texture.
    virtual Result<DrawportTextureItemRef> GetTextureCacheRef(const InternedId& attr) noexcept = 0;
    /// Creates a texture from a description, without pixels.
    virtual Result<void> CreateTexture(const InternedId& attr, TextureBindData& texBindData) noexcept = 0;
    /// Overwrites the pixels of a stored texture of the same byte size.
    virtual Result<void> UpdateTextureBindData(const InternedId& attr,
                                               const TextureBindData& texBindData) noexcept = 0;
    /// Binds a link value to the active kernel's texture parameter.
    virtual Result<void> SetKernelTextureLink(const InternedId& attr, const Data& data) noexcept = 0;
    /// Reads back a texture region.
    virtual Result<Data> GetTextureData(const InternedId& attr, const Vec3<Int>& regionMin,
                                        const Vec3<Int>& regionMax) noexcept = 0;
    /// Copies bytes between textures.
    virtual Result<void> CopyTextureBytes(const InternedId& sourceAttr, const InternedId& targetAttr,
                                          Int bytesCount, Int sourceBytesOffset,
                                          Int targetBytesOffset) noexcept = 0;
    /// Creates a global atomic counter.
    virtual Result<void> AddAtomicCounter(const InternedId& attr, const Data& data) noexcept = 0;
    /// Binds the counter to the active kernel's parameter `attr`.
    virtual Result<void> SetAtomicCounterToActiveKernel(const InternedId& attr) noexcept = 0;
    /// Sets a counter.
    virtual Result<void> SetAtomicCounter(const InternedId& attr, UInt32 value) noexcept = 0;
    /// Reads a counter.
    virtual Result<UInt32> GetAtomicCounter(const InternedId& attr) noexcept = 0;
    /// Sets a uniform value on the active kernel.
    virtual Result<void> SetUniform(const InternedId& attr, const Data& data) noexcept = 0;
    /// Sets a formula text on the active kernel; the empty text clears it. A text that is no formula is
    /// accepted here and fails at the first dispatch that runs it.
    virtual Result<void> SetFormula(const InternedId& attr, const Data& data) noexcept = 0;
    /// Exchanges two buffer bindings of the active kernel. UpdateUniforms makes the exchange visible.
    virtual Result<void> SwapBuffers(const InternedId& bufferOne, const InternedId& bufferTwo) noexcept = 0;
    /// Exchanges two global textures.
    virtual Result<void> SwapTextures(const InternedId& textureOne,
                                      const InternedId& textureTwo) noexcept = 0;
    /// Removes a texture and all bindings of it.
    virtual Result<void> DeleteTexture(const InternedId& textureId, Bool softDelete) noexcept = 0;
    /// Releases a buffer's storage; the buffer stays, without elements. An unknown id succeeds.
    virtual Result<void> DeleteUniformBuffer(const InternedId& bufferId) noexcept = 0;
    /// Makes everything bound to the active kernel visible to it. Required after binding, before dispatch.
    virtual Result<void> UpdateUniforms() noexcept = 0;
    /// Runs the active kernel over a grid of so many invocations (not groups) in each dimension.
    virtual Result<void> DispatchKernel(UInt32 countX, UInt32 countY, UInt32 countZ,
                                        Bool disableBarrier) noexcept = 0;
    /// Runs the active kernel with a grid size read from element `offset` of a buffer of Vec3<UInt32>:
    /// numbers of work groups.
    virtual Result<void> DispatchIndirectKernel(const InternedId& buffer, UInt32 offset,
                                                Bool disableBarrier) noexcept = 0;
    /// Orders buffer accesses of successive dispatches.
    virtual Result<void> AddMemoryBarrier() noexcept = 0;
    /// Orders texture accesses of successive dispatches.
    virtual Result<void> AddTextureMemoryBarrier() noexcept = 0;
    /// Recompiles the active kernel if its source has changed.
    virtual Result<void> CheckActiveKernelForUpdatedShaders() noexcept = 0;
    /// Moves the program to another renderer context.
    virtual Result<void> UpdateDrawportContext(const DrawportContextRef& newDrawportContext) noexcept = 0;
    /// Drops all kernels and all resources.
    virtual Result<void> Reset() noexcept = 0;
    /// Rebuilds all kernels from their sources.
    virtual void ReloadKernels() noexcept = 0;
    /// Device memory in bytes; -1 where it is unknown.
    virtual Bool GetMemoryInformation(Int& freeMemory, Int& totalMemory) noexcept = 0;
    /// Which texel widths can be both read and written by kernels.
    virtual void GetSupportReadWritePixelFormats(Bool& readWrite16bit, Bool& readWrite8bit) noexcept = 0;
    /// Available and total budget, in bytes.
    virtual std::pair<Int, Int> GetAvailableAndTotalVRAMBudget() noexcept = 0;
    /// Is a global texture stored under this id.
    virtual Bool HasTexture(const InternedId& attr) noexcept = 0;
    /// Is a global buffer stored under this id.
    virtual Bool HasBuffer(const InternedId& attr) noexcept = 0;
    /// Sets the working colour space of the program.
    virtual void SetRenderSpace(const ColorProfileRef& renderingSpace) noexcept = 0;
    /// Gives the active kernel a conversion between two colour spaces under two function names.
    virtual Result<void> UpdateColorConversionActiveKernel(const ColorProfileRef& inputSpace,
                                                           const ColorProfileRef& outputSpace,
                                                           const String& functionName,
                                                           const String& functionNameInverse) noexcept = 0;
};

using ParallelProgramRef = Ref<ParallelProgramInterface>;

} // namespace norvi
