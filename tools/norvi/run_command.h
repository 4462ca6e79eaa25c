// "norvi run": runs any kernel of any loaded module on buffers that are made or read for it.
#pragma once

#include "norvi/command.h"
#include "norvi/run_plan.h"

namespace norvi {

void AddRunCommand(CLI::App& app, CommandContext& context);

Result<void> RunKernel(const RunOptions& options, const CommandContext& context);

} // namespace norvi
