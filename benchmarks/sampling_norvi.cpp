// norvi's samplers, of textures with one or four channels.
#include <cstdio>
#include <cstdlib>

#include "core/parallelprogram_cpu_impl.h"
#include "sampling/kernelinterface_texture.h"
#include "sampling_scene.h"

namespace norvi::benchmark {

namespace {

using Float4 = Float32 __attribute__((vector_size(16)));

template <typename T>
T Require(Result<T> result) {
    if (!result) {
        std::fprintf(stderr, "sampling_benchmark: %s\n", result.GetError().ToString().c_str());
        std::exit(1);
    }
    if constexpr (!std::is_void_v<T>)
        return std::move(*result);
}

TextureBindData Describe(const SamplingInput& input) {
    const SamplingScene& scene = input.scene;
    const auto extent = static_cast<UInt32>(scene.extent);
    TextureBindData texture;
    texture._data = input.texels.data();
    texture._size = static_cast<Int>(input.texels.size());
    texture._dimensions = {extent, extent, scene.dimensions > 2 ? extent : 1};
    texture._format = scene.format;
    texture._numChannels = static_cast<UInt32>(scene.channels);
    texture._sampleLinear = scene.IsFiltered();
    texture._normalizedCoordinates = scene.IsFiltered();
    texture._srgb = scene.isSrgb;
    texture._wrapU = texture._wrapV = texture._wrapW = scene.wrap;
    return texture;
}

/// The functions of the texture, called directly.
struct Bare {
    explicit Bare(const SamplingInput& input)
        : scene(input.scene),
          entry(Require(MakeSamplerEntry(Describe(input)))),
          coordinates(input.coordinates),
          positions(input.positions) {}

    Float4 SumSingles(int block) const {
        const TextureSamplerDataHelper& texture = entry.helper;
        const float* place =
            &coordinates[static_cast<std::size_t>(block) * SamplesPerBlock * scene.dimensions];
        Float4 sum{}, result{};
        for (int i = 0; i < SamplesPerBlock; ++i, place += scene.dimensions) {
            texture.sampleFunction(&result, place, 0, &texture.samplingData);
            // To read more than was just written would wait for the write.
            if (scene.channels == 4)
                sum += result;
            else
                sum[0] += result[0];
        }
        return sum;
    }

    Float4 SumLoads(int block) const {
        const TextureSamplerDataHelper& texture = entry.helper;
        const Int32* place = &positions[static_cast<std::size_t>(block) * SamplesPerBlock * scene.dimensions];
        UInt32 sum = 0;
        for (int i = 0; i < SamplesPerBlock; ++i, place += scene.dimensions) {
            UChar result;
            texture.loadFunction(&result, place, 0, &texture.samplingData);
            sum += result;
        }
        return Float4{static_cast<float>(sum)};
    }

    Float4 SumRun(int block) const {
        const float* place =
            &coordinates[static_cast<std::size_t>(block) * SamplesPerBlock * scene.dimensions];
        Float4 results[SamplesPerBlock];
        entry.helper.sampleRunFunction(results, place, SamplesPerBlock, 0, &entry.helper);
        // Four sums at a time, or the additions would wait for each other.
        Float4 sums4[4]{};
        for (int i = 0; i < SamplesPerBlock * scene.channels / 4; ++i)
            sums4[i % 4] += results[i];
        const Float4 sum = (sums4[0] + sums4[1]) + (sums4[2] + sums4[3]);
        return scene.channels == 4 ? sum : Float4{(sum[0] + sum[1]) + (sum[2] + sum[3])};
    }

    SamplingScene scene;
    SamplerEntry entry;
    std::vector<float> coordinates;
    std::vector<Int32> positions;
    std::vector<Float4> sums{BlockCount};
};

PreparedSampler PrepareBare(const SamplingInput& input, Float4 (Bare::*sumOf)(int) const) {
    auto bare = std::make_shared<Bare>(input);
    const auto run = [bare, sumOf] {
        ForEachBlock([&](int block) { bare->sums[static_cast<std::size_t>(block)] = (*bare.*sumOf)(block); });
    };
    return {run, reinterpret_cast<const float*>(bare->sums.data())};
}

const char* KernelOf(const SamplingScene& scene, bool isRun) {
    if (!scene.IsFiltered())
        return "load_2d.kernel";
    if (scene.dimensions == 2)
        return isRun ? "sample_2d_run.kernel" : "sample_2d.kernel";
    return isRun ? "sample_3d_run.kernel" : "sample_3d.kernel";
}

/// A buffer of the program; the pointer holds as long as the program.
void* MakeBuffer(ParallelProgramCPUImpl& program, const char* name, DataType type, Int count) {
    Require(program.CreateUniformBuffer(name, type, count));
    Require(program.SetBufferToActiveKernelSameId(name));
    const Data link = Require(program.GetGlobalBufferLink(name));
    return (**link.Get<ArrayRef*>())->GetElement(0);
}

PreparedSampler PrepareKernel(const SamplingInput& input, bool isRun) {
    const SamplingScene& scene = input.scene;
    auto program = std::make_shared<ParallelProgramCPUImpl>();
    Require(program->Init({}, {}, 0, false));
    Require(program->AddKernel("k", KernelOf(scene, isRun), false, {}));
    Require(program->StoreTextureBindData("picture", Describe(input), false));
    Require(program->SetTextureToActiveKernelSameId("picture", false));
    const DataType vectors[] = {DataType::Of<Vector2d32>(), DataType::Of<Vector32>()};
    void* places = scene.IsFiltered()
                       ? MakeBuffer(*program, "positions", vectors[scene.dimensions - 2], SampleCount)
                       : MakeBuffer(*program, "positions", DataType::Of<Int32>(), 2 * SampleCount);
    if (scene.IsFiltered())
        std::copy(input.coordinates.begin(), input.coordinates.end(), static_cast<float*>(places));
    else
        std::copy(input.positions.begin(), input.positions.end(), static_cast<Int32*>(places));
    const void* sums = MakeBuffer(*program, "sums", DataType::Of<Vector4d32>(), BlockCount);
    Require(program->UpdateUniforms());
    return {[program] { Require(program->DispatchKernel(BlockCount, 1, 1, false)); },
            static_cast<const float*>(sums)};
}

} // namespace

PreparedSampler PrepareNorvi(const SamplingInput& input, NorviForm form) {
    const bool isRun = form == NorviForm::Run || form == NorviForm::KernelRun;
    if (isRun && !input.scene.IsFiltered())
        return {};
    switch (form) {
    case NorviForm::Single:
        return PrepareBare(input, input.scene.IsFiltered() ? &Bare::SumSingles : &Bare::SumLoads);
    case NorviForm::Run:
        return PrepareBare(input, &Bare::SumRun);
    default:
        return PrepareKernel(input, isRun);
    }
}

} // namespace norvi::benchmark
