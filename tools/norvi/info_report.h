// What "norvi info" knows, one value for each section.
#pragma once

#include <nlohmann/json.hpp>

#include <norvi/host/module.h>

namespace norvi {

using Json = nlohmann::ordered_json;

/// Processor, cores, workers.
Json MachineReport();
/// Identifier, version, path and variant of each module.
Json ModulesReport(const ModuleLoader& modules);
/// Every registered class with the module that declares it.
Json ClassesReport(const ModuleLoader& modules);
/// Every interface with its operations.
Json InterfacesReport(const ModuleLoader& modules);
/// Every kernel with its parameters. One that cannot be made stands there with its error.
Json KernelsReport(const ModuleLoader& modules);
Json ConfigurationReport(const ModuleLoader& modules);

} // namespace norvi
