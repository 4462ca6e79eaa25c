// A guard for configurations from files.
#pragma once

#include "ocio.h"

namespace norvi {

/// Checks that no space of `config` is defined by itself and that none unfolds to an enormous number of
/// steps: the library follows such definitions without end. Throws the library's exceptions.
Result<void> CheckTransformSizes(const OCIO::Config& config);

} // namespace norvi
