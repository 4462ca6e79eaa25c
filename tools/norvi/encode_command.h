// "norvi encode" and "norvi decode": kernel files in the form in which their text cannot be read by chance.
#pragma once

#include "norvi/command.h"

namespace norvi {

void AddEncodeCommand(CLI::App& app, CommandContext& context);
void AddDecodeCommand(CLI::App& app, CommandContext& context);

/// Writes the encoded form of a file. One that is encoded already is an error. `output` may be `file` itself.
Result<void> EncodeFile(const String& file, const String& output);
/// Writes the text of an encoded file.
Result<void> DecodeFile(const String& file, const String& output);

} // namespace norvi
