// Programs of others.
#pragma once

#include <norvi/host/result.h>

namespace norvi {

struct ChildResult {
    int status = 0; ///< 0 for success; -1 for a program that was ended by a signal
    String output;  ///< what it has printed, errors included
};

/// Runs `command`, a program that is looked for in PATH and its arguments, without a shell; `input` comes
/// through its standard input, and so never lies in a folder. A program that is not there is the not-found
/// error.
Result<ChildResult> RunWithInput(const BaseArray<String>& command, std::string_view input);

} // namespace norvi
