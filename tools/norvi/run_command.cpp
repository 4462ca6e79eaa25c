#include "norvi/run_command.h"

#include "norvi/kernel_run.h"

namespace norvi {

namespace {

struct ListOption {
    const char* name;
    const char* valueName;
    BaseArray<String> RunOptions::*values;
    const char* help;
};

// Each may be given any number of times.
constexpr ListOption listOptions[] = {
    {"--buffer", "NAME=SOURCE", &RunOptions::buffers,
     "A buffer: TYPE:COUNT or kernel:COUNT for zeros (COUNT may be WxH; kernel takes the parameter's type), "
     "FILE.npy, or a picture with :rgb or :luminance behind it if need be"},
    {"--texture", "NAME=SOURCE", &RunOptions::textures,
     "A texture: a picture, or WxH for zeros; behind it may stand "
     ":wrap=repeat|clamp|border|none,filter=point|linear,normalized,srgb"},
    {"--bind", "PARAMETER=BUFFER", &RunOptions::bindings, "Binds a buffer of another name to a parameter"},
    {"--fill", "NAME=VALUE", &RunOptions::fills, "Fills a buffer with a value (V or V,V,... for vectors)"},
    {"--ramp", "NAME=FROM:TO", &RunOptions::ramps, "Fills a buffer with evenly spaced values"},
    {"--random", "NAME=SEED", &RunOptions::randoms,
     "Fills a buffer with random values: floats from 0 to below 1, integers over their whole range"},
    {"--uniform", "NAME=VALUE", &RunOptions::uniforms, "A uniform value (V,V,... for vectors and matrices)"},
    {"--formula", "NAME=TEXT", &RunOptions::formulas, "A formula; grids of one dimension only"},
    {"--counter", "NAME[=START]", &RunOptions::counters, "An atomic counter; printed at the end"},
    {"--noise", "MODE:SEED", &RunOptions::noises, "The kernel's next noise; MODE is a number or a name"},
    {"--swap", "A,B", &RunOptions::swaps,
     "Exchanges the buffers or textures of two parameters between steps"},
    {"--output", "NAME=FILE", &RunOptions::outputs,
     "Writes what is bound to a parameter: FILE.npy, or a picture with :WxH[:BLACK:WHITE] behind it; {step} "
     "in the "
     "name stands for the number of the step"},
};

void AddOptions(CLI::App& command, RunOptions& options) {
    command.add_option("KERNEL", options.kernel, "Name of the kernel, with or without suffix")->required();
    command.add_option("--grid", options.grid, "Invocations of a step: X, XxY or XxYxZ")
        ->required()
        ->type_name("SIZE");
    command.add_option("--steps", options.steps, "How many times the kernel is dispatched")
        ->type_name("N")
        ->capture_default_str();
    for (const ListOption& option : listOptions)
        command.add_option(option.name, options.*option.values, option.help)
            ->type_name(option.valueName)
            ->allow_extra_args(false);
    command
        .add_option("--output-every", options.outputEvery,
                    "Writes outputs with {step} every so many steps too")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
}

} // namespace

void AddRunCommand(CLI::App& app, CommandContext& context) {
    const auto options = std::make_shared<RunOptions>();
    CLI::App* command = app.add_subcommand("run", "Run a kernel");
    AddOptions(*command, *options);
    command->footer(ExamplesText({
        "norvi run doubler --grid 100 --buffer data=uint32:100 --uniform scale=2 --output data=doubled.npy",
        "norvi run saxpy --grid 1000000 --steps 100 --buffer x=float32:1000000 --buffer y=float32:1000000 "
        "--ramp x=0:1 --uniform a=0.5",
        "norvi run noise_field --grid 320x200 --buffer result=float32:320x200 --uniform width=320 "
        "--uniform height=200 --uniform scale=0.02 --uniform time=0 --noise perlin:1 --output "
        "result=noise.png",
        "norvi run histogram --grid 64000 --buffer values=noise.png --buffer bins=uint32:10 --counter "
        "outside "
        "--uniform count=64000 --uniform binCount=10 --uniform lowest=0 --uniform highest=1 --output "
        "bins=bins.npy",
        "norvi run heat_2d --grid 318x198 --steps 200 --buffer temperature=noise.png --buffer "
        "result=noise.png "
        "--swap temperature,result --uniform width=320 --uniform height=200 --uniform diffusion=0.2 "
        "--output-every 100 --output \"result=heat-{step}.png\"",
        "norvi run resample --grid 480x300 --texture picture=noise.png:normalized,wrap=border --texture "
        "result=480x300 "
        "--uniform angle=0.3 --uniform zoom=0.8 --output result=turned.png",
        "norvi run apply_formula --grid 1000 --buffer values=float32:1000 --ramp values=0:6.28 "
        "--buffer result=float32:1000 --uniform count=1000 --uniform randomSeed=1 --formula "
        "\"formula=sin(value)\" "
        "--output result=sine.npy",
    }));
    command->callback([options, &context] {
        context.action = [options](CommandContext& c) { return RunKernel(*options, c); };
    });
}

Result<void> RunKernel(const RunOptions& options, const CommandContext& context) {
    NORVI_TRY_VALUE(plan, MakeRunPlan(options));
    return KernelRun(std::move(plan), context.isQuiet).Run();
}

} // namespace norvi
