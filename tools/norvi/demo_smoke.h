// The job of "norvi demo smoke": from a picture, or embers, to pictures of the smoke.
#pragma once

#include "norvi/smoke.h"

namespace norvi {

struct SmokeOptions : DemoOptions {
    SmokeOptions() {
        steps = 400;
        outputFolder = "smoke";
    }

    SmokeSettings settings;
    String picture; ///< a file, scaled to the grid; empty for the embers
};

struct SmokeReport : DemoReport {
    Int invocationsPerStep = 0;
    Int samplesPerStep = 0;
};

/// Runs the job. What can be known to be wrong (settings, the picture, a folder that cannot be written to, a
/// missing ffmpeg) is found before the first step. Ctrl-C ends the run early, with a picture of what there
/// is.
Result<SmokeReport> RunSmoke(const SmokeOptions& options, Bool isQuiet);

/// The report as a table, a line for each figure.
String ReportText(const SmokeReport& report, const SmokeOptions& options);

} // namespace norvi
