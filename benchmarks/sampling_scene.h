// What the samplers are measured at: a texture and places in it.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <norvi/texture_records.h>

namespace norvi::benchmark {

/// Samples of one run. So many take milliseconds, beside which the start of a dispatch is little.
inline constexpr int SampleCount = 1 << 18;
/// Samples are summed up in blocks, so that none can be left out and few bytes are written.
inline constexpr int SamplesPerBlock = 32;
inline constexpr int BlockCount = SampleCount / SamplesPerBlock;

/// A texture with `extent` texels along each axis, and where it is sampled. Coordinates are normalised; those
/// of textures of bytes, which are read without a filter, are whole numbers.
struct SamplingScene {
    const char* name;
    int dimensions;
    int extent;
    int channels;
    TextureFormat format; ///< F32 or U8
    UInt32 wrap;
    bool isSrgb = false;
    float firstCoordinate = 0; ///< coordinates lie in the unit interval that begins here
    bool isRandom = true;      ///< else along the rows from the middle on, a sample in each texel

    bool IsFiltered() const { return format == TextureFormat::F32; }
};

/// The scene's texels and coordinates, for samplers that read them from memory.
struct SamplingInput {
    explicit SamplingInput(const SamplingScene& scene);

    SamplingScene scene;
    std::vector<UChar> texels;      ///< as TextureBindData wants them
    std::vector<float> coordinates; ///< of a filtered texture; x, y (and z) of each sample
    std::vector<Int32> positions;   ///< of a texture of bytes
};

/// A sampler that is ready to run.
struct PreparedSampler {
    std::function<void()> run; ///< takes all samples; empty if the sampler cannot do what the scene asks
    const float* sums =
        nullptr; ///< RGBA of each block, valid while `run` lives; which samples make a block is open
};

/// Another sampler than norvi's. It takes as many threads as the process may use processors.
class SamplingPeer {
  public:
    virtual ~SamplingPeer() = default;
    virtual const char* GetName() const = 0;
    virtual PreparedSampler Prepare(const SamplingInput& input) = 0;
};
using SamplingPeerRef = std::unique_ptr<SamplingPeer>;

/// Null, after a line that says why, where the machine has no such device.
SamplingPeerRef MakeOpenImageIOPeer();
SamplingPeerRef MakeOpenCLPeer();
SamplingPeerRef MakeVulkanPeer();

/// norvi's own forms: with a call for each sample or for runs of them, bare or through the dispatch of a
/// kernel.
enum class NorviForm { Single, Run, KernelSingle, KernelRun };
PreparedSampler PrepareNorvi(const SamplingInput& input, NorviForm form);

/// Calls `block(number)` for all blocks, in parallel.
void ForEachBlock(const std::function<void(int)>& block);

} // namespace norvi::benchmark
