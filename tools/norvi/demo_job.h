// What all demonstrations share: steps with progress, pictures into a folder, a video, and a table at the
// end.
#pragma once

#include <utility>

#include "norvi/picture.h"

namespace norvi {

struct GridSize {
    Int width = 0;
    Int height = 0;
};

/// "1024x768", for the option --size.
Result<GridSize> ParseSize(const String& text);

/// The sizes that a demonstration can work on.
struct GridLimits {
    Int minSide;
    Int maxSide;
    Int maxCells;
};

Result<void> CheckSize(const GridSize& size, const GridLimits& limits);

/// The formula as it is typed, so that positions in errors are those that the user sees, and as the program
/// will run it, with `value` and `seed`.
Result<void> CheckFormula(const char* option, const String& text);

struct DemoOptions {
    static constexpr Int MaxSteps = 1'000'000'000;

    Int steps = 0;
    Int every = 0;         ///< steps from picture to picture; 0 for one at the end
    String outputFolder;   ///< for the pictures, made if need be
    Bool isFilmed = false; ///< makes a video of the pictures, with ffmpeg
};

struct DemoReport {
    Int steps = 0;              ///< fewer than asked for after Ctrl-C
    double stepSeconds = 0;     ///< spent in steps, without pictures and notes
    BaseArray<String> pictures; ///< files in the order of writing; at least one
    String video;               ///< a file; empty where none was asked for
};

/// What is run. Used by one thread.
class DemoSimulation {
  public:
    virtual ~DemoSimulation() = default;

    /// One time step.
    virtual Result<void> Step() = 0;
    /// The present state as three channels for a display.
    virtual Result<Picture> Render() = 0;
    /// A few words for the progress line.
    virtual Result<String> MakeNote() { return String(); }
};

/// Finds what can be known to be wrong before the first step: numbers, a missing ffmpeg.
Result<void> CheckDemo(const DemoOptions& options);

/// Makes the folder, and fails if nothing can be written there.
Result<void> PrepareFolder(const String& folder);

/// Runs the steps, after CheckDemo and PrepareFolder. Ctrl-C ends them early, with a picture of what there
/// is.
/// @param title what the progress line says is being done
Result<DemoReport> RunDemo(DemoSimulation& simulation, const DemoOptions& options, const char* title,
                           Bool isQuiet);

using ReportRows = BaseArray<std::pair<const char*, String>>;

/// The rows that all reports begin with: grid and steps.
ReportRows BeginReport(const DemoReport& report, const DemoOptions& options, const GridSize& size);
/// So many things a step, as billions a second.
double GigaPerSecond(const DemoReport& report, Int perStep);
/// A line for each row.
String ReportText(const ReportRows& rows);

} // namespace norvi
