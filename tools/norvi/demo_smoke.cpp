#include "norvi/demo_smoke.h"

#include <fmt/format.h>

#include <norvi/host/thread_services.h>

#include "norvi/smoke_source.h"

namespace norvi {

namespace {

Result<Picture> MakeSource(const SmokeOptions& options) {
    const auto [width, height] = options.settings.size;
    if (options.picture.empty())
        return EmberPicture(width, height);
    return ReadSmokeSource(options.picture, width, height);
}

} // namespace

Result<SmokeReport> RunSmoke(const SmokeOptions& options, Bool isQuiet) {
    return CatchOutOfMemory([&]() -> Result<SmokeReport> {
        NORVI_TRY(CheckDemo(options));
        NORVI_TRY(CheckSettings(options.settings));
        NORVI_TRY_VALUE(source, MakeSource(options));
        NORVI_TRY(PrepareFolder(options.outputFolder));
        NORVI_TRY_VALUE(simulation, Smoke::New(options.settings, source));
        NORVI_TRY_VALUE(run, RunDemo(simulation, options, "Swirling", isQuiet));
        return SmokeReport{std::move(run), simulation.GetInvocationsPerStep(),
                           simulation.GetSamplesPerStep()};
    });
}

String ReportText(const SmokeReport& report, const SmokeOptions& options) {
    ReportRows rows = BeginReport(report, options, options.settings.size);
    const double stepSeconds = report.stepSeconds / static_cast<double>(std::max(report.steps, Int{1}));
    rows.emplace_back("time",
                      fmt::format("{:.2f} s, {:.1f} ms a step", report.stepSeconds, stepSeconds * 1e3));
    rows.emplace_back("invocations",
                      fmt::format("{:.3f} G/s", GigaPerSecond(report, report.invocationsPerStep)));
    rows.emplace_back("samples",
                      fmt::format("at most {:.3f} G/s", GigaPerSecond(report, report.samplesPerStep)));
    rows.emplace_back("workers", fmt::format("{}", JobQueue::GetThreadCount()));
    return ReportText(rows);
}

} // namespace norvi
