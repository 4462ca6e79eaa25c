// "norvi info": lists what is loaded, and the machine.
#pragma once

#include "norvi/command.h"

namespace norvi {

struct InfoOptions {
    String what; ///< a section, "kernel" or "interface"; empty: all sections
    String name; ///< of the kernel or interface
    Bool isJson = false;
};

void AddInfoCommand(CLI::App& app, CommandContext& context);

/// What `norvi info` prints.
Result<String> InfoText(const InfoOptions& options, const ModuleLoader& modules);

} // namespace norvi
