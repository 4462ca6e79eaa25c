#include "norvi/demo_command.h"

#include <memory>

#include <fmt/format.h>

#include "norvi/demo_reaction_diffusion.h"
#include "norvi/demo_smoke.h"

namespace norvi {

namespace {

/// The options that all demonstrations have.
void AddDemoOptions(CLI::App& command, DemoOptions& options) {
    command.add_option("--steps", options.steps, "Time steps")->capture_default_str();
    command.add_option("--every", options.every, "Write a picture every so many steps, not only at the end");
    command.add_option("--out", options.outputFolder, "Folder for the pictures, made if need be")
        ->capture_default_str();
    command.add_flag("--video", options.isFilmed, "Make a video of the pictures as well; needs ffmpeg");
}

Result<void> Finish(const DemoReport& report, const String& table, const CommandContext& context) {
    if (!context.isQuiet)
        fmt::print("{}", table);
    for (const String& picture : report.pictures)
        fmt::print("{}\n", picture);
    if (!report.video.empty())
        fmt::print("{}\n", report.video);
    return OK;
}

/// The command line as it was typed.
template <typename Options>
struct DemoArguments {
    Options options;
    String size;
    String noise = "perlin:1";
};

/// @param run RunSmoke and the like
template <typename Options, typename Report>
Result<void> Run(Result<Report> (*run)(const Options&, Bool), const DemoArguments<Options>& arguments,
                 const CommandContext& context) {
    Options options = arguments.options;
    NORVI_TRY_VALUE(size, ParseSize(arguments.size));
    NORVI_TRY_VALUE(noise, ParseNoise(arguments.noise));
    options.settings.size = size;
    options.settings.noise = noise;
    NORVI_TRY_VALUE(report, run(options, context.isQuiet));
    return Finish(report, ReportText(report, options), context);
}

void AddReactionDiffusion(CLI::App& demo, CommandContext& context) {
    const auto arguments = std::make_shared<DemoArguments<ReactionDiffusionOptions>>();
    arguments->size = "1024x1024";
    ReactionDiffusionOptions& options = arguments->options;
    CLI::App* command = demo.add_subcommand("reaction-diffusion",
                                            "Grow a Gray-Scott reaction-diffusion and write pictures of it");
    command->add_option("--picture", options.seedPicture,
                        "Seed picture (PNG, JPEG, EXR, ...), scaled to the grid; a spiral without it");
    command->add_option("--size", arguments->size, "Cells of the grid, as WIDTHxHEIGHT")
        ->capture_default_str();
    command
        ->add_option("--feed", options.settings.feed,
                     "Formula of the feed rate; value is the brightness of the seed picture, 0 to 1")
        ->capture_default_str();
    command->add_option("--kill", options.settings.kill, "Kill rate")->capture_default_str();
    command->add_option("--noise", arguments->noise, "Noise that tears the seed, as MODE:SEED")
        ->capture_default_str();
    AddDemoOptions(*command, options);
    command->footer(ExamplesText({
        "norvi demo reaction-diffusion",
        "norvi demo reaction-diffusion --size 512x512 --steps 3000 --every 500 --out grown",
        "norvi demo reaction-diffusion --picture grown/step-003000.png --feed \"0.03+0.02*value\"",
    }));
    command->callback([arguments, &context] {
        context.action = [arguments](CommandContext& c) { return Run(&RunReactionDiffusion, *arguments, c); };
    });
}

void AddSmoke(CLI::App& demo, CommandContext& context) {
    const auto arguments = std::make_shared<DemoArguments<SmokeOptions>>();
    arguments->size = "512x512";
    SmokeOptions& options = arguments->options;
    CLI::App* command = demo.add_subcommand("smoke", "Let coloured smoke rise and write pictures of it");
    command->add_option(
        "--picture", options.picture,
        "Picture that turns into smoke and gives off more (PNG, JPEG, EXR, ...), scaled to the "
        "grid; a row of embers without it");
    command->add_option("--size", arguments->size, "Cells of the grid, as WIDTHxHEIGHT")
        ->capture_default_str();
    command
        ->add_option("--force", options.settings.force,
                     "Formula of the lift, in heights of the picture per second and second; value is the "
                     "density of the smoke, 0 to 1")
        ->capture_default_str();
    command
        ->add_option("--emission", options.settings.emission,
                     "How often per second the picture's smoke is renewed; 0 for never")
        ->capture_default_str();
    command->add_option("--noise", arguments->noise, "Noise of the gusts, as MODE:SEED")
        ->capture_default_str();
    command
        ->add_option("--pressure-iterations", options.settings.pressureIterations,
                     "Iterations of the pressure in each step")
        ->capture_default_str();
    command->add_option("--display", options.settings.display, "Colour space of the pictures")
        ->capture_default_str();
    AddDemoOptions(*command, options);
    command->footer(ExamplesText({
        "norvi demo smoke",
        "norvi demo smoke --size 256x256 --steps 200 --every 50 --noise turbulence:3 --out smoke-frames",
        "norvi demo smoke --picture smoke-frames/step-000200.png --force \"0.5*value-0.1\" --size 320x320",
    }));
    command->callback([arguments, &context] {
        context.action = [arguments](CommandContext& c) { return Run(&RunSmoke, *arguments, c); };
    });
}

} // namespace

void AddDemoCommand(CLI::App& app, CommandContext& context) {
    CLI::App* demo = app.add_subcommand("demo", "Run a demonstration");
    demo->require_subcommand(1);
    AddReactionDiffusion(*demo, context);
    AddSmoke(*demo, context);
}

} // namespace norvi
