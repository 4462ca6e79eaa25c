#include "norvi/progress.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace norvi {

namespace {

constexpr auto RedrawInterval = std::chrono::milliseconds(100);
constexpr Int QuarterCount = 4;
constexpr Int WidestBar = 40, NarrowestBar = 8;
constexpr Int LogColumns = 120; // where there is no terminal to ask

Int TerminalColumns(std::FILE* stream) {
    winsize size{};
    const Bool isKnown = ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : 80;
}

String RateText(double rate) {
    return rate < 10 ? fmt::format("{:.1f}", rate) : fmt::format("{:.0f}", rate);
}

String Bar(double fraction, Int width) {
    const auto filled = static_cast<std::size_t>(fraction * static_cast<double>(width));
    String bar(static_cast<std::size_t>(width), ' ');
    std::fill_n(bar.begin(), filled, '=');
    if (filled > 0 && filled < bar.size())
        bar[filled - 1] = '>';
    return "[" + bar + "] ";
}

} // namespace

String ClockText(double seconds) {
    const auto whole = static_cast<Int>(std::min(std::max(seconds, 0.0), 1e9) + 0.5);
    const Int hours = whole / 3600, minutes = whole / 60 % 60;
    return hours > 0 ? fmt::format("{}:{:02}:{:02}", hours, minutes, whole % 60)
                     : fmt::format("{}:{:02}", minutes, whole % 60);
}

String ProgressLine(const ProgressState& state, Int columns) {
    const double fraction = static_cast<double>(state.done) / static_cast<double>(state.total);
    String words = fmt::format("{:3.0f}%  {}/{}", std::floor(fraction * 100), state.done, state.total);
    if (state.done > 0 && state.seconds > 0) {
        const double rate = static_cast<double>(state.done) / state.seconds;
        words += fmt::format("  {} {}/s", RateText(rate), state.unit);
        if (state.done < state.total)
            words +=
                fmt::format("  {} left", ClockText(static_cast<double>(state.total - state.done) / rate));
        else
            words += fmt::format("  {}", ClockText(state.seconds));
    }
    if (!state.note.empty())
        words += "  " + state.note;

    String line = state.title + "  ";
    constexpr Int brackets = 3;
    const Int room = columns - static_cast<Int>(line.size() + words.size()) - brackets;
    if (room >= NarrowestBar)
        line += Bar(fraction, std::min(room, WidestBar));
    line += words;
    return line.substr(0, static_cast<std::size_t>(std::max<Int>(columns, 0)));
}

Progress::Progress(String title, Int total, String unit, Bool isQuiet, std::FILE* stream)
    : stream_(stream),
      mode_(isQuiet                  ? Mode::Silent
            : isatty(fileno(stream)) ? Mode::Terminal
                                     : Mode::Lines) {
    state_.title = std::move(title);
    state_.unit = std::move(unit);
    state_.total = std::max<Int>(total, 1);
    if (mode_ == Mode::Terminal)
        Draw();
}

Progress::~Progress() {
    if (mode_ == Mode::Silent)
        return;
    if (shown_ != state_.done)
        Draw();
    if (mode_ == Mode::Terminal)
        std::fputc('\n', stream_);
    std::fflush(stream_);
}

Bool Progress::IsDue(Int done) const {
    switch (mode_) {
    case Mode::Silent:
        return false;
    case Mode::Lines:
        return QuarterOf(done) > QuarterOf(shown_);
    case Mode::Terminal:
        return done >= state_.total ? shown_ < state_.total : Clock::now() - lastDrawn_ >= RedrawInterval;
    }
    return false;
}

void Progress::Update(Int done, String note) {
    state_.done = std::clamp<Int>(done, 0, state_.total);
    state_.note = std::move(note);
    state_.seconds = GetSeconds();
    if (IsDue(state_.done))
        Draw();
}

double Progress::GetSeconds() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
}

Int Progress::QuarterOf(Int done) const {
    return static_cast<Int>(static_cast<double>(done) / static_cast<double>(state_.total) * QuarterCount);
}

void Progress::Draw() {
    if (mode_ == Mode::Lines) {
        fmt::print(stream_, "{}\n", ProgressLine(state_, LogColumns));
    } else {
        // The last column stays free, where some terminals would wrap; what a longer line has left behind is
        // cleared.
        fmt::print(stream_, "\r{}\x1b[K", ProgressLine(state_, TerminalColumns(stream_) - 1));
    }
    std::fflush(stream_);
    shown_ = state_.done;
    lastDrawn_ = Clock::now();
}

} // namespace norvi
