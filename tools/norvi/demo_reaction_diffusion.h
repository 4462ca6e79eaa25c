// The job of "norvi demo reaction-diffusion": from a seed to pictures of what has grown.
#pragma once

#include "norvi/reaction_diffusion.h"

namespace norvi {

struct ReactionDiffusionOptions : DemoOptions {
    ReactionDiffusionOptions() {
        steps = 6000;
        outputFolder = "reaction-diffusion";
    }

    ReactionDiffusionSettings settings;
    String seedPicture; ///< a file, scaled to the grid; empty for the spiral
};

struct ReactionDiffusionReport : DemoReport {
    Int cellsPerStep = 0;
    Int bytesPerStep = 0;
    UInt32 liveCells = 0;
};

/// Runs the job. What can be known to be wrong (settings, the seed picture, a folder that cannot be written
/// to) is found before the first step. Ctrl-C ends the run early, with a picture of what there is.
Result<ReactionDiffusionReport> RunReactionDiffusion(const ReactionDiffusionOptions& options, Bool isQuiet);

/// The report as a table, a line for each figure.
String ReportText(const ReactionDiffusionReport& report, const ReactionDiffusionOptions& options);

} // namespace norvi
