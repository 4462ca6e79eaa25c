#include "harness.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

namespace norvi::benchmark {

namespace {

using Clock = std::chrono::steady_clock;

double SecondsOf(const std::function<void()>& run, int repetitions) {
    const auto start = Clock::now();
    for (int i = 0; i < repetitions; ++i)
        run();
    return std::chrono::duration<double>(Clock::now() - start).count() / repetitions;
}

int RepetitionsFor(const Contender& contender, double secondsPerSample) {
    contender.run();
    const double once = std::min(SecondsOf(contender.run, 1), SecondsOf(contender.run, 3));
    return static_cast<int>(std::clamp(secondsPerSample / std::max(once, 1e-9), 1.0, 1e6));
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// The threads of a peer may spin for milliseconds after its last run, as OpenMP's do, and take the processor
// from the next contender.
constexpr auto PauseBetweenContenders = std::chrono::milliseconds(15);

double TakeSample(const Contender& contender, int repetitions, double idleSeconds) {
    if (idleSeconds > 0) {
        std::this_thread::sleep_for(std::chrono::duration<double>(idleSeconds));
    } else {
        std::this_thread::sleep_for(PauseBetweenContenders);
        SecondsOf(contender.run,
                  std::max(repetitions / 4, 1)); // others have driven the data out of the caches
    }
    return SecondsOf(contender.run, repetitions);
}

using Samples = std::vector<std::vector<double>>; // per contender, per round

Samples TakeSamples(const std::vector<Contender>& contenders, const Settings& settings) {
    std::vector<int> repetitions;
    for (const Contender& contender : contenders)
        repetitions.push_back(
            settings.idleSeconds > 0 ? 1 : RepetitionsFor(contender, settings.secondsPerSample));
    Samples samples(contenders.size());
    for (int round = 0; round < settings.rounds; ++round)
        for (std::size_t step = 0; step < contenders.size(); ++step) {
            // Each round begins with another contender, so that none always follows the same one.
            const std::size_t i = (step + static_cast<std::size_t>(round)) % contenders.size();
            samples[i].push_back(TakeSample(contenders[i], repetitions[i], settings.idleSeconds));
        }
    return samples;
}

} // namespace

std::vector<Measurement> Measure(const std::vector<Contender>& contenders, const Settings& settings) {
    const Samples samples = TakeSamples(contenders, settings);
    std::vector<Measurement> measurements;
    const std::vector<double>* best = nullptr;
    for (std::size_t i = 0; i < contenders.size(); ++i) {
        measurements.push_back({contenders[i].name, contenders[i].isPeer, Median(samples[i]), 0});
        if (contenders[i].isPeer && (!best || Median(samples[i]) < Median(*best)))
            best = &samples[i];
    }
    for (std::size_t i = 0; best && i < contenders.size(); ++i) {
        std::vector<double> ratios;
        for (std::size_t round = 0; round < best->size(); ++round)
            ratios.push_back(samples[i][round] / (*best)[round]);
        measurements[i].ratioToBestPeer = Median(ratios);
    }
    return measurements;
}

void PrintHeader(const std::vector<Contender>& contenders, const std::string& label) {
    std::printf("\n| %s |", label.c_str());
    for (const Contender& contender : contenders)
        std::printf(" %s |", contender.name.c_str());
    std::printf(" norvi / best peer |\n|---|");
    for (std::size_t i = 0; i <= contenders.size(); ++i)
        std::printf("---|");
    std::printf("\n");
}

void PrintRow(const std::string& label, const std::vector<Measurement>& measurements, double items) {
    std::printf("| %s |", label.c_str());
    double ratio = 0;
    for (const Measurement& m : measurements) {
        std::printf(" %.4g |", m.seconds * 1e9 / items);
        if (!m.isPeer && ratio == 0)
            ratio = m.ratioToBestPeer;
    }
    std::printf(" %.3f |\n", ratio);
    std::fflush(stdout);
}

} // namespace norvi::benchmark
