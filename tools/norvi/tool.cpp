#include "norvi/tool.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fmt/format.h>

#include <norvi/host/thread_services.h>

#include "norvi/argument_text.h"
#include "norvi/demo_command.h"
#include "norvi/encode_command.h"
#include "norvi/gallery_command.h"
#include "norvi/info_command.h"
#include "norvi/run_command.h"
#include "norvi/translate_command.h"

namespace norvi {

namespace {

constexpr int UsageStatus = 2;
constexpr Int MostWorkers = 1024;

constexpr void (*addCommands[])(CLI::App& app, CommandContext& context) = {
    &AddRunCommand,       &AddInfoCommand,   &AddDemoCommand,   &AddGalleryCommand,
    &AddTranslateCommand, &AddEncodeCommand, &AddDecodeCommand,
};

struct CommonOptions {
    BaseArray<String> configuration;
    BaseArray<String> moduleDirectories;
    Int workers = 0;
};

void AddCommonOptions(CLI::App& app, CommonOptions& options, CommandContext& context) {
    app.set_version_flag("--version", "norvi " NORVI_VERSION);
    app.add_option("--config", options.configuration,
                   "Sets a configuration variable; see norvi info configuration")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    app.add_option("--workers", options.workers, "Threads that work on a kernel; 0 for one on each core")
        ->type_name("N")
        ->check(CLI::Range(Int{0}, MostWorkers));
    app.add_option("--modules", options.moduleDirectories, "Loads the modules of a folder too")
        ->type_name("DIR")
        ->allow_extra_args(false);
    app.add_flag("-q,--quiet", context.isQuiet, "Prints results and errors only");
    app.footer(ExamplesText({
        "norvi info kernels",
        "norvi run --help",
        "norvi --workers 1 run doubler --grid 10 --buffer data=uint32:10 --uniform scale=3 --output "
        "data=tripled.npy",
    }));
}

/// After loading: only then is known which variables there are.
Result<void> CheckConfigurationNames(const BaseArray<Assignment>& configuration) {
    BaseArray<String> names;
    for (const ConfigurationVariable& variable : GetConfigurationVariables())
        names.push_back(variable.name);
    for (const Assignment& assignment : configuration)
        if (std::find(names.begin(), names.end(), assignment.name) == names.end())
            return IllegalArgumentError(Format("--config: there is no variable '@'@", assignment.name,
                                               SuggestText(assignment.name, names)));
    return OK;
}

Result<void> Prepare(const CommonOptions& options, CommandContext& context) {
    // Variables are set before modules start, which may read them then.
    BaseArray<Assignment> configuration;
    for (const String& text : options.configuration) {
        NORVI_TRY_VALUE(assignment, ParseAssignment("--config", text));
        NORVI_TRY(SetConfiguration(assignment.name, assignment.value));
        configuration.push_back(assignment);
    }
    NORVI_TRY_VALUE(modules, ModuleLoader::LoadDefault());
    context.modules = std::move(modules);
    for (const String& directory : options.moduleDirectories)
        NORVI_TRY(context.modules.LoadDirectory(directory));
    NORVI_TRY(CheckConfigurationNames(configuration));
    JobQueue::SetThreadCount(options.workers);
    return OK;
}

int Fail(const String& message) {
    std::fputs(fmt::format("norvi: {}\n", message).c_str(), stderr);
    return 1;
}

int RunAction(const CommonOptions& options, CommandContext& context) {
    auto prepared = Prepare(options, context);
    const auto result = prepared ? context.action(context) : std::move(prepared);
    if (!result)
        return Fail(result.GetError().GetMessage());
    // What could not be written, to a full disk or a closed pipe, may only be known now.
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        throw std::system_error(errno, std::generic_category(), "cannot write to the standard output");
    return 0;
}

/// "; did you mean '--buffer'?" for the first word that no command understood.
String UnknownWordHint(const CLI::App& app) {
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty())
        command = command->get_subcommands().front();
    const auto words = app.remaining(true);
    if (words.empty())
        return {};
    BaseArray<String> names;
    for (const CLI::App* level = command; level; level = level->get_parent())
        for (const CLI::Option* option : level->get_options())
            for (const String& name : option->get_lnames())
                names.push_back("--" + name);
    for (const CLI::App* subcommand : command->get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(subcommand->get_name());
    const String hint = SuggestText(words.front(), names);
    return hint.find("did you mean") == hint.npos ? String() : hint;
}

int ReportUsage(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
        return app.exit(error);
    Fail(fmt::format("{}{}\nRun with --help for more information.", error.what(), UnknownWordHint(app)));
    return UsageStatus;
}

} // namespace

int RunTool(int argc, const char* const* argv) noexcept {
    // Printing throws when the stream fails, and everything when memory runs out.
    try {
        CommandContext context;
        CommonOptions options;
        CLI::App app("Runs kernels on the processor, and shows what there is to run.", "norvi");
        app.fallthrough();
        app.require_subcommand(1);
        AddCommonOptions(app, options, context);
        for (const auto addCommand : addCommands)
            addCommand(app, context);
        try {
            app.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            return ReportUsage(app, error);
        }
        return RunAction(options, context);
    } catch (const std::exception& error) {
        return Fail(error.what());
    }
}

} // namespace norvi
