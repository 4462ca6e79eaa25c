// Formulas of kernels: each worker evaluates its own, and what is replaced is gone.
#include <norvi/formula_data.h>

#include "support/test_kernels.h"

namespace norvi {
namespace {

constexpr const char* Parameter = "formulaOfTheElements";

class FormulaTest : public ProgramTest {
  protected:
    FormulaTest() {
        classes.Enter<FormulaKernel>("formula");
        g_sizes = {};
        AddFormulaKernel();
    }

    void AddFormulaKernel() {
        AddKernel("formula");
        StoreAndBind("data", BaseArray<Float32>(300));
        ASSERT_OK(program->UpdateUniforms());
    }
    /// Dispatches over all of "data" and compares it with factor * x + offset.
    void ExpectLine(Float32 factor, Float32 offset) {
        ASSERT_OK(program->DispatchKernel(300, 1, 1, false));
        BaseArray<Float32> expected(300);
        for (int x = 0; x < 300; ++x)
            expected[static_cast<std::size_t>(x)] = factor * static_cast<Float32>(x) + offset;
        EXPECT_EQ(Read<Float32>("data"), expected);
    }
};

TEST_F(FormulaTest, EvaluatesForEveryNumberOfWorkersAndThreshold) {
    ASSERT_OK(program->SetFormula(Parameter, "2 * value + (seed - 1000 - value) + 5"));
    const auto run = [&](Int workers, Int threshold, UInt32 chunkSize) {
        const UseWorkers use(workers);
        const ShareAllWork share(chunkSize);
        g_sizes.threshold = threshold;
        ASSERT_OK(program->CopyKernel("k", Format("@ @ @", workers, threshold, chunkSize), false, {}));
        program->SetActiveKernel(Format("@ @ @", workers, threshold, chunkSize));
        ASSERT_OK(program->SetUniform("scale", 3));
        ASSERT_OK(program->UpdateUniforms());
        // Twice: the second one finds the formulas made.
        ExpectLine(6, 15);
        ExpectLine(6, 15);
    };
    for (const Int workers : {1, 2, 3, 7})
        for (const Int threshold : {Int{0}, Int{299}, Int{300}})
            for (const UInt32 chunkSize : {0u, 1u, 300u})
                run(workers, threshold, chunkSize);
}

TEST_F(FormulaTest, OneKernelThroughAllItsStates) {
    const auto with = [&](Int workers, bool share) {
        JobQueue::SetThreadCount(workers);
        SetLoopTuning({.chunkSize = share ? 1u : 0u, .beginOnCallersThread = !share});
    };
    EXPECT_OK(program->SetFormula(Parameter, "")) << "there is none to clear";
    ExpectLine(1, 0);
    ASSERT_OK(program->SetFormula(Parameter, "value + 1"));
    with(2, true);
    ExpectLine(1, 1);
    with(3, true);
    ExpectLine(1, 1);
    with(1, true);
    ExpectLine(1, 1);
    ASSERT_OK(program->SetFormula(Parameter, "value + 7"));
    ASSERT_OK(program->SetFormula(Parameter, "value + 2"));
    with(2, false);
    ExpectLine(1, 2);
    // Three dimensions know no formulas, and none of those before.
    ASSERT_OK(program->DispatchKernel(300, 2, 1, false));
    EXPECT_EQ(Read<Float32>("data")[10], 10.0f);
    ExpectLine(1, 2);
    // A kernel that runs alone keeps one formula of its own; with more workers that one is replaced.
    g_sizes.threshold = 10;
    ASSERT_OK(program->CopyKernel("k", "copy", false, {}));
    program->SetActiveKernel("copy");
    ASSERT_OK(program->UpdateUniforms());
    ASSERT_OK(program->DispatchKernel(10, 1, 1, false));
    ExpectLine(1, 2);
    ASSERT_OK(program->DispatchKernel(300, 2, 1, false));
    EXPECT_EQ(Read<Float32>("data")[10], 10.0f);
    ASSERT_OK(program->SetFormula(Parameter, ""));
    ASSERT_OK(program->DispatchKernel(10, 1, 1, false));
    ExpectLine(1, 0);
    program->SetActiveKernel("k");
    ExpectLine(1, 2);
    with(0, false);
}

TEST_F(FormulaTest, BrokenFormulaFailsAtEachDispatchUntilItIsReplaced) {
    for (const Int threshold : {Int{0}, Int{300}}) {
        g_sizes.threshold = threshold;
        ASSERT_OK(program->Reset());
        AddFormulaKernel();
        ASSERT_OK(program->SetFormula(Parameter, "value + sni(value)"));
        String first;
        for (int round = 0; round < 3; ++round) {
            const Result<void> result = program->DispatchKernel(300, 1, 1, false);
            ASSERT_FALSE(result.IsOk());
            EXPECT_TRUE(result.GetError().Is(errorkind::IllegalArgument));
            EXPECT_EQ(result.GetError().GetMessage().find("Formula error at column 9: "), 0u);
            first = first.empty() ? result.GetError().GetMessage() : first;
            EXPECT_EQ(result.GetError().GetMessage(), first);
        }
        EXPECT_EQ(Read<Float32>("data")[1], 0.0f) << "nothing ran";
        ASSERT_OK(program->SetFormula(Parameter, "value + 3"));
        ExpectLine(1, 3);
    }
}

TEST_F(FormulaTest, RandomCallsTakeTheSeed) {
    ASSERT_OK(program->SetFormula(Parameter, "rnd(value)"));
    ASSERT_OK(program->DispatchKernel(300, 1, 1, false));
    const BaseArray<Float32> injected = Read<Float32>("data");
    ASSERT_OK(program->SetFormula(Parameter, "rnd(value; seed)"));
    ASSERT_OK(program->DispatchKernel(300, 1, 1, false));
    EXPECT_EQ(Read<Float32>("data"), injected);
    EXPECT_NE(injected[1], injected[2]);
    ASSERT_OK(program->SetFormula(Parameter, "rnd(value; 3)"));
    ASSERT_OK(program->DispatchKernel(300, 1, 1, false));
    EXPECT_NE(Read<Float32>("data"), injected);
}

TEST_F(FormulaTest, OnlyTextForAFormulaParameterIsOne) {
    ASSERT_OK(program->SetFormula(Parameter, "value + 1"));
    EXPECT_TRUE(FailsWith(program->SetFormula(Parameter, UInt32{1}), errorkind::IllegalState,
                          "Data holds uint32, but String is needed."));
    // One that no parameter takes does no harm.
    ASSERT_OK(program->SetFormula("unknown", "value + 2"));
    ExpectLine(1, 1);
    // One for a parameter of another kind fails until it is taken back.
    ASSERT_OK(program->SetFormula("scale", "value"));
    EXPECT_TRUE(
        FailsWith(program->DispatchKernel(300, 1, 1, false), errorkind::IllegalState,
                  "what is bound to 'scale' is of type norvi::FormulaData*, but the kernel's parameter is of "
                  "type float32"));
    ASSERT_OK(program->SetFormula("scale", ""));
    ExpectLine(1, 1);
    ASSERT_OK(program->DispatchKernel(300, 2, 1, false));
}

} // namespace
} // namespace norvi
