#include "norvi/smoke.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "norvi/argument_text.h"
#include "norvi/smoke_source.h"

namespace norvi {

namespace {

constexpr Float32 StepsPerSecond = 60;
/// Sideways acceleration where the noise differs by 1, in heights per second and second.
constexpr Float32 GustForce = 1.2f;
constexpr Float32 NoiseCellsPerHeight = 14;
/// Smoke loses its density to 1/e in so many seconds.
constexpr Float32 LifeSeconds = 20;
/// In heights per second: far above what is met, so that a formula cannot drive velocities to infinity.
constexpr Float32 MaxSpeed = 3;
constexpr Vector32 Background{0.016f, 0.018f, 0.026f};
/// For a density that changes by 1 in so many heights; the same edges are lit alike on each grid.
constexpr Float32 EdgeLight = 1.0f / 500;

/// The textures, all of the grid's size.
struct Field {
    const char* name;
    UInt32 channels;
    UInt32 wrap;
};
constexpr Field Fields[] = {
    {"picture", 4, WRAP_BORDER}, {"velocity", 2, WRAP_CLAMP},      {"velocityNext", 2, WRAP_CLAMP},
    {"smoke", 4, WRAP_BORDER},   {"smokeCarried", 4, WRAP_BORDER}, {"smokeNext", 4, WRAP_BORDER},
};

TextureBindData DescribeField(const Field& field, const GridSize& size) {
    TextureBindData texture;
    texture._dimensions = {static_cast<UInt32>(size.width), static_cast<UInt32>(size.height), 1};
    texture._numChannels = field.channels;
    texture._size = size.width * size.height * static_cast<Int>(field.channels * sizeof(Float32));
    texture._sampleLinear = 1;
    texture._wrapU = texture._wrapV = texture._wrapW = field.wrap;
    return texture;
}

/// Chebyshev's weights for a Jacobi iteration whose spectral radius is that of a grid half as many cells wide
/// as there are iterations. All waves that fit in there are reduced to less than a hundredth, and longer ones
/// never grow: they are left to the steps that follow. For a larger radius all waves would be reduced alike,
/// and little: the short ones that remain tear the smoke.
BaseArray<Float32> ChebyshevWeights(Int count) {
    const Float32 radius =
        std::max(0.0f, std::cos(2 * std::numbers::pi_v<Float32> / static_cast<Float32>(count)));
    BaseArray<Float32> weights{1.0f};
    for (Int i = 1; i < count; ++i)
        weights.push_back(1 / (1 - radius * radius * weights.back() / (i == 1 ? 2 : 4)));
    return weights;
}

} // namespace

Result<void> CheckSettings(const SmokeSettings& settings) {
    NORVI_TRY(CheckSize(settings.size, SmokeSettings::Limits));
    if (!(settings.emission >= 0 && settings.emission <= StepsPerSecond))
        return ArgumentError("--emission", ToText(settings.emission),
                             Format("smoke can be renewed from 0 to @ times a second", StepsPerSecond));
    constexpr Int most = SmokeSettings::MaxPressureIterations;
    if (settings.pressureIterations < 1 || settings.pressureIterations > most)
        return ArgumentError("--pressure-iterations", ToText(settings.pressureIterations),
                             Format("from 1 to @ iterations can be run", most));
    if (const auto display = ColorProfile::FromName(settings.display); !display)
        return ArgumentError("--display", settings.display, display.GetError().GetMessage());
    return CheckFormula("--force", settings.force);
}

Smoke::Smoke(ParallelProgramRef program, const SmokeSettings& settings)
    : program_(std::move(program)),
      size_(settings.size),
      weights_(ChebyshevWeights(settings.pressureIterations)),
      randomSeed_(settings.noise.seed) {}

Result<Smoke> Smoke::New(const SmokeSettings& settings, const Picture& source) {
    NORVI_TRY(CheckSettings(settings));
    NORVI_TRY_VALUE(program, ParallelProgramRef::Create(programid::CpuProgram));
    NORVI_TRY(program->Init({}, {}, 0, false));
    Smoke simulation(std::move(program), settings);
    NORVI_TRY(simulation.CreateFields(source));
    NORVI_TRY(simulation.AddKernels(settings));
    return simulation;
}

Result<void> Smoke::CreateFields(const Picture& source) {
    if (static_cast<Int>(source.pixels.size()) != 4 * GetCellCount())
        return IllegalArgumentError(
            Format("the source has @ values for a grid of @ x @ cells with 4 channels", source.pixels.size(),
                   size_.width, size_.height));
    for (const Field& field : Fields) {
        TextureBindData texture = DescribeField(field, size_);
        NORVI_TRY(program_->CreateTexture(field.name, texture));
        if (field.channels != 4)
            continue;
        texture._data = reinterpret_cast<const UChar*>(source.pixels.data());
        NORVI_TRY(program_->UpdateTextureBindData(field.name, texture));
    }
    // Outermost cells are never computed, and buffers that are only created hold anything.
    const BaseArray<Float32> zeros(static_cast<std::size_t>(GetCellCount()));
    for (const char* name : {"divergence", "pressure", "pressureNext"}) {
        NORVI_TRY_VALUE(values,
                        ArrayRef::NewBaseArray(DataType::Of<Float32>(), zeros.data(), GetCellCount()));
        NORVI_TRY(program_->StoreUniformBufferData(name, values));
    }
    return program_->CreateUniformBuffer("colors", DataType::Of<Vector32>(), GetCellCount());
}

Result<void> Smoke::AddKernels(const SmokeSettings& settings) {
    NORVI_TRY(AddKernel("source", "smoke_source.kernel"));
    NORVI_TRY(PrepareSource(settings));
    NORVI_TRY(AddKernel("divergence", "smoke_divergence.kernel"));
    NORVI_TRY(program_->SetBufferToActiveKernelSameId("divergence"));
    NORVI_TRY(AddKernel("pressure", "smoke_pressure.kernel"));
    for (const char* name : {"divergence", "pressure", "pressureNext"})
        NORVI_TRY(program_->SetBufferToActiveKernelSameId(name));
    NORVI_TRY(AddKernel("project", "smoke_project.kernel"));
    NORVI_TRY(AddKernel("advect", "smoke_advect.kernel"));
    NORVI_TRY(AddKernel("sharpen", "smoke_sharpen.kernel"));
    NORVI_TRY(AddKernel("display", "smoke_display.kernel"));
    return PrepareDisplay(settings);
}

Result<void> Smoke::AddKernel(const char* kernel, const String& file) {
    NORVI_TRY(program_->AddKernel(kernel, file, true, {}));
    NORVI_TRY(program_->SetUniform("width", static_cast<Int32>(size_.width)));
    return program_->SetUniform("height", static_cast<Int32>(size_.height));
}

Result<void> Smoke::PrepareSource(const SmokeSettings& settings) {
    const auto height = static_cast<Float32>(size_.height);
    const Float32 texelsPerStep = height / (StepsPerSecond * StepsPerSecond);
    NORVI_TRY(program_->SetFormula("liftFormula", settings.force));
    NORVI_TRY(program_->SetUniform("emission", 1 - std::exp(-settings.emission / StepsPerSecond)));
    NORVI_TRY(program_->SetUniform("fade", std::exp(-1 / (LifeSeconds * StepsPerSecond))));
    NORVI_TRY(program_->SetUniform("liftScale", texelsPerStep));
    NORVI_TRY(program_->SetUniform("gustScale", GustForce * texelsPerStep));
    NORVI_TRY(program_->SetUniform("noiseScale", NoiseCellsPerHeight / height));
    NORVI_TRY(program_->SetUniform("maxSpeed", MaxSpeed * height / StepsPerSecond));
    NORVI_TRY(program_->SetUniform("noiseMode_0", settings.noise.mode));
    return program_->SetUniform("noiseSeed_0", settings.noise.seed);
}

Result<void> Smoke::PrepareDisplay(const SmokeSettings& settings) {
    NORVI_TRY(program_->SetBufferToActiveKernelSameId("colors"));
    NORVI_TRY(program_->SetUniform("background", Background));
    NORVI_TRY(program_->SetUniform("light", EdgeLight * static_cast<Float32>(size_.height)));
    NORVI_TRY_VALUE(working, ColorProfile::FromName(WorkingSpace));
    NORVI_TRY_VALUE(display, ColorProfile::FromName(settings.display));
    return program_->UpdateColorConversionActiveKernel(working, display, "toDisplay", "");
}

/// Runs a kernel over so many invocations. Textures are bound anew each time, since they change places.
Result<void> Smoke::Run(const char* kernel, BaseArray<const char*> textures, Int countX, Int countY) {
    program_->SetActiveKernel(kernel);
    for (const char* texture : textures)
        NORVI_TRY(program_->SetTextureToActiveKernelSameId(texture, false));
    NORVI_TRY(program_->UpdateUniforms());
    NORVI_TRY(program_->DispatchKernel(static_cast<UInt32>(countX), static_cast<UInt32>(countY), 1, false));
    return program_->Execute(true);
}

Result<void> Smoke::Step() {
    NORVI_TRY(Drive());
    NORVI_TRY(Project());
    NORVI_TRY(Carry());
    ++step_;
    return OK;
}

/// New smoke, and the forces on what there is.
Result<void> Smoke::Drive() {
    program_->SetActiveKernel("source");
    NORVI_TRY(program_->SetUniform("time", static_cast<Float32>(step_) / StepsPerSecond));
    const auto seed = static_cast<UInt32>(randomSeed_) + static_cast<UInt32>(step_ * GetCellCount());
    NORVI_TRY(program_->SetUniform("randomSeed", static_cast<Int32>(seed)));
    NORVI_TRY(
        Run("source", {"picture", "velocity", "smoke", "velocityNext", "smokeNext"}, GetCellCount(), 1));
    NORVI_TRY(program_->SwapTextures("velocity", "velocityNext"));
    return program_->SwapTextures("smoke", "smokeNext");
}

/// Takes the divergence out of the velocity. The pressure of the last step is where the search begins.
Result<void> Smoke::Project() {
    NORVI_TRY(Run("divergence", {"velocity"}, size_.width - 2, size_.height - 2));
    for (const Float32 weight : weights_) {
        program_->SetActiveKernel("pressure");
        NORVI_TRY(program_->SetUniform("weight", weight));
        NORVI_TRY(Run("pressure", {}, size_.width - 2, size_.height - 2));
        NORVI_TRY(program_->SwapBuffers("pressure", "pressureNext"));
    }
    NORVI_TRY_VALUE(pressure, program_->GetKernelBufferLink("pressure"));
    program_->SetActiveKernel("project");
    NORVI_TRY(program_->SetKernelBufferLink("pressure", pressure));
    NORVI_TRY(Run("project", {"velocity", "velocityNext"}, size_.width, size_.height));
    return program_->SwapTextures("velocity", "velocityNext");
}

/// Carries velocity and smoke along.
Result<void> Smoke::Carry() {
    NORVI_TRY(
        Run("advect", {"velocity", "smoke", "velocityNext", "smokeCarried"}, size_.width, size_.height));
    NORVI_TRY(Run("sharpen", {"velocity", "smoke", "smokeCarried", "smokeNext"}, size_.width, size_.height));
    NORVI_TRY(program_->SwapTextures("velocity", "velocityNext"));
    return program_->SwapTextures("smoke", "smokeNext");
}

Result<Picture> Smoke::Render() {
    NORVI_TRY(Run("display", {"smoke"}, size_.width, size_.height));
    NORVI_TRY_VALUE(data, program_->GetGlobalBufferData("colors"));
    NORVI_TRY_VALUE(colors, data.GetAs<ArrayRef>());
    const auto* first = static_cast<const Float32*>(colors->GetElement(0));
    return Picture{size_.width, size_.height, 3, BaseArray<Float32>(first, first + 3 * GetCellCount())};
}

Int Smoke::GetInvocationsPerStep() const {
    // source, project, advect and sharpen run over all cells, divergence and pressure over the inner ones.
    const Int inner = (size_.width - 2) * (size_.height - 2);
    return 4 * GetCellCount() + inner * (1 + static_cast<Int>(weights_.size()));
}

Int Smoke::GetSamplesPerStep() const {
    // Three in advect, and two in sharpen.
    return 5 * GetCellCount();
}

} // namespace norvi
