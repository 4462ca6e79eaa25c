// Carries out the plan of `norvi run`.
#pragma once

#include <norvi/parallelprogram.h>

#include "norvi/buffer_contents.h"

namespace norvi {

class KernelRun {
  public:
    KernelRun(RunPlan plan, Bool isQuiet) : plan_(std::move(plan)), isQuiet_(isQuiet) {}

    /// Everything from reading the files to writing the results. Outputs are checked before the first step.
    Result<void> Run();

  private:
    struct Buffer {
        String name;
        DataType type;
        Int count = 0;
        Int margin = 0;
        BaseArray<Int> shape;
    };

    Result<void> CreateBuffers();
    Result<void> CreateTextures();
    Result<void> CheckOutputs();
    Result<void> BindAll();
    Result<void> RunSteps();
    Result<void> Swap();
    Result<void> CheckMargins();
    Result<void> CheckMargin(const Buffer& buffer);
    Result<void> WriteOutputs(Int step, Bool isLast);
    Result<void> PrintCounters();
    void PrintSummary() const;
    const Buffer& OutputBuffer(const OutputArgument& output);
    Result<std::shared_ptr<SamplingData>> ReadTexture(const String& name);
    Int GetBoundBytes() const;

    RunPlan plan_;
    Bool isQuiet_;
    ParallelProgramRef program_;
    BaseArray<Buffer> buffers_;
    Int textureBytes_ = 0;
    double seconds_ = 0; ///< spent in dispatches
};

} // namespace norvi
