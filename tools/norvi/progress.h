// How far a long job has come, on the standard error stream.
#pragma once

#include <chrono>
#include <cstdio>

#include <norvi/host/types.h>

namespace norvi {

/// What a progress line tells.
struct ProgressState {
    String title;       ///< what is being done
    String unit;        ///< what is counted: "steps"
    Int done = 0;       ///< of `total`
    Int total = 0;      ///< at least 1
    double seconds = 0; ///< since the start
    String note;        ///< shown last; may be empty
};

/// The line for a state, at most `columns` characters long:
///
///   Growing  [=========>          ]  50%  3000/6000  812 steps/s  0:04 left  412345 live
///
/// Rate and remaining time are means since the start. The bar takes what room the words leave and goes before
/// they are cut.
String ProgressLine(const ProgressState& state, Int columns);

/// A time as minutes and seconds ("0:04"), with hours in front where there are some ("1:02:03").
String ClockText(double seconds);

/// Shows the progress of a job while it lives. On a terminal one line is drawn again and again in place, at
/// most ten times a second, and ended by the destructor. Elsewhere each quarter of the job is a line of its
/// own. Used by one thread.
class Progress {
  public:
    /// @param total units that there are to do; less than 1 counts as 1.
    /// @param isQuiet shows nothing.
    Progress(String title, Int total, String unit, Bool isQuiet, std::FILE* stream = stderr);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    /// Draws the last state, if it is not shown yet, and ends the line.
    ~Progress();

    /// Would an update be shown now? Lets a caller save the work of making a note.
    Bool IsDue(Int done) const;
    /// Tells how much is done. Drawn if it is due, else kept for the end.
    void Update(Int done, String note = {});

    /// Since the start.
    double GetSeconds() const;

  private:
    using Clock = std::chrono::steady_clock;
    enum class Mode { Silent, Lines, Terminal };

    void Draw();
    Int QuarterOf(Int done) const;

    ProgressState state_;
    std::FILE* stream_;
    Mode mode_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point lastDrawn_ = start_;
    Int shown_ = 0; ///< the amount that was drawn last
};

} // namespace norvi
