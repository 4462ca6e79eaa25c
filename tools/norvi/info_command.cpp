#include "norvi/info_command.h"

#include <fmt/format.h>

#include "norvi/info_report.h"
#include "norvi/kernel_catalog.h"

#include "norvi/argument_text.h"

namespace norvi {

namespace {

String TextOf(const Json& value) {
    return value.is_string() ? value.get<String>() : value.dump();
}

String MachineText(const Json& machine) {
    String text;
    for (const auto& [key, value] : machine.items())
        text += fmt::format("  {:<10} {}\n", key, TextOf(value));
    return text;
}

String ModuleText(const Json& module) {
    return fmt::format("  {:<24} version {}  {:<10} {}\n", TextOf(module["id"]), TextOf(module["version"]),
                       TextOf(module["variant"]), TextOf(module["path"]));
}

String ClassText(const Json& item) {
    return fmt::format("  {:<52} {}\n", TextOf(item["id"]), TextOf(item["module"]));
}

String OperationText(const Json& operation) {
    String parameters;
    for (const Json& parameter : operation["parameters"])
        parameters += fmt::format("{}{} {}", parameters.empty() ? "" : ", ", TextOf(parameter["type"]),
                                  TextOf(parameter["name"]));
    return fmt::format("    {} {}({})\n", TextOf(operation["result"]), TextOf(operation["name"]), parameters);
}

String InterfaceText(const Json& item) {
    String text = fmt::format("  {}  {}  (module {})\n", TextOf(item["id"]), TextOf(item["reference"]),
                              TextOf(item["module"]));
    for (const Json& operation : item["operations"])
        text += OperationText(operation);
    return text;
}

String KernelText(const Json& kernel) {
    String text = fmt::format("  {}  (module {}", TextOf(kernel["name"]), TextOf(kernel["module"]));
    if (kernel.contains("error"))
        return text + fmt::format(")\n    cannot be made: {}\n", TextOf(kernel["error"]));
    const Json& group = kernel["workGroupSize"];
    text += fmt::format(", work group {}x{}x{}, granularity {}, single-threaded up to {})\n",
                        TextOf(group[0]), TextOf(group[1]), TextOf(group[2]), TextOf(kernel["granularity"]),
                        TextOf(kernel["singleThreadedThreshold"]));
    for (const Json& parameter : kernel["parameters"])
        text += fmt::format("    {:<16} {}\n", TextOf(parameter["name"]),
                            parameter["role"] == "uniform" ? "uniform " + TextOf(parameter["type"])
                                                           : TextOf(parameter["type"]));
    return text;
}

String ConfigurationText(const Json& variable) {
    return fmt::format("  {:<32} {:<6} (default {})  {}\n", TextOf(variable["name"]),
                       TextOf(variable["value"]), TextOf(variable["default"]), TextOf(variable["help"]));
}

struct Section {
    const char* name;
    const char* itemName; ///< one item of it, found by `key`; null where there are none to ask for
    const char* key;
    Json (*report)(const ModuleLoader& modules);
    String (*itemText)(const Json& item);
};

constexpr Section sections[] = {
    {"machine", nullptr, nullptr, [](const ModuleLoader&) { return MachineReport(); }, &MachineText},
    {"modules", "module", "id", &ModulesReport, &ModuleText},
    {"kernels", "kernel", "name", &KernelsReport, &KernelText},
    {"configuration", nullptr, nullptr, &ConfigurationReport, &ConfigurationText},
    {"classes", nullptr, nullptr, &ClassesReport, &ClassText},
    {"interfaces", "interface", "id", &InterfacesReport, &InterfaceText},
};

String SectionText(const Section& section, const Json& report) {
    String text = fmt::format("{}:\n", section.name);
    if (!report.is_array())
        return text + section.itemText(report);
    for (const Json& item : report)
        text += section.itemText(item);
    return report.empty() ? text + "  none\n" : text;
}

/// Texts of modules may hold any bytes.
String JsonText(const Json& report) {
    return report.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

Result<Json> FindItem(const Section& section, const String& name, const ModuleLoader& modules) {
    String wanted = name;
    if (section.report == &KernelsReport) {
        NORVI_TRY_VALUE(kernel, ResolveKernelName(name));
        wanted = kernel;
    }
    BaseArray<String> names;
    for (const Json& item : section.report(modules)) {
        names.push_back(TextOf(item[section.key]));
        if (names.back() == wanted)
            return item;
    }
    return NotFoundError(Format("there is no @ '@'@", section.itemName, name, SuggestText(name, names)));
}

Result<String> AllText(const InfoOptions& options, const ModuleLoader& modules) {
    Json all;
    String text;
    for (const Section& section : sections) {
        const Json report = section.report(modules);
        text += (text.empty() ? "" : "\n") + SectionText(section, report);
        all[section.name] = report;
    }
    return options.isJson ? JsonText(all) : text;
}

} // namespace

void AddInfoCommand(CLI::App& app, CommandContext& context) {
    const auto options = std::make_shared<InfoOptions>();
    CLI::App* command = app.add_subcommand("info", "List modules, kernels, interfaces and the machine");
    command->add_option(
        "WHAT", options->what,
        "machine, modules, kernels, configuration, classes or interfaces; or one module, kernel or "
        "interface, followed by its name");
    command->add_option("NAME", options->name, "Name of the one module, kernel or interface");
    command->add_flag("--json", options->isJson, "Print JSON");
    command->footer(ExamplesText({
        "norvi info",
        "norvi info kernels",
        "norvi info kernel saxpy",
        "norvi info configuration --json",
    }));
    command->callback([options, &context] {
        context.action = [options](CommandContext& c) -> Result<void> {
            NORVI_TRY_VALUE(text, InfoText(*options, c.modules));
            fmt::print("{}", text);
            return OK;
        };
    });
}

Result<String> InfoText(const InfoOptions& options, const ModuleLoader& modules) {
    if (options.what.empty())
        return AllText(options, modules);
    BaseArray<String> words;
    for (const Section& section : sections) {
        words.push_back(section.name);
        if (options.what == section.name) {
            if (!options.name.empty())
                return IllegalArgumentError(
                    Format("'@' takes no name, but '@' was given", options.what, options.name));
            const Json report = section.report(modules);
            return options.isJson ? JsonText(report) : SectionText(section, report);
        }
        if (!section.itemName)
            continue;
        words.push_back(section.itemName);
        if (options.what == section.itemName) {
            if (options.name.empty())
                return IllegalArgumentError(Format("the name of the @ is missing", section.itemName));
            NORVI_TRY_VALUE(item, FindItem(section, options.name, modules));
            return options.isJson ? JsonText(item) : section.itemText(item);
        }
    }
    return IllegalArgumentError(
        Format("there is nothing called '@'@", options.what, SuggestText(options.what, words)));
}

} // namespace norvi
