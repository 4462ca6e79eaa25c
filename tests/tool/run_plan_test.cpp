#include "norvi/run_plan.h"

#include "tool_fixture.h"

namespace norvi {

namespace {

RunOptions Saxpy() {
    return Options("saxpy", "10", {"x=float32:10", "y=float32:10"}, {"a=2"});
}

RunOptions Heat() {
    return Options("heat_2d.kernel", "8x8", {"temperature=float32:10x10", "result=float32:10x10"},
                   {"width=10", "height=10", "diffusion=0.2"});
}

String PlanMessage(const RunOptions& options) {
    LoadedContext();
    return MessageOf(MakeRunPlan(options));
}

/// The message for sound options with one change.
template <typename Change>
String SaxpyMessage(Change&& change) {
    RunOptions options = Saxpy();
    change(options);
    return PlanMessage(options);
}

} // namespace

TEST(RunPlan, KernelsAreFoundWithAndWithoutSuffixAndNamesSuggested) {
    EXPECT_EQ(PlanMessage(Saxpy()), "");
    EXPECT_EQ(SaxpyMessage([](RunOptions& o) { o.kernel = "saxpy.kernel"; }), "");
    EXPECT_EQ(SaxpyMessage([](RunOptions& o) { o.kernel = "saxpi"; }),
              "there is no kernel 'saxpi'; did you mean 'saxpy'?");
    EXPECT_EQ(SaxpyMessage([](RunOptions& o) { o.kernel = "saxpy.kernle"; }),
              "there is no kernel 'saxpy.kernle'; did you mean 'saxpy.kernel'?");
    EXPECT_FALSE(SaxpyMessage([](RunOptions& o) { o.kernel = ""; }).empty());
    RunOptions heat = Heat();
    heat.uniforms[0] = "widht=10";
    EXPECT_EQ(PlanMessage(heat),
              "--uniform 'widht=10': kernel 'heat_2d.kernel' has no parameter 'widht'; did you "
              "mean 'width'?");
}

TEST(RunPlan, ArgumentsThatDoNotSuitTheKernelGiveErrors) {
    const struct {
        BaseArray<String> RunOptions::*list;
        const char* option;
        const char* text;
        const char* reason; ///< "@" is the kernel
    } cases[] = {
        {&RunOptions::uniforms, "uniform", "b=1", "@ has no parameter 'b'; there is x, y, a"},
        {&RunOptions::uniforms, "uniform", "x=1",
         "parameter 'x' of @ is of type buffer of float32; use --buffer"},
        {&RunOptions::uniforms, "uniform", "a=3", "parameter 'a' was given before"},
        {&RunOptions::buffers, "buffer", "a=float32:3",
         "parameter 'a' of @ is of type float32; use --uniform"},
        {&RunOptions::buffers, "buffer", "x=float32:3", "buffer 'x' was given before"},
        {&RunOptions::formulas, "formula", "f=value", "@ has no parameter 'f'; there is x, y, a"},
        {&RunOptions::counters, "counter", "a", "parameter 'a' of @ is of type float32; use --uniform"},
        {&RunOptions::noises, "noise", "0:1", "@ has no noise parameter"},
        {&RunOptions::fills, "fill", "z=1", "there is no buffer 'z'; there is x, y"},
        {&RunOptions::fills, "fill", "x=1,2", "float32 takes 1 or 1 numbers"},
        {&RunOptions::fills, "fill", "x=1e39", "float32 cannot hold 1e+39"},
        {&RunOptions::swaps, "swap", "x,z", "@ has no parameter 'z'; there is x, y, a"},
        {&RunOptions::bindings, "bind", "x=z", "there is no buffer 'z'; there is x, y"},
        {&RunOptions::outputs, "output", "z=z.npy", "@ has no parameter 'z'; there is x, y, a"},
    };
    for (const auto& [list, option, text, reason] : cases)
        EXPECT_EQ(SaxpyMessage([&](RunOptions& o) { (o.*list).push_back(text); }),
                  Format("--@ '@': @", option, text, Format(reason, "kernel 'saxpy.kernel'")));
}

TEST(RunPlan, BuffersMustBeGivenWithTheTypeOfTheParameter) {
    EXPECT_EQ(SaxpyMessage([](RunOptions& o) { o.buffers.pop_back(); }),
              "buffer parameter 'y' of kernel 'saxpy.kernel' was not given; add --buffer y=float32:COUNT");
    // Of the same size, but not the same type.
    EXPECT_EQ(SaxpyMessage([](RunOptions& o) { o.buffers[1] = "y=int32:10"; }),
              "--buffer 'y=int32:10': the elements are of type int32, but parameter 'y' of kernel "
              "'saxpy.kernel' takes "
              "float32");
    EXPECT_EQ(
        PlanMessage(Options("count_above", "1", {"values=float32:1"}, {})),
        "counter parameter 'counter' of kernel 'count_above.kernel' was not given; add --counter counter");
}

TEST(RunPlan, MissingUniformsAndNoiseAreWarnings) {
    LoadedContext();
    const auto plan =
        MakeRunPlan(Options("noise_field", "8x8", {"result=float32:64"}, {"width=8", "height=8", "scale=1"}));
    ASSERT_TRUE(plan) << MessageOf(plan);
    EXPECT_EQ(plan->warnings,
              (BaseArray<String>{
                  "uniform parameter 'time' of kernel 'noise_field.kernel' was not given and is zero",
                  "noise parameter 'noiseData' of kernel 'noise_field.kernel' was not given and is "
                  "zero; add --noise MODE:SEED"}));
}

TEST(RunPlan, GridsAreCountedAsTheyAreRun) {
    RunOptions options = Heat();
    options.grid = "3x20";
    LoadedContext();
    const auto plan = MakeRunPlan(options);
    ASSERT_TRUE(plan) << MessageOf(plan);
    EXPECT_EQ(plan->invocations, 8 * 20);
    options.grid = "1x4294967295";
    EXPECT_EQ(PlanMessage(options), "--grid '1x4294967295': raised to the work group size 8x8x1 of kernel "
                                    "'heat_2d.kernel' it has more than 4294967295 invocations");
}

TEST(RunPlan, StepsOutputsAndFormulasNeedFittingRanges) {
    RunOptions formula = Options("apply_formula", "10x10", {"values=float32:100", "result=float32:100"}, {});
    formula.formulas = {"formula=value*2"};
    EXPECT_EQ(PlanMessage(formula),
              "--formula 'formula=value*2': formulas need a grid of one dimension; in others they "
              "are not evaluated");
    EXPECT_EQ(SaxpyMessage([](RunOptions& o) { o.steps = 0; }), "--steps '0': expected 1 to 1000000000");
    EXPECT_EQ(SaxpyMessage([](RunOptions& o) { o.outputEvery = 2; }),
              "--output-every '2': expected 1 to the number of steps, 1");
    EXPECT_EQ(SaxpyMessage([](RunOptions& o) {
                  o.outputEvery = 1;
                  o.outputs = {"y=y.npy"};
              }),
              "--output-every '1': no --output has {step} in the name of its file");
}

} // namespace norvi
