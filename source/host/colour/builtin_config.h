// The colour configuration that is there without any file.
#pragma once

#include "ocio.h"

namespace norvi {

/// Builds it. Throws the library's exceptions.
OCIO::ConstConfigRcPtr MakeBuiltinConfig();

} // namespace norvi
