#include "norvi/demo_reaction_diffusion.h"

#include <chrono>
#include <filesystem>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <norvi/host/text.h>
#include <norvi/host/thread_services.h>

#include "norvi/argument_text.h"
#include "norvi/interrupt.h"
#include "norvi/progress.h"

namespace norvi {

namespace {

using Clock = std::chrono::steady_clock;

Result<void> CheckSteps(const ReactionDiffusionOptions& options) {
    constexpr Int most = ReactionDiffusionOptions::MaxSteps;
    if (options.steps < 1 || options.steps > most)
        return ArgumentError("--steps", ToText(options.steps), Format("from 1 to @ steps can be run", most));
    if (options.every < 0)
        return ArgumentError("--every", ToText(options.every),
                             "the steps between pictures cannot be negative");
    return OK;
}

/// Makes the folder and tries to write to it: permissions alone do not tell.
Result<void> PrepareFolder(const String& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        return SystemError(Format("cannot make the output folder \"@\"", folder), error.value());
    const String probe = (std::filesystem::path(folder) / fmt::format(".probe.{}", getpid())).string();
    const int file = open(probe.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    if (file < 0)
        return SystemError(Format("cannot write to the output folder \"@\"", folder), errno);
    close(file);
    unlink(probe.c_str());
    return OK;
}

Result<Picture> MakeSeed(const ReactionDiffusionOptions& options) {
    const Int width = options.settings.width, height = options.settings.height;
    if (options.seedPicture.empty())
        return SpiralPicture(width, height);
    NORVI_TRY_VALUE(picture, ReadPicture(options.seedPicture));
    return ResizePicture(ToLuminance(picture), width, height);
}

/// One run: the simulation, and what is told and kept of it.
class Job {
  public:
    Job(ReactionDiffusion simulation, const ReactionDiffusionOptions& options, Bool isQuiet)
        : simulation_(std::move(simulation)),
          options_(options),
          progress_("Growing", options.steps, "steps", isQuiet) {}

    Result<ReactionDiffusionReport> Run() {
        while (report_.steps < options_.steps && !interrupt_.IsRequested()) {
            NORVI_TRY(Step());
            NORVI_TRY(Tell());
            if (options_.every > 0 && report_.steps % options_.every == 0)
                NORVI_TRY(SavePicture());
        }
        if (pictureStep_ != report_.steps)
            NORVI_TRY(SavePicture());
        NORVI_TRY_VALUE(liveCells, simulation_.CountLiveCells());
        report_.liveCells = liveCells;
        report_.cellsPerStep = simulation_.GetCellsPerStep();
        report_.bytesPerStep = simulation_.GetBytesPerStep();
        return report_;
    }

  private:
    Result<void> Step() {
        const auto start = Clock::now();
        NORVI_TRY(simulation_.Step());
        report_.stepSeconds += std::chrono::duration<double>(Clock::now() - start).count();
        ++report_.steps;
        return OK;
    }

    Result<void> Tell() {
        if (!progress_.IsDue(report_.steps) && report_.steps < options_.steps)
            return OK;
        NORVI_TRY_VALUE(liveCells, simulation_.CountLiveCells());
        progress_.Update(report_.steps, fmt::format("{} live", liveCells));
        return OK;
    }

    Result<void> SavePicture() {
        NORVI_TRY_VALUE(picture, simulation_.Render());
        const auto path =
            std::filesystem::path(options_.outputFolder) / fmt::format("step-{:06}.png", report_.steps);
        NORVI_TRY(WritePicture(path.string(), picture));
        report_.pictures.push_back(path.string());
        pictureStep_ = report_.steps;
        return OK;
    }

    ReactionDiffusion simulation_;
    const ReactionDiffusionOptions& options_;
    ReactionDiffusionReport report_;
    Int pictureStep_ = -1;
    InterruptScope interrupt_;
    Progress progress_;
};

} // namespace

Result<void> ParseSize(const String& text, ReactionDiffusionSettings& settings) {
    const auto parts = SplitText(text, 'x');
    const auto width = ParseInt(parts.front()), height = ParseInt(parts.back());
    if (parts.size() != 2 || !width || !height)
        return ArgumentError("--size", text, "a width and a height are needed, as in 1024x768");
    settings.width = *width;
    settings.height = *height;
    return OK;
}

Result<ReactionDiffusionReport> RunReactionDiffusion(const ReactionDiffusionOptions& options, Bool isQuiet) {
    return CatchOutOfMemory([&]() -> Result<ReactionDiffusionReport> {
        NORVI_TRY(CheckSteps(options));
        NORVI_TRY(CheckSettings(options.settings));
        NORVI_TRY_VALUE(seed, MakeSeed(options));
        NORVI_TRY(PrepareFolder(options.outputFolder));
        NORVI_TRY_VALUE(simulation, ReactionDiffusion::New(options.settings, seed));
        return Job(std::move(simulation), options, isQuiet).Run();
    });
}

String ReportText(const ReactionDiffusionReport& report, const ReactionDiffusionOptions& options) {
    const auto perSecond = [&](Int perStep) {
        return static_cast<double>(perStep * report.steps) / std::max(report.stepSeconds, 1e-9) / 1e9;
    };
    String text;
    const auto addRow = [&](const char* name, const String& value) {
        text += fmt::format("{:<14}{}\n", name, value);
    };
    const Bool isEarly = report.steps < options.steps;
    addRow("grid", fmt::format("{} x {} cells", options.settings.width, options.settings.height));
    addRow("steps", isEarly ? fmt::format("{} of {}, interrupted", report.steps, options.steps)
                            : fmt::format("{}", report.steps));
    addRow("step kernel", fmt::format("{:.2f} s", report.stepSeconds));
    addRow("invocations", fmt::format("{:.3f} G/s", perSecond(report.cellsPerStep)));
    addRow("memory", fmt::format("{:.1f} GB/s", perSecond(report.bytesPerStep)));
    addRow("workers", fmt::format("{}", JobQueue::GetThreadCount()));
    addRow("live cells", fmt::format("{}", report.liveCells));
    return text;
}

} // namespace norvi
