// A Gray-Scott reaction-diffusion, run by a compute program.
#pragma once

#include <norvi/parallelprogram.h>

#include "norvi/demo_job.h"
#include "norvi/run_arguments.h"

namespace norvi {

struct ReactionDiffusionSettings {
    static constexpr GridLimits Limits{3, 16384, Int{1} << 26};

    GridSize size{1024, 1024};
    /// A formula that gives the feed rate for `value`, the brightness of the cell in the seed picture.
    String feed = "0.021+0.033*value";
    Float32 kill = 0.0606f;
    NoiseArgument noise{0, 1}; ///< tears the seed
};

/// Fails with an illegal-argument error for what cannot run: a size beyond the limits, a kill rate outside
/// [0, 1], a noise that there is not, or a formula with a mistake (the error has its position).
Result<void> CheckSettings(const ReactionDiffusionSettings& settings);

/// The seed picture where there is none from the user: a spiral with two arms.
Picture SpiralPicture(Int width, Int height);

/// Two concentrations on a grid: u is fed everywhere, v eats u and decays. Used by one thread.
class ReactionDiffusion final : public DemoSimulation {
  public:
    /// @param brightness one channel, of the settings' size; v is sown where it is bright.
    static Result<ReactionDiffusion> New(const ReactionDiffusionSettings& settings,
                                         const Picture& brightness);

    Result<void> Step() override;
    /// The concentrations in colour.
    Result<Picture> Render() override;
    /// The live cells.
    Result<String> MakeNote() override;
    /// How many cells hold v above a tenth.
    Result<UInt32> CountLiveCells();

    /// What one step reads and writes at least, in bytes.
    Int GetBytesPerStep() const;
    /// The cells that a step computes: all but the outermost.
    Int GetCellsPerStep() const { return (width_ - 2) * (height_ - 2); }

  private:
    ReactionDiffusion(ParallelProgramRef program, const ReactionDiffusionSettings& settings);

    Result<void> CreateBuffers(const Picture& brightness);
    Result<void> Sow(const ReactionDiffusionSettings& settings);
    Result<void> CheckFeed(const String& formula, const Picture& brightness);
    Result<void> PrepareStep(Float32 kill);
    Result<void> PrepareReaders();
    Result<void> Run(const char* kernel, Int countX, Int countY);
    Result<void> ShowToKernel(const char* kernel, const char* concentration);

    Int GetCellCount() const { return width_ * height_; }

    ParallelProgramRef program_;
    Int width_;
    Int height_;
};

} // namespace norvi
