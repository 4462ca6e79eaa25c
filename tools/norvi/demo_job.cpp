#include "norvi/demo_job.h"

#include <cerrno>
#include <chrono>
#include <filesystem>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <norvi/host/formula.h>
#include <norvi/host/text.h>

#include "norvi/argument_text.h"
#include "norvi/interrupt.h"
#include "norvi/progress.h"
#include "norvi/video.h"

namespace norvi {

namespace {

using Clock = std::chrono::steady_clock;

Result<void> CompileFormula(const String& text) {
    const Float value = 0;
    const Int32 seed = 0;
    NORVI_TRY_VALUE(parser, FormulaParser::Alloc());
    NORVI_TRY(parser->AddFloatVariable("value", &value, 1));
    NORVI_TRY(parser->AddIntVariable("seed", &seed, 1));
    FormulaParserCacheRef cache;
    return parser->CalculateParserCache(cache, text, FormulaParser::AngleRadians, 1, 10, false);
}

/// One run, and what is told and kept of it.
class Job {
  public:
    Job(DemoSimulation& simulation, const DemoOptions& options, const char* title, Bool isQuiet)
        : simulation_(simulation), options_(options), progress_(title, options.steps, "steps", isQuiet) {}

    Result<DemoReport> Run() {
        while (report_.steps < options_.steps && !interrupt_.IsRequested()) {
            NORVI_TRY(Step());
            NORVI_TRY(Tell());
            if (options_.every > 0 && report_.steps % options_.every == 0)
                NORVI_TRY(SavePicture());
        }
        if (pictureStep_ != report_.steps)
            NORVI_TRY(SavePicture());
        if (options_.isFilmed) {
            report_.video = PathOf("video.mp4");
            NORVI_TRY(WriteVideo(report_.video, report_.pictures));
        }
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
        NORVI_TRY_VALUE(note, simulation_.MakeNote());
        progress_.Update(report_.steps, note);
        return OK;
    }

    Result<void> SavePicture() {
        NORVI_TRY_VALUE(picture, simulation_.Render());
        const String path = PathOf(fmt::format("step-{:06}.png", report_.steps));
        NORVI_TRY(WritePicture(path, picture));
        report_.pictures.push_back(path);
        pictureStep_ = report_.steps;
        return OK;
    }

    String PathOf(const String& name) const {
        return (std::filesystem::path(options_.outputFolder) / name).string();
    }

    DemoSimulation& simulation_;
    const DemoOptions& options_;
    DemoReport report_;
    Int pictureStep_ = -1;
    InterruptScope interrupt_;
    Progress progress_;
};

} // namespace

Result<GridSize> ParseSize(const String& text) {
    const auto parts = SplitText(text, 'x');
    const auto width = ParseInt(parts.front()), height = ParseInt(parts.back());
    if (parts.size() != 2 || !width || !height)
        return ArgumentError("--size", text, "a width and a height are needed, as in 1024x768");
    return GridSize{*width, *height};
}

Result<void> CheckSize(const GridSize& size, const GridLimits& limits) {
    const auto [width, height] = size;
    const String text = Format("@x@", width, height);
    if (width < limits.minSide || height < limits.minSide)
        return ArgumentError("--size", text,
                             Format("a grid has at least @ x @ cells", limits.minSide, limits.minSide));
    if (width > limits.maxSide || height > limits.maxSide || width * height > limits.maxCells)
        return ArgumentError(
            "--size", text,
            Format("a grid has at most @ cells on a side and @ in all", limits.maxSide, limits.maxCells));
    return OK;
}

Result<void> CheckFormula(const char* option, const String& text) {
    auto result = CompileFormula(text);
    if (result) {
        NORVI_TRY_VALUE(seeded, InjectSeed(text, "seed"));
        result = CompileFormula(seeded);
    }
    if (!result)
        return ArgumentError(option, text, result.GetError().GetMessage());
    return OK;
}

Result<void> CheckDemo(const DemoOptions& options) {
    constexpr Int most = DemoOptions::MaxSteps;
    if (options.steps < 1 || options.steps > most)
        return ArgumentError("--steps", ToText(options.steps), Format("from 1 to @ steps can be run", most));
    if (options.every < 0)
        return ArgumentError("--every", ToText(options.every),
                             "the steps between pictures cannot be negative");
    return options.isFilmed ? CheckVideo(options.every) : OK;
}

// Tries to write to it: permissions alone do not tell.
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

Result<DemoReport> RunDemo(DemoSimulation& simulation, const DemoOptions& options, const char* title,
                           Bool isQuiet) {
    return Job(simulation, options, title, isQuiet).Run();
}

ReportRows BeginReport(const DemoReport& report, const DemoOptions& options, const GridSize& size) {
    const Bool isEarly = report.steps < options.steps;
    return {{"grid", fmt::format("{} x {} cells", size.width, size.height)},
            {"steps", isEarly ? fmt::format("{} of {}, interrupted", report.steps, options.steps)
                              : fmt::format("{}", report.steps)}};
}

double GigaPerSecond(const DemoReport& report, Int perStep) {
    return static_cast<double>(perStep * report.steps) / std::max(report.stepSeconds, 1e-9) / 1e9;
}

String ReportText(const ReportRows& rows) {
    String text;
    for (const auto& [name, value] : rows)
        text += fmt::format("{:<14}{}\n", name, value);
    return text;
}

} // namespace norvi
