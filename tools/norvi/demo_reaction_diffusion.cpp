#include "norvi/demo_reaction_diffusion.h"

#include <fmt/format.h>

#include <norvi/host/thread_services.h>

namespace norvi {

namespace {

Result<Picture> MakeSeed(const ReactionDiffusionOptions& options) {
    const auto [width, height] = options.settings.size;
    if (options.seedPicture.empty())
        return SpiralPicture(width, height);
    NORVI_TRY_VALUE(picture, ReadPicture(options.seedPicture));
    return ResizePicture(ToLuminance(picture), width, height);
}

} // namespace

Result<ReactionDiffusionReport> RunReactionDiffusion(const ReactionDiffusionOptions& options, Bool isQuiet) {
    return CatchOutOfMemory([&]() -> Result<ReactionDiffusionReport> {
        NORVI_TRY(CheckDemo(options));
        NORVI_TRY(CheckSettings(options.settings));
        NORVI_TRY_VALUE(seed, MakeSeed(options));
        NORVI_TRY(PrepareFolder(options.outputFolder));
        NORVI_TRY_VALUE(simulation, ReactionDiffusion::New(options.settings, seed));
        ReactionDiffusionReport report;
        NORVI_TRY_VALUE(run, RunDemo(simulation, options, "Growing", isQuiet));
        static_cast<DemoReport&>(report) = std::move(run);
        NORVI_TRY_VALUE(liveCells, simulation.CountLiveCells());
        report.liveCells = liveCells;
        report.cellsPerStep = simulation.GetCellsPerStep();
        report.bytesPerStep = simulation.GetBytesPerStep();
        return report;
    });
}

String ReportText(const ReactionDiffusionReport& report, const ReactionDiffusionOptions& options) {
    ReportRows rows = BeginReport(report, options, options.settings.size);
    rows.emplace_back("step kernel", fmt::format("{:.2f} s", report.stepSeconds));
    rows.emplace_back("invocations", fmt::format("{:.3f} G/s", GigaPerSecond(report, report.cellsPerStep)));
    rows.emplace_back("memory", fmt::format("{:.1f} GB/s", GigaPerSecond(report, report.bytesPerStep)));
    rows.emplace_back("workers", fmt::format("{}", JobQueue::GetThreadCount()));
    rows.emplace_back("live cells", fmt::format("{}", report.liveCells));
    return ReportText(rows);
}

} // namespace norvi
