// Dispatches beside plain loops: `dispatch_benchmark [--quick]` prints the tables of docs/performance.md.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <norvi/host/module.h>
#include <norvi/host/thread_services.h>
#include <norvi/kernel/kernel_base.h>

#include "core/parallel_for.h"
#include "core/parallelprogram_cpu_impl.h"
#include "harness.h"
#include "peers.h"

namespace norvi::benchmark {

namespace {

Settings g_settings;

/// A benchmark without its kernels has nothing to say: any failure ends it.
template <typename T>
T Require(Result<T> result) {
    if (!result) {
        std::fprintf(stderr, "dispatch_benchmark: %s\n", result.GetError().ToString().c_str());
        std::exit(1);
    }
    if constexpr (!std::is_void_v<T>)
        return std::move(*result);
}

/// One kernel with what is bound to it.
class Job {
  public:
    explicit Job(const char* kernel) {
        Require(program_.Init({}, {}, 0, false));
        Require(program_.AddKernel("k", kernel, false, {}));
    }

    /// A bound buffer of `count` elements, zero-filled; the pointer holds as long as the job.
    template <typename T>
    T* Buffer(const char* name, Int count) {
        Require(program_.CreateUniformBuffer(name, DataType::Of<T>(), count));
        Require(program_.SetBufferToActiveKernelSameId(name));
        const Data link = Require(program_.GetGlobalBufferLink(name));
        T* first = static_cast<T*>((**link.Get<ArrayRef*>())->GetElement(0));
        std::memset(static_cast<void*>(first), 0, static_cast<std::size_t>(count) * sizeof(T));
        return first;
    }
    void Uniform(const char* name, const Data& value) { Require(program_.SetUniform(name, value)); }
    void Formula(const char* name, const char* text) { Require(program_.SetFormula(name, String(text))); }
    void Update() { Require(program_.UpdateUniforms()); }
    void Dispatch(UInt32 x, UInt32 y = 1) { Require(program_.DispatchKernel(x, y, 1, false)); }

  private:
    ParallelProgramCPUImpl program_;
};

Contender Norvi(std::function<void()> run) {
    return {"norvi", std::move(run), false};
}

/// The same dispatch with one virtual call for each invocation.
Contender NorviOneByOne(const std::function<void()>& run) {
    return {"norvi, call by call",
            [run] {
                SetLoopTuning({.useRanges = false});
                run();
                SetLoopTuning({});
            },
            false};
}

std::vector<Contender> WithPeers(const std::function<void()>& norvi,
                                 const std::function<void(Runner)>& peer) {
    std::vector<Contender> contenders{Norvi(norvi), NorviOneByOne(norvi)};
    for (Runner runner : AllRunners)
        contenders.push_back({NameOf(runner), [=] { peer(runner); }});
    return contenders;
}

struct Size {
    const char* name;
    int count;
};
constexpr Size Sizes[] = {{"64", 64}, {"1k", 1 << 10}, {"16k", 1 << 14}, {"1M", 1 << 20}, {"16M", 1 << 24}};

void MeasureRow(const std::string& label, const std::vector<Contender>& contenders, double items,
                bool isFirst) {
    if (isFirst)
        PrintHeader(contenders, "ns per invocation");
    PrintRow(label, Measure(contenders, g_settings), items);
}

void BenchmarkDoubler() {
    for (const Size& size : Sizes) {
        Job job("doubler.kernel");
        UInt32* data = job.Buffer<UInt32>("data", size.count);
        job.Uniform("scale", UInt32{3});
        job.Update();
        MeasureRow(std::string("doubler ") + size.name,
                   WithPeers([&] { job.Dispatch(static_cast<UInt32>(size.count)); },
                             [=](Runner r) { Doubler(r, data, 3, size.count); }),
                   size.count, size.count == 64);
    }
}

void BenchmarkSaxpy() {
    for (const Size& size : Sizes) {
        Job job("saxpy.kernel");
        const float* x = job.Buffer<Float32>("x", size.count);
        float* y = job.Buffer<Float32>("y", size.count);
        job.Uniform("a", 0.5f);
        job.Update();
        MeasureRow(std::string("saxpy ") + size.name,
                   WithPeers([&] { job.Dispatch(static_cast<UInt32>(size.count)); },
                             [=](Runner r) { Saxpy(r, x, y, 0.5f, size.count); }),
                   size.count, size.count == 64);
    }
}

void BenchmarkHeat() {
    constexpr int side = 2048;
    Job job("heat_2d.kernel");
    float* temperature = job.Buffer<Float32>("temperature", side * side);
    float* result = job.Buffer<Float32>("result", side * side);
    for (int i = 0; i < side * side; ++i)
        temperature[i] = static_cast<float>(i % 97);
    job.Uniform("width", Int32{side});
    job.Uniform("height", Int32{side});
    job.Uniform("diffusion", 0.2f);
    job.Update();
    MeasureRow("heat 2-D 2048 x 2048",
               WithPeers([&] { job.Dispatch(side - 2, side - 2); },
                         [=](Runner r) { Heat2D(r, temperature, result, side, side, 0.2f); }),
               double{side - 2} * (side - 2), true);
}

void BenchmarkMandelbrot() {
    constexpr int side = 1024;
    constexpr float centreX = -0.5f, scale = 3.0f / side;
    Job job("mandelbrot.kernel");
    UInt32* iterations = job.Buffer<UInt32>("iterations", side * side);
    job.Uniform("width", Int32{side});
    job.Uniform("height", Int32{side});
    job.Uniform("maxIterations", Int32{256});
    job.Uniform("centre", Vector2d32{centreX, 0});
    job.Uniform("scale", scale);
    job.Update();
    MeasureRow("Mandelbrot 1024 x 1024, 256 iterations",
               WithPeers([&] { job.Dispatch(side, side); },
                         [=](Runner r) { Mandelbrot(r, iterations, side, side, 256, centreX, 0, scale); }),
               double{side} * side, true);
}

struct Body {
    Vector32 position;
    Float32 mass;
};

void BenchmarkNBody() {
    constexpr int count = 8192;
    Job job("n_body.kernel");
    Body* bodies = job.Buffer<Body>("bodies", count);
    Body* next = job.Buffer<Body>("bodiesNext", count);
    Vector32* velocities = job.Buffer<Vector32>("velocities", count);
    for (int i = 0; i < count; ++i) {
        const auto angle = static_cast<float>(i);
        bodies[i] = {{std::cos(angle), std::sin(angle), angle / count}, 1.0f / count};
    }
    job.Uniform("count", Int32{count});
    job.Uniform("timeStep", 0.001f);
    job.Update();
    MeasureRow("n-body 8192",
               WithPeers([&] { job.Dispatch(count); },
                         [=](Runner r) {
                             NBody(r, &bodies->position.x, &next->position.x, &velocities->x, count, 0.001f);
                         }),
               count, true);
}

/// A kernel that does next to nothing, below its threshold.
class Touch final : public KernelOf<Touch> {
  public:
    Result<void> Init() noexcept override {
        SetWorkGroupSize({1, 1, 1});
        SetSingleThreadedThreshold(1);
        return OK;
    }
    Result<void> Kernel(const Vec3<UInt32>&, const Vec3<UInt32>&, const Vec3<UInt32>&) override {
        ++count_;
        return OK;
    }

  private:
    UInt64 count_ = 0;
};

void BenchmarkLatency() {
    static const Class touchClass("touch", &MakeObject<Touch>);
    Require(Registry::Get(registryid::KernelClasses).InsertEntry("touch", &touchClass));
    Job one("touch");
    auto direct = Require(Kernel::KernelRef::Create(&touchClass));
    Require(direct->Init());
    const Vec3<UInt32> zero;
    const std::vector<Contender> contenders{
        Norvi([&] { one.Dispatch(1); }),
        {"direct call", [&] { Require(direct->Kernel(zero, zero, zero)); }},
    };
    PrintHeader(contenders, "ns per dispatch");
    PrintRow("1 invocation below the threshold", Measure(contenders, g_settings), 1);

    constexpr int count = 64;
    Job job("doubler.kernel");
    UInt32* data = job.Buffer<UInt32>("data", count);
    job.Uniform("scale", UInt32{3});
    job.Update();
    const std::vector<Contender> small{
        Norvi([&] { job.Dispatch(count); }),
        {"oneTBB", [=] { Doubler(Runner::TBB, data, 3, count); }},
    };
    PrintHeader(small, "ns per dispatch");
    PrintRow("64 invocations, threshold 0, workers hot", Measure(small, g_settings), 1);
    Settings idle = g_settings;
    idle.rounds = 51;
    idle.idleSeconds = 0.02;
    PrintRow("64 invocations, threshold 0, after 20 ms idle", Measure(small, idle), 1);
}

void BenchmarkFormulas() {
    struct Row {
        const char* formula;
        const char* kernel;
    };
    static constexpr Row rows[] = {
        {"value * 2 + 0.1", "formula_cheap.kernel"},
        {"clamp(sin(value * 3) * 0.5 + 0.5; 0; 1)", "formula_typical.kernel"},
        {"exp(-value * value) * cos(value * 10) + sqrt(abs(value)) / (1 + value * value)",
         "formula_heavy.kernel"},
    };
    constexpr int count = 1 << 20;
    bool isFirst = true;
    for (const Row& row : rows) {
        Job formula("apply_formula.kernel"), written(row.kernel);
        for (Job* job : {&formula, &written}) {
            float* values = job->Buffer<Float32>("values", count);
            for (int i = 0; i < count; ++i)
                values[i] = static_cast<float>(i) / count;
            job->Buffer<Float32>("result", count);
            job->Uniform("count", Int32{count});
        }
        formula.Formula("formula", row.formula);
        formula.Update();
        written.Update();
        const std::vector<Contender> contenders{
            Norvi([&] { formula.Dispatch(count); }),
            {"written in C++", [&] { written.Dispatch(count); }},
        };
        if (isFirst)
            PrintHeader(contenders, "ns per invocation, 1M");
        isFirst = false;
        PrintRow(std::string("`") + row.formula + "`", Measure(contenders, g_settings), count);
    }
}

} // namespace

} // namespace norvi::benchmark

int main(int argc, char** argv) {
    using namespace norvi;
    using namespace norvi::benchmark;
    if (argc > 1 && std::strcmp(argv[1], "--quick") == 0)
        g_settings = {.rounds = 3, .secondsPerSample = 0.001};
    // The program's objects are linked in, where the loop can be tuned, and no loader sees them.
    g_norvi.SetInitializer(&ResolveDeclared);
    ModuleLoader modules;
    Require(modules.LoadDirectory(NORVI_MODULES));
    Require(modules.LoadDirectory(NORVI_BENCHMARK_MODULES));
    std::printf("%ld workers\n", static_cast<long>(JobQueue::GetThreadCount()));
    BenchmarkDoubler();
    BenchmarkSaxpy();
    BenchmarkHeat();
    BenchmarkMandelbrot();
    BenchmarkNBody();
    BenchmarkLatency();
    BenchmarkFormulas();
    Registry::Get(registryid::KernelClasses).EraseEntry("touch");
    return 0;
}
