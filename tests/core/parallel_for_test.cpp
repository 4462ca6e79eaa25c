// Failures inside of parallel dispatches.
#include <atomic>
#include <chrono>
#include <random>
#include <thread>

#include "support/test_kernels.h"

namespace norvi {
namespace {

/// Invocation 0 fails at once; the others wait for it and then take their time.
class FailsFirst final : public DeclaredKernel<FailsFirst> {
  public:
    void Declare() { TakeSizes(); }
    Result<void> Kernel(const Vec3<UInt32>& global, const Vec3<UInt32>&, const Vec3<UInt32>&) override {
        ++started;
        if (global.x == 0 && global.y == 0) {
            hasFailed = true;
            return IllegalStateError("the first one fails");
        }
        while (!hasFailed)
            std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::microseconds(10));
        return OK;
    }
    static inline std::atomic<UInt32> started;
    static inline std::atomic<bool> hasFailed;
};

class ParallelForTest : public ProgramTest {
  protected:
    ParallelForTest() {
        classes.Enter<Recorder>("recorder");
        classes.Enter<RangeRecorder>("range");
        classes.Enter<FailsFirst>("fails");
        g_sizes = {};
    }
};

TEST_F(ParallelForTest, FailureEndsTheDispatchEarly) {
    constexpr UInt32 count = 1000000;
    AddKernel("fails");
    for (const bool share : {false, true})
        for (const Int workers : {1, 2, 3})
            for (const UInt32 y : {1u, 2u}) {
                const UseWorkers use(workers);
                SetLoopTuning({.chunkSize = 0, .beginOnCallersThread = !share});
                FailsFirst::started = 0;
                FailsFirst::hasFailed = false;
                EXPECT_TRUE(FailsWith(program->DispatchKernel(count, y, 1, false), errorkind::IllegalState,
                                      "the first one fails"));
                EXPECT_LT(FailsFirst::started, count / 10);
                SetLoopTuning({});
            }
}

TEST_F(ParallelForTest, FirstFailureOnTheCallersThreadIsTheLastInvocation) {
    for (const char* kernel : {"recorder", "range"}) {
        g_sizes.threshold = 100;
        ASSERT_OK(program->Reset());
        AddKernel(kernel);
        BaseArray<UChar> fails(100);
        fails[40] = fails[60] = 1;
        StoreAndBind("seen", BaseArray<Invocation>(100));
        StoreAndBind("fails", fails);
        ASSERT_OK(program->SetUniform("gridX", UInt32{100}));
        ASSERT_OK(program->UpdateUniforms());
        EXPECT_TRUE(FailsWith(program->DispatchKernel(100, 1, 1, false), errorkind::IllegalState,
                              "invocation 40 fails"));
        const BaseArray<Invocation> seen = Read<Invocation>("seen");
        for (UInt32 i = 0; i < 100; ++i)
            EXPECT_EQ(seen[i].times, i <= 40 ? 1u : 0u) << i;
    }
}

TEST_F(ParallelForTest, FailuresAtRandomPlacesAreReportedAndForgotten) {
    constexpr UInt32 count = 3000;
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        const UseWorkers use(static_cast<Int>(1 + random() % 4));
        const ShareAllWork share(static_cast<UInt32>(random() % 3 == 0 ? 0 : 1 + random() % 50));
        const bool isFlat = random() % 2;
        ASSERT_OK(program->Reset());
        AddKernel(random() % 2 ? "recorder" : "range");
        BaseArray<UChar> fails(count);
        for (UInt32 n = random() % 6; n > 0; --n)
            fails[random() % count] = 1;
        StoreAndBind("fails", fails);
        StoreAndBind("seen", BaseArray<Invocation>(count));
        ASSERT_OK(program->SetUniform("gridX", isFlat ? count : UInt32{100}));
        ASSERT_OK(program->SetUniform("gridY", isFlat ? UInt32{1} : UInt32{30}));
        ASSERT_OK(program->UpdateUniforms());
        const auto dispatch = [&] {
            return program->DispatchKernel(isFlat ? count : 100, isFlat ? 1 : 30, 1, false);
        };
        const Result<void> result = dispatch();
        const BaseArray<Invocation> seen = Read<Invocation>("seen");
        bool mayFail = false, isNamed = false;
        for (UInt32 i = 0; i < count; ++i) {
            EXPECT_LE(seen[i].times, 1u);
            mayFail |= fails[i];
            if (fails[i] && !result.IsOk() && seen[i].times == 1)
                isNamed |= result.GetError().GetMessage() == Format("invocation @ fails", i);
        }
        EXPECT_EQ(result.IsOk(), !mayFail);
        EXPECT_EQ(isNamed, mayFail);
        // Nothing of it is left for the next one.
        Store("fails", BaseArray<UChar>(count));
        Store("seen", BaseArray<Invocation>(count));
        ASSERT_OK(dispatch());
        for (const Invocation& invocation : Read<Invocation>("seen"))
            EXPECT_EQ(invocation.times, 1u);
    }
}

TEST_F(ParallelForTest, LoopCoversAnyRange) {
    struct Seen {
        std::atomic<UInt64> sum{0}, count{0};
    };
    for (const Int workers : {1, 2, 5})
        for (const bool begin : {false, true})
            for (const auto& [from, to] :
                 {std::pair{0u, 0u}, {5u, 5u}, {9u, 3u}, {3u, 1000u}, {4294967000u, 4294967295u}})
                for (const Int granularity : {Int{0}, Int{7}, Int{1} << 40}) {
                    const UseWorkers use(workers);
                    SetLoopTuning({.chunkSize = 0, .beginOnCallersThread = begin});
                    Seen seen;
                    const auto body = [&](Int worker, UInt32 first, UInt32 last,
                                          const std::atomic<bool>&) -> Result<void> {
                        EXPECT_LT(worker, workers);
                        for (UInt32 i = first; i < last; ++i) {
                            seen.sum += i;
                            ++seen.count;
                        }
                        return OK;
                    };
                    EXPECT_OK(ParallelFor(from, to, granularity, MakeLoopBody(body)));
                    const UInt64 length = to > from ? to - from : 0;
                    EXPECT_EQ(seen.count, length);
                    EXPECT_EQ(seen.sum, length == 0 ? 0 : (UInt64{from} + to - 1) * length / 2);
                }
    SetLoopTuning({});
}

} // namespace
} // namespace norvi
