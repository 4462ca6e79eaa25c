#include "norvi/demo_command.h"

#include <memory>

#include <fmt/format.h>

#include "norvi/demo_reaction_diffusion.h"

namespace norvi {

namespace {

/// The command line as it was typed.
struct ReactionDiffusionArguments {
    ReactionDiffusionOptions options;
    String size = "1024x1024";
    String noise = "perlin:1";
};

Result<void> Run(const ReactionDiffusionArguments& arguments, const CommandContext& context) {
    ReactionDiffusionOptions options = arguments.options;
    NORVI_TRY(ParseSize(arguments.size, options.settings));
    NORVI_TRY_VALUE(noise, ParseNoise(arguments.noise));
    options.settings.noise = noise;
    NORVI_TRY_VALUE(report, RunReactionDiffusion(options, context.isQuiet));
    if (!context.isQuiet)
        fmt::print("{}", ReportText(report, options));
    for (const String& picture : report.pictures)
        fmt::print("{}\n", picture);
    return OK;
}

void AddReactionDiffusion(CLI::App& demo, CommandContext& context) {
    const auto arguments = std::make_shared<ReactionDiffusionArguments>();
    ReactionDiffusionOptions& options = arguments->options;
    CLI::App* command = demo.add_subcommand("reaction-diffusion",
                                            "Grow a Gray-Scott reaction-diffusion and write pictures of it");
    command->add_option("--picture", options.seedPicture,
                        "Seed picture (PNG, JPEG, EXR, ...), scaled to the grid; a spiral without it");
    command->add_option("--size", arguments->size, "Cells of the grid, as WIDTHxHEIGHT")
        ->capture_default_str();
    command->add_option("--steps", options.steps, "Time steps")->capture_default_str();
    command->add_option("--every", options.every, "Write a picture every so many steps, not only at the end");
    command
        ->add_option("--feed", options.settings.feed,
                     "Formula of the feed rate; value is the brightness of the seed picture, 0 to 1")
        ->capture_default_str();
    command->add_option("--kill", options.settings.kill, "Kill rate")->capture_default_str();
    command->add_option("--noise", arguments->noise, "Noise that tears the seed, as MODE:SEED")
        ->capture_default_str();
    command->add_option("--out", options.outputFolder, "Folder for the pictures, made if need be")
        ->capture_default_str();
    command->footer(ExamplesText({
        "norvi demo reaction-diffusion",
        "norvi demo reaction-diffusion --size 512x512 --steps 3000 --every 500 --out grown",
        "norvi demo reaction-diffusion --picture grown/step-003000.png --feed \"0.03+0.02*value\"",
    }));
    command->callback([arguments, &context] {
        context.action = [arguments](CommandContext& c) { return Run(*arguments, c); };
    });
}

} // namespace

void AddDemoCommand(CLI::App& app, CommandContext& context) {
    CLI::App* demo = app.add_subcommand("demo", "Run a demonstration");
    demo->require_subcommand(1);
    AddReactionDiffusion(*demo, context);
}

} // namespace norvi
