// The job of "norvi demo reaction-diffusion": from a seed to pictures of what has grown.
#pragma once

#include "norvi/reaction_diffusion.h"

namespace norvi {

struct ReactionDiffusionOptions {
    static constexpr Int MaxSteps = 1'000'000'000;

    ReactionDiffusionSettings settings;
    String seedPicture; ///< a file, scaled to the grid; empty for the spiral
    Int steps = 6000;
    Int every = 0; ///< steps from picture to picture; 0 for one at the end
    String outputFolder = "reaction-diffusion";
};

/// "1024x768" into width and height.
Result<void> ParseSize(const String& text, ReactionDiffusionSettings& settings);

struct ReactionDiffusionReport {
    Int steps = 0; ///< fewer than asked for after Ctrl-C
    Int cellsPerStep = 0;
    Int bytesPerStep = 0;
    double stepSeconds = 0; ///< spent in steps, without pictures and counts
    UInt32 liveCells = 0;
    BaseArray<String> pictures; ///< files in the order of writing; at least one
};

/// Runs the job. What can be known to be wrong (settings, the seed picture, a folder that cannot be written
/// to) is found before the first step. Ctrl-C ends the run early, with a picture of what there is.
Result<ReactionDiffusionReport> RunReactionDiffusion(const ReactionDiffusionOptions& options, Bool isQuiet);

/// The report as a table, a line for each figure.
String ReportText(const ReactionDiffusionReport& report, const ReactionDiffusionOptions& options);

} // namespace norvi
