// norvi's samplers beside others: `sampling_benchmark [--quick]` prints the tables of docs/performance.md,
// for one thread and for two.
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <norvi/host/module.h>
#include <norvi/host/thread_services.h>

#include "harness.h"
#include "sampling_scene.h"

namespace norvi::benchmark {

namespace {

constexpr SamplingScene Scenes[] = {
    {"2-D RGBA F32 linear, repeat", 2, 1024, 4, TextureFormat::F32, WRAP_REPEAT},
    {"the same, one tile beside", 2, 1024, 4, TextureFormat::F32, WRAP_REPEAT, false, -1},
    {"2-D RGBA F32 linear, clamp", 2, 1024, 4, TextureFormat::F32, WRAP_CLAMP},
    {"2-D RGBA F32 linear, border", 2, 1024, 4, TextureFormat::F32, WRAP_BORDER},
    {"2-D RGBA F32 linear, sRGB", 2, 1024, 4, TextureFormat::F32, WRAP_REPEAT, true},
    {"3-D R F32 linear, clamp", 3, 128, 1, TextureFormat::F32, WRAP_CLAMP},
    {"2-D R U8 point", 2, 1024, 1, TextureFormat::U8, WRAP_REPEAT},
};

constexpr struct {
    const char* name;
    NorviForm form;
} Forms[] = {{"single", NorviForm::Single},
             {"run", NorviForm::Run},
             {"kernel, single", NorviForm::KernelSingle},
             {"kernel, run", NorviForm::KernelRun}};

std::vector<SamplingPeerRef> MakePeers() {
    std::vector<SamplingPeerRef> peers;
    peers.push_back(MakeOpenImageIOPeer());
#if defined(NORVI_WITH_OPENCL)
    peers.push_back(MakeOpenCLPeer());
#endif
#if defined(NORVI_WITH_VULKAN)
    peers.push_back(MakeVulkanPeer());
#endif
    std::erase(peers, nullptr);
    return peers;
}

/// The sum of all samples.
std::vector<double> TotalOf(const PreparedSampler& sampler, int channels) {
    std::vector<double> total(static_cast<std::size_t>(channels));
    for (int block = 0; block < BlockCount; ++block)
        for (int c = 0; c < channels; ++c)
            total[static_cast<std::size_t>(c)] += static_cast<double>(sampler.sums[block * 4 + c]);
    return total;
}

/// Those who take other samples must not be compared.
void CheckTotals(const std::string& name, const std::vector<double>& total,
                 const std::vector<double>& expected) {
    for (std::size_t c = 0; c < total.size(); ++c)
        if (!(std::abs(total[c] - expected[c]) <= 2e-5 * std::abs(expected[c]))) {
            std::fprintf(stderr, "sampling_benchmark: the samples of %s add up to %.9g, not to %.9g\n",
                         name.c_str(), total[c], expected[c]);
            std::exit(1);
        }
}

/// One scene: a column for each sampler, which is empty where it cannot do what the scene asks.
class Row {
  public:
    Row(const SamplingScene& scene, const std::vector<SamplingPeerRef>& peers) {
        const SamplingInput input(scene);
        for (const auto& [name, form] : Forms)
            Add(name, PrepareNorvi(input, form), scene.channels, false);
        for (const SamplingPeerRef& peer : peers)
            Add(peer->GetName(), peer->Prepare(input), scene.channels, true);
    }

    void Print(const std::string& label, const Settings& settings) const {
        const std::vector<Measurement> measurements = Measure(contenders_, settings);
        std::printf("| %s |", label.c_str());
        for (const int number : columns_) {
            if (number >= 0)
                PrintCell(measurements[static_cast<std::size_t>(number)]);
            std::printf(" |");
        }
        std::printf("\n");
        std::fflush(stdout);
    }

  private:
    void Add(const std::string& name, const PreparedSampler& sampler, int channels, bool isPeer) {
        columns_.push_back(sampler.run ? static_cast<int>(contenders_.size()) : -1);
        if (!sampler.run)
            return;
        sampler.run();
        const std::vector<double> total = TotalOf(sampler, channels);
        if (contenders_.empty())
            expected_ = total;
        CheckTotals(name, total, expected_);
        contenders_.push_back({name, sampler.run, isPeer});
    }

    static void PrintCell(const Measurement& measurement) {
        const double nanoseconds = measurement.seconds * 1e9 / SampleCount;
        std::printf(" %.0f, %.3g ns", 1000 / nanoseconds, nanoseconds);
        if (!measurement.isPeer && measurement.ratioToBestPeer > 0)
            std::printf(", **%.2f**", measurement.ratioToBestPeer);
    }

    std::vector<Contender> contenders_;
    std::vector<int> columns_; ///< number of the contender, or -1
    std::vector<double> expected_;
};

void PrintTable(int threads, const Settings& settings) {
    const std::vector<SamplingPeerRef> peers = MakePeers();
    std::printf("\n| %d thread%s: million samples a second, time of one, **to that of the best peer** |",
                threads, threads > 1 ? "s" : "");
    for (const auto& form : Forms)
        std::printf(" %s |", form.name);
    for (const SamplingPeerRef& peer : peers)
        std::printf(" %s |", peer->GetName());
    std::printf("\n|---|");
    for (std::size_t i = 0; i < std::size(Forms) + peers.size(); ++i)
        std::printf("---|");
    std::printf("\n");
    for (SamplingScene scene : Scenes)
        for (const bool isRandom : {true, false}) {
            scene.isRandom = isRandom;
            Row(scene, peers)
                .Print(std::string(scene.name) + (isRandom ? ", random" : ", scan lines"), settings);
        }
}

/// Leaves the process as many processors as it shall have threads. All contenders take their number from
/// that but for PoCL; with none of its own, the Vulkan driver works in the thread of its queue.
bool UseThreads(int threads) {
    cpu_set_t allowed, chosen;
    CPU_ZERO(&chosen);
    if (sched_getaffinity(0, sizeof(allowed), &allowed) != 0)
        return false;
    for (int processor = 0; processor < CPU_SETSIZE && CPU_COUNT(&chosen) < threads; ++processor)
        if (CPU_ISSET(processor, &allowed))
            CPU_SET(processor, &chosen);
    if (CPU_COUNT(&chosen) < threads || sched_setaffinity(0, sizeof(chosen), &chosen) != 0)
        return false;
    setenv("POCL_MAX_PTHREAD_COUNT", std::to_string(threads).c_str(), 1);
    setenv("LP_NUM_THREADS", threads > 1 ? std::to_string(threads).c_str() : "0", 1);
    JobQueue::SetThreadCount(threads);
    return true;
}

int Run(int threads, const Settings& settings) {
    if (!UseThreads(threads)) {
        std::printf("left out: %d threads, as there are not so many processors\n", threads);
        return 0;
    }
    g_norvi.SetInitializer(&ResolveDeclared);
    ModuleLoader modules;
    for (const char* folder : {NORVI_MODULES, NORVI_BENCHMARK_MODULES})
        if (const auto loaded = modules.LoadDirectory(folder); !loaded) {
            std::fprintf(stderr, "sampling_benchmark: %s\n", loaded.GetError().ToString().c_str());
            return 1;
        }
    PrintTable(threads, settings);
    return 0;
}

/// The same program with another number of threads: drivers and libraries start theirs once in a process.
bool RunAnew(const char* threads, bool isQuick) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        execl("/proc/self/exe", "sampling_benchmark", "--threads", threads, isQuick ? "--quick" : nullptr,
              nullptr);
        _exit(1);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

} // namespace

} // namespace norvi::benchmark

int main(int argc, char** argv) {
    using namespace norvi::benchmark;
    bool isQuick = false;
    int threads = 0;
    for (int i = 1; i < argc; ++i) {
        isQuick |= std::strcmp(argv[i], "--quick") == 0;
        if (std::strcmp(argv[i], "--threads") == 0 && i + 1 < argc)
            threads = std::atoi(argv[++i]);
    }
    if (threads > 0)
        return Run(threads, {.rounds = isQuick ? 3 : 7});
    return RunAnew("1", isQuick) && RunAnew("2", isQuick) ? 0 : 1;
}
