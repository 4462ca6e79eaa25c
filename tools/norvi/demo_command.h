// "norvi demo": jobs that show what the system does.
#pragma once

#include "norvi/command.h"

namespace norvi {

void AddDemoCommand(CLI::App& app, CommandContext& context);

} // namespace norvi
