// The compute program on the processor.
#pragma once

#include <list>
#include <unordered_map>

#include <norvi/color_conversion.h>
#include <norvi/formula_data.h>
#include <norvi/host/noise.h>
#include <norvi/kernelinterface.h>
#include <norvi/parallelprogram.h>

#include "sampling/kernelinterface_texture.h"

namespace norvi {

/// How many noise generators a kernel may have.
inline constexpr Int NoiseParameterCount = 128;

/// A buffer parameter as it was last written into the kernel object.
struct BoundBuffer {
    InternedId name;
    ArrayRef* array = nullptr; ///< a node of the program's buffer list
    UntypedBlock block;
};

/// A clone of a kernel that one worker runs.
struct WorkerKernel {
    Kernel::KernelRef kernel;
    KernelRangeInterface* range = nullptr;
    Bool areFormulasBound = false;
};

/// One kernel of a program.
struct KernelData {
    InternedId id; ///< a copy keeps its source's id here; the key in the kernel table is what counts
    Url file;
    String name; ///< what GetProgramCount compares; empty in a copy
    DataDictionary bufferBindings;
    DataDictionary uniforms;
    DataDictionary atomicBindings;
    DataDictionary textureBindings;
    /// What the kernel object's texture members point at, by parameter. Memory of a texture that was deleted
    /// is freed when its parameter is bound anew.
    std::unordered_map<InternedId, std::shared_ptr<const SamplerEntry>> heldTextures;
    DataDictionary formulas;
    std::unordered_map<InternedId, BaseArray<FormulaData>> formulaStates; ///< one element for each worker
    Kernel::KernelRef kernel;
    KernelRangeInterface* range = nullptr; ///< of `kernel`; null where it runs invocation by invocation
    BaseArray<NoiseRef> noiseObjects;
    Block<NoiseRef> noiseBlock;
    BaseArray<BoundBuffer> boundBuffers; ///< as of the last UpdateUniforms
    DataDictionary extra;
    BaseArray<WorkerKernel> workerKernels; ///< for parallel formula dispatches
};

/// The kernel's way of running ranges, or null.
KernelRangeInterface* FindRangeInterface(KernelInterface& kernel);

/// Sets the texture parameter `name`, which must be of a type that accepts this kind of texture: another one
/// is an illegal-state error. A kernel without the parameter ignores it. Tells whether it has the parameter.
Result<Bool> SetTexture(KernelInterface& kernel, const InternedId& name, TextureSamplerDataHelper& texture);

/// Sets the parameter `name` from `data`, whose type must be the parameter's: another one is an illegal-state
/// error. A kernel without the parameter ignores it.
Result<void> SetTypedParameter(KernelInterface& kernel, const InternedId& name, DataType type,
                               const void* data);

/// Kernels are objects of registered classes; nothing is parsed or compiled at run time. All dispatches have
/// run to the end when they return.
class ParallelProgramCPUImpl final : public ParallelProgramInterface {
  public:
    ~ParallelProgramCPUImpl() override;

    void* QueryInterface(const Id& interfaceId) override;

    Result<void> Init(const Url& resourcePath, const DrawportContextRef& context, Int32 deviceIndex,
                      Bool createOffscreenContext) noexcept override;
    Result<void> Execute(Bool wait) noexcept override;
    Result<void> AddKernel(const InternedId& kernelId, const Url& file, Bool wait,
                           const DataDictionary& extraData) noexcept override;
    Result<void> CopyKernel(const InternedId& sourceKernelId, const InternedId& newKernelId, Bool wait,
                            const DataDictionary& extraData) noexcept override;
    void WaitForKernelCompile() noexcept override;
    Result<void> WaitForKernelCompileError() noexcept override;
    Bool HasKernel(const InternedId& kernelId) noexcept override;
    Int GetProgramCount(const String& programName) noexcept override;
    void SetActiveKernel(const InternedId& kernelId) noexcept override;
    InternedId GetActiveKernelId() noexcept override;
    Result<void> SetBufferToActiveKernelSameId(const InternedId& attr) noexcept override;
    Result<void> SetBufferToActiveKernel(const InternedId& attr,
                                         const InternedId& attrKernel) noexcept override;
    Result<void> SetGlobalBufferLink(const InternedId& attr, const Data& data) noexcept override;
    Result<Data> GetGlobalBufferLink(const InternedId& attr) noexcept override;
    Result<Data> GetGlobalBufferData(const InternedId& attr) noexcept override;
    Result<Data> GetGlobalBufferData(const InternedId& attr, Int offset, Int count) noexcept override;
    Result<void> SetKernelBufferLink(const InternedId& attr, const Data& data) noexcept override;
    Result<Data> GetKernelBufferLink(const InternedId& attr) noexcept override;
    Result<Data> GetKernelBufferData(const InternedId& attr) noexcept override;
    Result<void> CreateUniformBuffer(const InternedId& attr, DataType dataType, Int count) noexcept override;
    Result<void> ResizeUniformBuffer(const InternedId& attr, Int count, Bool forceResize) noexcept override;
    Result<void> StoreUniformBufferData(const InternedId& attr, const Data& data) noexcept override;
    Result<void> StoreUniformBufferData(const InternedId& attr, DataType dataType,
                                        UntypedArray&& data) noexcept override;
    Result<void> UpdateUniformBufferData(const InternedId& attr, Int offset,
                                         const Data& data) noexcept override;
    Result<void> CopyBufferData(const InternedId& sourceAttr, const InternedId& targetAttr, Int count,
                                Int sourceOffset, Int targetOffset) noexcept override;
    Result<void> CopyBufferDataBytes(const InternedId& sourceAttr, const InternedId& targetAttr,
                                     Int bytesCount, Int sourceBytesOffset,
                                     Int targetBytesOffset) noexcept override;
    Result<void> SetTextureOutOfCoreDeleteOrder(const BaseArray<InternedId>& deleteOrder) noexcept override;
    Result<void> SetOutOfCoreState(Bool useOutOfCore) noexcept override;
    Bool GetOutOfCoreState() noexcept override;
    Result<void> SetTextureToActiveKernelSameId(const InternedId& attr,
                                                Bool onlySetIfFound) noexcept override;
    Result<void> SetTextureToActiveKernel(const InternedId& attr, const InternedId& attrKernel,
                                          Bool onlySetIfFound) noexcept override;
    Result<void> StoreTextureBindData(const InternedId& attr, const TextureBindData& texBindData,
                                      Bool outOfCore) noexcept override;
    Result<DrawportTextureHandle> GetTextureSamplerHandle(const InternedId& attr) noexcept override;
    Result<DrawportTextureHandle> GetTextureHandle(const InternedId& attr) noexcept override;
    Result<DrawportTextureItemRef> GetTextureSamplerCacheRef(const InternedId& attr) noexcept override;
    Result<DrawportTextureItemRef> GetTextureCacheRef(const InternedId& attr) noexcept override;
    Result<void> CreateTexture(const InternedId& attr, TextureBindData& texBindData) noexcept override;
    Result<void> UpdateTextureBindData(const InternedId& attr,
                                       const TextureBindData& texBindData) noexcept override;
    Result<void> SetKernelTextureLink(const InternedId& attr, const Data& data) noexcept override;
    Result<Data> GetTextureData(const InternedId& attr, const Vec3<Int>& regionMin,
                                const Vec3<Int>& regionMax) noexcept override;
    Result<void> CopyTextureBytes(const InternedId& sourceAttr, const InternedId& targetAttr, Int bytesCount,
                                  Int sourceBytesOffset, Int targetBytesOffset) noexcept override;
    Result<void> AddAtomicCounter(const InternedId& attr, const Data& data) noexcept override;
    Result<void> SetAtomicCounterToActiveKernel(const InternedId& attr) noexcept override;
    Result<void> SetAtomicCounter(const InternedId& attr, UInt32 value) noexcept override;
    Result<UInt32> GetAtomicCounter(const InternedId& attr) noexcept override;
    Result<void> SetUniform(const InternedId& attr, const Data& data) noexcept override;
    Result<void> SetFormula(const InternedId& attr, const Data& data) noexcept override;
    Result<void> SwapBuffers(const InternedId& bufferOne, const InternedId& bufferTwo) noexcept override;
    Result<void> SwapTextures(const InternedId& textureOne, const InternedId& textureTwo) noexcept override;
    Result<void> DeleteTexture(const InternedId& textureId, Bool softDelete) noexcept override;
    Result<void> DeleteUniformBuffer(const InternedId& bufferId) noexcept override;
    Result<void> UpdateUniforms() noexcept override;
    Result<void> DispatchKernel(UInt32 countX, UInt32 countY, UInt32 countZ,
                                Bool disableBarrier) noexcept override;
    Result<void> DispatchIndirectKernel(const InternedId& buffer, UInt32 offset,
                                        Bool disableBarrier) noexcept override;
    Result<void> AddMemoryBarrier() noexcept override;
    Result<void> AddTextureMemoryBarrier() noexcept override;
    Result<void> CheckActiveKernelForUpdatedShaders() noexcept override;
    Result<void> UpdateDrawportContext(const DrawportContextRef& newDrawportContext) noexcept override;
    Result<void> Reset() noexcept override;
    void ReloadKernels() noexcept override;
    Bool GetMemoryInformation(Int& freeMemory, Int& totalMemory) noexcept override;
    void GetSupportReadWritePixelFormats(Bool& readWrite16bit, Bool& readWrite8bit) noexcept override;
    std::pair<Int, Int> GetAvailableAndTotalVRAMBudget() noexcept override;
    Bool HasTexture(const InternedId& attr) noexcept override;
    Bool HasBuffer(const InternedId& attr) noexcept override;
    void SetRenderSpace(const ColorProfileRef& renderingSpace) noexcept override;
    Result<void> UpdateColorConversionActiveKernel(const ColorProfileRef& inputSpace,
                                                   const ColorProfileRef& outputSpace,
                                                   const String& functionName,
                                                   const String& functionNameInverse) noexcept override;

  private:
    using BufferList = std::list<ArrayRef>;

    Result<void> CheckActiveKernel() const;
    Result<void> CreateKernelObject(KernelData& data, const Class* kernelClass);

    Result<ArrayRef*> FindBuffer(const InternedId& attr, const char* message) const;
    Result<void> AppendBuffer(const InternedId& attr, Result<ArrayRef> array);
    static Result<Array*> MakeRoom(ArrayRef& array, Int count, DataType elementType);
    static Result<void> CopyBetween(const ArrayRef& source, ArrayRef& target, Int bytes, Int sourceOffset,
                                    Int targetOffset);
    static Result<void> CheckLink(const Data& data);

    Result<AtomicUInt32*> FindAtomicCounter(const InternedId& attr) const;
    Result<void> UpdatePlainUniforms();
    Result<void> UpdateBuffers();
    Result<void> RefreshBuffers();
    Result<void> UpdateTextures();
    Result<void> UpdateAtomicCounters();
    Result<void> UpdateNoise();
    Result<void> UpdateColorConversion();
    void EnterColorConverter(UInt64 hash, const ColorProfileConvertRef& converter);
    static Result<void> AppendNoise(BaseArray<NoiseRef>& noises, Int32 mode, Int32 seed);

    Result<void> Dispatch1D(UInt32 count);
    Result<void> Dispatch3D(const Vec3<UInt32>& counts);
    Result<void> DispatchPlain(UInt32 count);
    Result<void> DispatchFormulas(UInt32 count);
    Result<void> PrepareFormulaStates(Int workers);
    Result<void> BindFormulas(KernelInterface& kernel, Int worker);
    Result<void> CloneWorkerKernels();
    Result<void> ForgetFormulas();

    // Links are addresses of nodes, so nodes must never move.
    BufferList bufferStore_;
    std::list<std::shared_ptr<SamplerEntry>> textureStore_;
    std::list<AtomicUInt32> atomicStore_;
    DataDictionary globalBuffers_;
    DataDictionary globalAtomics_;
    DataDictionary globalTextures_;
    InternedId activeKernelId_;
    InternedId noiseDataId_;
    BaseArray<InternedId> noiseModeIds_;
    BaseArray<InternedId> noiseSeedIds_;
    KernelData* activeKernel_ = nullptr; ///< a value inside `kernels_`, which do not move
    std::unordered_map<InternedId, KernelData> kernels_;
    ColorProfileRef renderSpace_;
    // Kept across Reset: making a converter is slow.
    std::unordered_map<UInt64, ColorProfileConvertRef> colorConverters_;
    std::unordered_map<UInt64, ColorConversionFunction> colorFunctions_;
};

} // namespace norvi
