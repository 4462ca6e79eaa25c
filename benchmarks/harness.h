// Measures several ways of doing the same work against each other.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace norvi::benchmark {

struct Contender {
    std::string name;
    std::function<void()> run;
    bool isPeer = true; ///< peers are what norvi is compared with
};

struct Measurement {
    std::string name;
    bool isPeer = true;
    double seconds = 0;         ///< median time of one run
    double ratioToBestPeer = 0; ///< median over the rounds of time / time of the best peer in the same round
};

struct Settings {
    int rounds = 11;
    double secondsPerSample = 0.02; ///< a contender is repeated until a sample lasts so long
    double idleSeconds = 0;         ///< pause before each run, which is then timed by itself
};

/// Runs all contenders in turn, round after round, so that a machine that changes its speed does so for all
/// of them. The best peer is the one with the smallest median.
std::vector<Measurement> Measure(const std::vector<Contender>& contenders, const Settings& settings = {});

/// Prints one Markdown row: the label, then per contender the time per item in nanoseconds, then norvi's
/// ratio.
void PrintRow(const std::string& label, const std::vector<Measurement>& measurements, double items);
void PrintHeader(const std::vector<Contender>& contenders, const std::string& label);

} // namespace norvi::benchmark
