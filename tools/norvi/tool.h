// The tool's frame: reads the command line and runs the chosen subcommand.
#pragma once

#include <norvi/host/types.h>

namespace norvi {

/// @returns the exit status: 0 for success, 1 for a command that failed, 2 for a command line that is not
/// understood.
int RunTool(int argc, const char* const* argv) noexcept;

} // namespace norvi
