#include "module/configuration.h"

#include <norvi/host/module.h>

namespace norvi {

Bool g_reloadKernelsParallelProgram = false;
Bool g_32bitOnlyParallelProgram = false;
Bool g_outOfCoreParallelProgram = true;
Bool g_simUseShaderCache = true;
Bool g_checkActiveProgramForUpdatedShaders = false;
Bool g_metalPointCircleAAWorkaround = true;

namespace {

class ConfigurationDeclaration final : public Declaration {
  public:
    ConfigurationDeclaration(const char* name, const char* help, Bool& variable)
        : Declaration(g_norvi, Kind::Configuration, name), help_(help), variable_(variable) {}

    Result<void> Start() noexcept override { return ConfigurationRegister(GetId(), help_, &variable_); }
    void Stop() noexcept override { ConfigurationUnregister(GetId()); }

  private:
    const char* help_;
    Bool& variable_;
};

ConfigurationDeclaration g_variables[] = {
    {"g_reloadKernelsParallelProgram", "enables reloading of kernel files from hd",
     g_reloadKernelsParallelProgram},
    {"g_32bitOnlyParallelProgram", "sets all textures to 32-bit", g_32bitOnlyParallelProgram},
    {"g_outOfCoreParallelProgram", "enables out of core simulation", g_outOfCoreParallelProgram},
    {"g_simUseShaderCache", "turns on shadercache for simulation compute shaders", g_simUseShaderCache},
    {"g_checkActiveProgramForUpdatedShaders", "enables reloading of shader files from hd",
     g_checkActiveProgramForUpdatedShaders},
    {"g_metalPointCircleAAWorkaround",
     "Set to true to enable point circle code workaround when used with MSAA.",
     g_metalPointCircleAAWorkaround},
};

} // namespace

} // namespace norvi
