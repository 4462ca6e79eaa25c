// Configuration variables of the module.
#pragma once

#include <norvi/host/types.h>

namespace norvi {

extern Bool g_reloadKernelsParallelProgram;
extern Bool g_32bitOnlyParallelProgram;
extern Bool g_outOfCoreParallelProgram;
extern Bool g_simUseShaderCache;
extern Bool g_checkActiveProgramForUpdatedShaders;
extern Bool g_metalPointCircleAAWorkaround;

} // namespace norvi
