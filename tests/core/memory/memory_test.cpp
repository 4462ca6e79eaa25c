// A program that runs out of memory at every place where it can, and dispatches that need none.
#include "core/memory/allocation.h"
#include "support/test_kernels.h"

namespace norvi {
namespace {

using U32 = BaseArray<UInt32>;
using Program = ParallelProgramInterface;

// Longer than what a string holds without memory of its own.
constexpr const char* LongFormula = "value * 2 + 3 * value - 4 * value + seed - seed";

/// What a caller does with a program. Arguments are made before memory gets scarce.
BaseArray<std::function<Result<void>(Program&)>> Life() {
    const auto bytes = [] {
        UntypedArray array = *UntypedArray::New(sizeof(UInt32), 50);
        std::fill_n(static_cast<UInt32*>(array.GetFirst()), 50, 3u);
        return array;
    };
    // The array is gone after the first try, so each try gets one.
    auto untyped = std::make_shared<BaseArray<UntypedArray>>();
    untyped->push_back(bytes());
    untyped->push_back(bytes());
    const DataType u32 = DataType::Of<UInt32>(), f32 = DataType::Of<Float32>();
    const Data numbers = U32(40, 1), formula = LongFormula, noFormula = "";
    const Url file = "some/where/with/a/formula.kernel_of_the_tests";
    const InternedId data = "data", u = "u", v = "v", w = "w", counter = "counter", k = "k", copy = "copy",
                     parameter = "formulaOfTheElements", scale = "scale", link = "link",
                     unknown = "unknownUniform", mode = "noiseMode_0", seed = "noiseSeed_0";
    return {
        [](Program& p) { return p.Init({}, {}, 0, false); },
        [=](Program& p) { return p.AddKernel(k, file, false, {}); },
        [=](Program& p) { return p.CreateUniformBuffer(data, f32, 300); },
        [=](Program& p) { return p.CreateUniformBuffer(data, f32, 400); },
        [=](Program& p) { return p.StoreUniformBufferData(u, numbers); },
        [=](Program& p) {
            return p.StoreUniformBufferData(v, u32, std::move((*untyped)[untyped->at(0).IsEmpty()]));
        },
        [=](Program& p) { return p.CopyBufferData(u, v, 10, 0, 10); },
        [=](Program& p) -> Result<void> {
            NORVI_TRY_VALUE(held, p.GetGlobalBufferData(u));
            return p.UpdateUniformBufferData(u, 0, held);
        },
        [=](Program& p) -> Result<void> {
            NORVI_TRY_VALUE(held, p.GetGlobalBufferData(u, 1, 20));
            return p.StoreUniformBufferData(w, held);
        },
        [=](Program& p) -> Result<void> {
            NORVI_TRY_VALUE(address, p.GetGlobalBufferLink(u));
            return p.SetGlobalBufferLink(link, address);
        },
        [=](Program& p) { return p.SetBufferToActiveKernelSameId(data); },
        [=](Program& p) { return p.SetBufferToActiveKernel(u, w); },
        [=](Program& p) { return p.SetUniform(scale, 2); },
        [=](Program& p) { return p.SetUniform(unknown, numbers); },
        [=](Program& p) { return p.SetUniform(seed, 1); },
        [=](Program& p) { return p.SetUniform(mode, 5); },
        [=](Program& p) { return p.AddAtomicCounter(counter, {}); },
        [=](Program& p) { return p.SetAtomicCounterToActiveKernel(counter); },
        [](Program& p) { return p.UpdateUniforms(); },
        // A formula that could not be compiled stays so until it is set again.
        [=](Program& p) -> Result<void> {
            NORVI_TRY(p.SetFormula(parameter, formula));
            return p.DispatchKernel(8, 1, 1, false);
        },
        [=](Program& p) -> Result<void> {
            Result<Data> held = p.GetGlobalBufferData(data);
            NORVI_TRY(held);
            NORVI_TRY(p.SetFormula(parameter, formula));
            return p.DispatchKernel(300, 1, 1, false);
        },
        [](Program& p) { return p.DispatchKernel(30, 2, 1, false); },
        [=](Program& p) { return p.SetFormula(parameter, noFormula); },
        [](Program& p) { return p.DispatchKernel(300, 1, 1, false); },
        [=](Program& p) { return p.ResizeUniformBuffer(data, 1000, false); },
        [](Program& p) { return p.DispatchKernel(300, 1, 1, false); },
        [=](Program& p) { return p.SwapBuffers(data, w); },
        [=](Program& p) { return p.SwapBuffers(data, w); },
        [](Program& p) { return p.UpdateUniforms(); },
        [=](Program& p) { return p.DeleteUniformBuffer(data); },
        [=](Program& p) { return p.CreateUniformBuffer(data, f32, 10); },
        [](Program& p) { return p.DispatchKernel(300, 1, 1, false); },
        [=](Program& p) { return p.CopyKernel(k, copy, false, {}); },
    };
}

class OutOfMemoryTest : public testing::Test {
  protected:
    OutOfMemoryTest() {
        classes.Enter<FormulaKernel>("formula.kernel_of_the_tests");
        g_sizes = {.threshold = 10};
        // What lives as long as the process is made once before.
        ExpectGoodLife(*std::make_shared<ParallelProgramCPUImpl>());
    }

    /// Runs a whole life in which nothing is scarce.
    static void ExpectGoodLife(Program& program) {
        const auto life = Life();
        for (std::size_t step = 0; step < life.size(); ++step)
            ASSERT_OK(life[step](program)) << "step " << step;
    }
    static void ExpectElements(Program& program, const InternedId& id, const U32& expected) {
        const Result<Data> data = program.GetGlobalBufferData(id);
        ASSERT_OK(data);
        const UntypedBlock block = (*data->Get<ArrayRef>())->GetBlock(0);
        const auto* first = static_cast<const UInt32*>(block.data);
        EXPECT_EQ(U32(first, first + block.count), expected);
    }

    const InternedId kept = "kept";
    KernelClasses classes;
    const UseWorkers workers{2};
    const ShareAllWork share{1};
};

/// Lets the allocation after the first `count` fail once: the operation that meets it fails, and succeeds
/// when it is tried again. Gives false when all went well without meeting it.
bool LiveWithOneFailure(Program& program, Int count) {
    const auto life = Life();
    bool hasFailed = false;
    for (std::size_t step = 0; step < life.size(); ++step) {
        if (!hasFailed)
            allocation::FailAfter(count, false);
        const Int before = allocation::GetCalls();
        const Result<void> result = life[step](program);
        count -= allocation::GetCalls() - before;
        const bool failedHere = allocation::StopFailing() && !hasFailed;
        hasFailed |= failedHere;
        if (result.IsOk())
            continue;
        EXPECT_TRUE(failedHere) << step << " " << result.GetError().ToString();
        EXPECT_TRUE(FailsWith(result, errorkind::OutOfMemory, "Out of memory")) << "step " << step;
        // A copy that failed stays in the table, where the next one meets it.
        const Bool isTaken = program.HasKernel("copy");
        const Result<void> again = life[step](program);
        EXPECT_TRUE(isTaken ? FailsWith(again, errorkind::IllegalArgument, "Kernel id is already used")
                            : Succeeds(again))
            << "step " << step << " again";
    }
    return hasFailed;
}

/// Lets all allocations after the first `count` fail: the first failure is the lack of memory. Gives false
/// when there was none.
bool LiveWithLastingFailure(Program& program, Int count) {
    const auto life = Life();
    allocation::FailAfter(count, true);
    const Error* first = nullptr;
    for (const auto& step : life)
        if (Result<void> result = step(program); !result.IsOk() && !first)
            first = result.TakeError();
    const bool hasFailed = allocation::StopFailing();
    EXPECT_EQ(first != nullptr, hasFailed);
    EXPECT_TRUE(FailsWith(Result<void>(first), errorkind::OutOfMemory, "Out of memory") || !hasFailed);
    return hasFailed;
}

TEST_F(OutOfMemoryTest, ProgramOutlivesOneFailureAndALongLackAtEachAllocation) {
    for (const auto live : {&LiveWithOneFailure, &LiveWithLastingFailure}) {
        Int count = 0;
        for (bool hasFailed = true; hasFailed && !HasFailure(); ++count) {
            const Int living = allocation::GetLiving();
            {
                const auto program = std::make_shared<ParallelProgramCPUImpl>();
                ASSERT_OK(program->StoreUniformBufferData(kept, U32{1, 2, 3}));
                hasFailed = live(*program, count);
                ExpectElements(*program, kept, {1, 2, 3});
                ASSERT_OK(program->Reset());
                ExpectGoodLife(*program);
            }
            EXPECT_EQ(allocation::GetLiving(), living) << "memory was lost, failure after " << count;
        }
        EXPECT_GT(count, 100) << "a life takes more allocations than that";
    }
}

TEST(DispatchAllocation, PlainDispatchAllocatesNothing) {
    KernelClasses classes;
    classes.Enter<Doubler>("doubler");
    for (const Int workers : {1, 2}) {
        const UseWorkers use(workers);
        for (const bool share : {false, true}) {
            SetLoopTuning({.chunkSize = 0, .beginOnCallersThread = !share});
            const auto program = std::make_shared<ParallelProgramCPUImpl>();
            ASSERT_OK(program->Init({}, {}, 0, false));
            ASSERT_OK(program->AddKernel("k", "doubler", false, {}));
            ASSERT_OK(program->CreateUniformBuffer("data", DataType::Of<UInt32>(), 100000));
            ASSERT_OK(program->SetBufferToActiveKernelSameId("data"));
            ASSERT_OK(program->UpdateUniforms());
            const auto dispatch = [&](UInt32 y) { return program->DispatchKernel(100000, y, 1, false); };
            for (const UInt32 y : {1u, 2u}) {
                ASSERT_OK(dispatch(y));
                const Int before = allocation::GetCalls();
                const Result<void> first = dispatch(y), second = dispatch(y);
                EXPECT_EQ(allocation::GetCalls() - before, 0) << workers << " workers";
                EXPECT_OK(first);
                EXPECT_OK(second);
            }
        }
    }
    SetLoopTuning({});
}

} // namespace
} // namespace norvi
