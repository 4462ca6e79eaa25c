// Smoke that rises and swirls, run by a compute program over textures and buffers.
#pragma once

#include <norvi/host/color_profile.h>
#include <norvi/parallelprogram.h>

#include "norvi/demo_job.h"
#include "norvi/run_arguments.h"

namespace norvi {

struct SmokeSettings {
    static constexpr GridLimits Limits{16, 16384, Int{1} << 24};
    static constexpr Int MaxPressureIterations = 10'000;

    GridSize size{512, 512};
    /// A formula that gives the upward acceleration for `value`, the density of the smoke, in heights of the
    /// picture per second and second. There are 60 steps in a second.
    String force = "0.3*value";
    /// How often per second the picture's smoke is renewed; 0 for never.
    Float32 emission = 3;
    NoiseArgument noise{0, 1}; ///< gusts that push the smoke sideways
    Int pressureIterations = 30;
    String display = "sRGB";
};

/// Fails with an illegal-argument error for what cannot run: a size or number beyond the limits, a noise or a
/// colour space that there is not, or a formula with a mistake (the error has its position).
Result<void> CheckSettings(const SmokeSettings& settings);

/// A smoke simulation on a grid of square cells. The smoke may leave the picture at all sides.
class Smoke final : public DemoSimulation {
  public:
    /// @param source four channels, of the settings' size: colour in the linear working space times density,
    ///        and density; the first smoke, and what is given off.
    static Result<Smoke> New(const SmokeSettings& settings, const Picture& source);

    Result<void> Step() override;
    /// In front of a dark background, in the display's colour space.
    Result<Picture> Render() override;

    /// Kernel invocations of one step.
    Int GetInvocationsPerStep() const;
    /// Filtered samples that one step takes from textures at most; cells without smoke take fewer.
    Int GetSamplesPerStep() const;

  private:
    Smoke(ParallelProgramRef program, const SmokeSettings& settings);

    Result<void> CreateFields(const Picture& source);
    Result<void> AddKernels(const SmokeSettings& settings);
    Result<void> AddKernel(const char* kernel, const String& file);
    Result<void> PrepareSource(const SmokeSettings& settings);
    Result<void> PrepareDisplay(const SmokeSettings& settings);
    Result<void> Drive();
    Result<void> Project();
    Result<void> Carry();
    Result<void> Run(const char* kernel, BaseArray<const char*> textures, Int countX, Int countY);

    Int GetCellCount() const { return size_.width * size_.height; }

    ParallelProgramRef program_;
    GridSize size_;
    BaseArray<Float32> weights_; ///< of the pressure iterations
    Int32 randomSeed_;
    Int step_ = 0;
};

} // namespace norvi
