// norvi gallery: pictures of all noises.
#pragma once

#include "norvi/command.h"

namespace norvi {

void AddGalleryCommand(CLI::App& app, CommandContext& context);

} // namespace norvi
