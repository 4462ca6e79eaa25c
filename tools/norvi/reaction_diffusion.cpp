#include "norvi/reaction_diffusion.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <fmt/format.h>

#include "norvi/argument_text.h"

namespace norvi {

namespace {

constexpr Float32 DiffusionU = 0.2097f, DiffusionV = 0.105f;
constexpr Float32 SeedRoughness = 1.2f;
constexpr Float32 SeedNoiseScale = 1.0f / 24;
constexpr Float32 LiveThreshold = 0.1f;
constexpr Int PaletteSize = 64;

struct ColorStop {
    Float32 place;
    Vector32 color;
};

// Colours of v, which stays below 0.5: from still water through reefs to their ridges.
constexpr ColorStop ColorStops[] = {
    {0.00f, {0.020f, 0.040f, 0.110f}}, {0.06f, {0.035f, 0.110f, 0.230f}}, {0.14f, {0.050f, 0.330f, 0.430f}},
    {0.21f, {0.210f, 0.620f, 0.590f}}, {0.27f, {0.960f, 0.840f, 0.620f}}, {0.33f, {0.990f, 0.560f, 0.330f}},
    {0.42f, {0.720f, 0.160f, 0.250f}}, {1.00f, {1.000f, 1.000f, 1.000f}},
};

Vector32 Mix(const Vector32& from, const Vector32& to, Float32 part) {
    return {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part,
            from.z + (to.z - from.z) * part};
}

Vector32 ColorOf(Float32 place) {
    const auto next = std::find_if(std::begin(ColorStops) + 1, std::end(ColorStops) - 1,
                                   [&](const ColorStop& stop) { return place < stop.place; });
    const ColorStop& before = next[-1];
    return Mix(before.color, next->color, (place - before.place) / (next->place - before.place));
}

Result<ArrayRef> MakePalette() {
    BaseArray<Vector32> colors;
    for (Int i = 0; i < PaletteSize; ++i)
        colors.push_back(ColorOf(static_cast<Float32>(i) / (PaletteSize - 1)));
    return ArrayRef::NewBaseArray(DataType::Of<Vector32>(), colors.data(), PaletteSize);
}

} // namespace

Result<void> CheckSettings(const ReactionDiffusionSettings& settings) {
    NORVI_TRY(CheckSize(settings.size, ReactionDiffusionSettings::Limits));
    if (!(settings.kill >= 0 && settings.kill <= 1))
        return ArgumentError("--kill", ToText(settings.kill), "a kill rate lies between 0 and 1");
    return CheckFormula("--feed", settings.feed);
}

Picture SpiralPicture(Int width, Int height) {
    Picture picture{width, height, 1, {}};
    picture.pixels.reserve(static_cast<std::size_t>(width * height));
    const auto side = static_cast<Float32>(std::min(width, height));
    for (Int y = 0; y < height; ++y) {
        for (Int x = 0; x < width; ++x) {
            // From the centre, in halves of the shorter side.
            const Float32 right = (2 * static_cast<Float32>(x) + 1 - static_cast<Float32>(width)) / side;
            const Float32 down = (2 * static_cast<Float32>(y) + 1 - static_cast<Float32>(height)) / side;
            const Float32 radius = std::hypot(right, down);
            const Float32 turns =
                std::log(radius + 0.05f) * 1.1f + std::atan2(down, right) / std::numbers::pi_v<Float32>;
            const Float32 arms = 0.5f + 0.5f * std::cos(2 * std::numbers::pi_v<Float32> * turns);
            const Float32 fade = std::clamp(1.15f - radius, 0.0f, 1.0f);
            picture.pixels.push_back(
                std::max(arms * std::min(1.0f, 2 * fade), std::exp(-radius * radius * 30)));
        }
    }
    return picture;
}

ReactionDiffusion::ReactionDiffusion(ParallelProgramRef program, const ReactionDiffusionSettings& settings)
    : program_(std::move(program)), width_(settings.size.width), height_(settings.size.height) {}

Result<ReactionDiffusion> ReactionDiffusion::New(const ReactionDiffusionSettings& settings,
                                                 const Picture& brightness) {
    NORVI_TRY(CheckSettings(settings));
    NORVI_TRY_VALUE(program, ParallelProgramRef::Create(programid::CpuProgram));
    NORVI_TRY(program->Init({}, {}, 0, false));
    ReactionDiffusion simulation(std::move(program), settings);
    NORVI_TRY(simulation.CreateBuffers(brightness));
    NORVI_TRY(simulation.Sow(settings));
    NORVI_TRY(simulation.CheckFeed(settings.feed, brightness));
    NORVI_TRY(simulation.PrepareStep(settings.kill));
    NORVI_TRY(simulation.PrepareReaders());
    return simulation;
}

Result<void> ReactionDiffusion::CreateBuffers(const Picture& brightness) {
    NORVI_TRY_VALUE(seed, ArrayRef::NewBaseArray(DataType::Of<Float32>(), brightness.pixels.data(),
                                                 static_cast<Int>(brightness.pixels.size())));
    if (seed->GetCount() != GetCellCount())
        return IllegalArgumentError(
            Format("the seed has @ values for a grid of @ x @ cells", seed->GetCount(), width_, height_));
    NORVI_TRY(program_->StoreUniformBufferData("brightness", seed));
    for (const char* name : {"u", "v", "uNext", "vNext", "feed"})
        NORVI_TRY(program_->CreateUniformBuffer(name, DataType::Of<Float32>(), GetCellCount()));
    NORVI_TRY(program_->CreateUniformBuffer("colors", DataType::Of<Vector32>(), GetCellCount()));
    NORVI_TRY_VALUE(palette, MakePalette());
    return program_->StoreUniformBufferData("palette", palette);
}

/// Runs a kernel over so many invocations, with what is bound to it now.
Result<void> ReactionDiffusion::Run(const char* kernel, Int countX, Int countY) {
    program_->SetActiveKernel(kernel);
    NORVI_TRY(program_->UpdateUniforms());
    NORVI_TRY(program_->DispatchKernel(static_cast<UInt32>(countX), static_cast<UInt32>(countY), 1, false));
    return program_->Execute(true);
}

Result<void> ReactionDiffusion::Sow(const ReactionDiffusionSettings& settings) {
    NORVI_TRY(program_->AddKernel("sow", "gray_scott_seed.kernel", true, {}));
    for (const char* name : {"brightness", "u", "v", "feed"})
        NORVI_TRY(program_->SetBufferToActiveKernelSameId(name));
    NORVI_TRY(program_->SetFormula("feedFormula", settings.feed));
    NORVI_TRY(program_->SetUniform("width", static_cast<Int32>(width_)));
    NORVI_TRY(program_->SetUniform("height", static_cast<Int32>(height_)));
    NORVI_TRY(program_->SetUniform("roughness", SeedRoughness));
    NORVI_TRY(program_->SetUniform("noiseScale", SeedNoiseScale));
    NORVI_TRY(program_->SetUniform("randomSeed", settings.noise.seed));
    NORVI_TRY(program_->SetUniform("noiseMode_0", settings.noise.mode));
    NORVI_TRY(program_->SetUniform("noiseSeed_0", settings.noise.seed));
    NORVI_TRY(Run("sow", GetCellCount(), 1));
    // The outermost cells are never computed, so they must be there in both pairs.
    NORVI_TRY(program_->CopyBufferData("u", "uNext", GetCellCount(), 0, 0));
    return program_->CopyBufferData("v", "vNext", GetCellCount(), 0, 0);
}

/// Beyond these rates concentrations leave [0, 1] and grow without bounds.
Result<void> ReactionDiffusion::CheckFeed(const String& formula, const Picture& brightness) {
    NORVI_TRY_VALUE(data, program_->GetGlobalBufferData("feed"));
    NORVI_TRY_VALUE(rates, data.GetAs<ArrayRef>());
    for (Int i = 0; i < GetCellCount(); ++i) {
        const Float32 rate = *static_cast<const Float32*>(rates->GetElement(i));
        if (!(rate >= 0 && rate <= 1))
            return ArgumentError("--feed", formula,
                                 Format("the rate is @ for the value @; a feed rate lies between 0 and 1",
                                        rate, brightness.pixels[static_cast<std::size_t>(i)]));
    }
    return OK;
}

Result<void> ReactionDiffusion::PrepareStep(Float32 kill) {
    NORVI_TRY(program_->AddKernel("step", "gray_scott.kernel", true, {}));
    for (const char* name : {"u", "v", "uNext", "vNext", "feed"})
        NORVI_TRY(program_->SetBufferToActiveKernelSameId(name));
    NORVI_TRY(program_->SetUniform("width", static_cast<Int32>(width_)));
    NORVI_TRY(program_->SetUniform("height", static_cast<Int32>(height_)));
    NORVI_TRY(program_->SetUniform("kill", kill));
    NORVI_TRY(program_->SetUniform("diffusionU", DiffusionU));
    return program_->SetUniform("diffusionV", DiffusionV);
}

/// The kernels that look at what the steps have made.
Result<void> ReactionDiffusion::PrepareReaders() {
    NORVI_TRY(program_->AddKernel("count", "count_above.kernel", true, {}));
    NORVI_TRY(program_->AddAtomicCounter("counter", UInt32{0}));
    NORVI_TRY(program_->SetAtomicCounterToActiveKernel("counter"));
    NORVI_TRY(program_->SetUniform("width", static_cast<Int32>(width_)));
    NORVI_TRY(program_->SetUniform("rows", static_cast<Int32>(height_)));
    NORVI_TRY(program_->SetUniform("threshold", LiveThreshold));

    NORVI_TRY(program_->AddKernel("paint", "palette.kernel", true, {}));
    NORVI_TRY(program_->SetBufferToActiveKernelSameId("palette"));
    NORVI_TRY(program_->SetBufferToActiveKernelSameId("colors"));
    return program_->SetUniform("count", static_cast<Int32>(GetCellCount()));
}

Result<void> ReactionDiffusion::Step() {
    NORVI_TRY(Run("step", width_ - 2, height_ - 2));
    NORVI_TRY(program_->SwapBuffers("u", "uNext"));
    return program_->SwapBuffers("v", "vNext");
}

/// Binds what the step kernel knows as `concentration` now, after any number of exchanges, to the "values" of
/// another kernel.
Result<void> ReactionDiffusion::ShowToKernel(const char* kernel, const char* concentration) {
    program_->SetActiveKernel("step");
    NORVI_TRY_VALUE(link, program_->GetKernelBufferLink(concentration));
    program_->SetActiveKernel(kernel);
    return program_->SetKernelBufferLink("values", link);
}

Result<UInt32> ReactionDiffusion::CountLiveCells() {
    NORVI_TRY(ShowToKernel("count", "v"));
    NORVI_TRY(program_->SetAtomicCounter("counter", 0));
    NORVI_TRY(Run("count", height_, 1));
    return program_->GetAtomicCounter("counter");
}

Result<Picture> ReactionDiffusion::Render() {
    NORVI_TRY(ShowToKernel("paint", "v"));
    NORVI_TRY(Run("paint", GetCellCount(), 1));
    NORVI_TRY_VALUE(data, program_->GetGlobalBufferData("colors"));
    NORVI_TRY_VALUE(colors, data.GetAs<ArrayRef>());
    const auto* first = static_cast<const Float32*>(colors->GetElement(0));
    return Picture{width_, height_, 3, BaseArray<Float32>(first, first + 3 * GetCellCount())};
}

Result<String> ReactionDiffusion::MakeNote() {
    NORVI_TRY_VALUE(liveCells, CountLiveCells());
    return fmt::format("{} live", liveCells);
}

Int ReactionDiffusion::GetBytesPerStep() const {
    // u, v and feed are read, uNext and vNext written.
    constexpr Int floatsPerCell = 5;
    return GetCellsPerStep() * floatsPerCell * static_cast<Int>(sizeof(Float32));
}

} // namespace norvi
