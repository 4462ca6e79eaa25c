// norvi gallery: pictures of all noises, and of what the settings of a texture do.
#pragma once

#include "norvi/command.h"

namespace norvi {

void AddGalleryCommand(CLI::App& app, CommandContext& context);

} // namespace norvi
