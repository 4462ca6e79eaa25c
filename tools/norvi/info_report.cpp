#include "norvi/info_report.h"

#include <fstream>
#include <map>
#include <thread>

#include <sys/utsname.h>

#include <norvi/host/thread_services.h>

#include "norvi/kernel_catalog.h"

namespace norvi {

namespace {

constexpr std::string_view WideSuffix = ".x86-64-v3.so";

String ProcessorName() {
    std::ifstream file("/proc/cpuinfo");
    constexpr std::string_view key = "model name";
    for (String line; std::getline(file, line);)
        if (const auto colon = line.find(": "); line.starts_with(key) && colon != line.npos)
            return line.substr(colon + 2);
    utsname system{};
    return uname(&system) == 0 ? system.machine : "unknown";
}

template <typename DeclarationType>
void ForEach(const ModuleLoader& modules, Declaration::Kind kind,
             const std::function<void(const LoadedModule&, const DeclarationType&)>& visit) {
    for (const LoadedModule& module : modules.GetModules())
        for (const Declaration* declaration = module.record->GetFirst(); declaration;
             declaration = declaration->GetNext())
            if (declaration->GetKind() == kind)
                visit(module, static_cast<const DeclarationType&>(*declaration));
}

/// The modules of classes, by id. Classes of the framework itself are in none.
std::map<String, String> ModulesOfClasses(const ModuleLoader& modules) {
    std::map<String, String> result;
    ForEach<ClassDeclaration>(modules, Declaration::Kind::Class,
                              [&](const LoadedModule& module, const ClassDeclaration& declaration) {
                                  result[declaration.GetId()] = module.record->GetId();
                              });
    return result;
}

String FindOr(const std::map<String, String>& map, const String& key, const char* other) {
    const auto found = map.find(key);
    return found == map.end() ? other : found->second;
}

Json ParametersReport(const KernelInfo& kernel) {
    Json parameters = Json::array();
    for (const KernelParameterInfo& parameter : kernel.parameters)
        parameters.push_back({{"name", parameter.name},
                              {"role", RoleName(parameter.role)},
                              {"type", parameter.GetTypeText()}});
    return parameters;
}

Json KernelReport(const String& name, const String& module) {
    Json report = {{"name", name}, {"module", module}};
    const auto kernel = DescribeKernel(name);
    if (!kernel) {
        report["error"] = kernel.GetError().GetMessage();
        return report;
    }
    const Vec3<UInt32>& group = kernel->workGroupSize;
    report["workGroupSize"] = {group.x, group.y, group.z};
    report["granularity"] = kernel->granularity;
    report["singleThreadedThreshold"] = kernel->singleThreadedThreshold;
    report["parameters"] = ParametersReport(*kernel);
    return report;
}

Json OperationReport(const OperationRecord& operation) {
    Json parameters = Json::array();
    for (const ParameterRecord& parameter : operation.parameters)
        parameters.push_back({{"name", parameter.name}, {"type", parameter.type}});
    return {{"name", operation.name}, {"result", operation.result}, {"parameters", parameters}};
}

} // namespace

Json MachineReport() {
    return {{"processor", ProcessorName()},
            {"cores", std::thread::hardware_concurrency()},
            {"workers", JobQueue::GetThreadCount()}};
}

Json ModulesReport(const ModuleLoader& modules) {
    Json report = Json::array();
    for (const LoadedModule& module : modules.GetModules())
        report.push_back({{"id", module.record->GetId()},
                          {"version", module.record->GetVersion()},
                          {"variant", module.path.ends_with(WideSuffix) ? "x86-64-v3" : "baseline"},
                          {"path", module.path}});
    return report;
}

Json ClassesReport(const ModuleLoader& modules) {
    const auto modulesOfClasses = ModulesOfClasses(modules);
    Json report = Json::array();
    for (const Id& id : Registry::Get(registryid::Classes).GetIds())
        report.push_back(
            {{"id", id.ToString()}, {"module", FindOr(modulesOfClasses, id.ToString(), "host")}});
    return report;
}

Json InterfacesReport(const ModuleLoader& modules) {
    Json report = Json::array();
    ForEach<InterfaceDeclaration>(modules, Declaration::Kind::Interface,
                                  [&](const LoadedModule& module, const InterfaceDeclaration& declaration) {
                                      const InterfaceRecord& record = declaration.GetRecord();
                                      Json operations = Json::array();
                                      for (const OperationRecord& operation : record.operations)
                                          operations.push_back(OperationReport(operation));
                                      report.push_back({{"id", record.id},
                                                        {"module", module.record->GetId()},
                                                        {"reference", record.referenceType},
                                                        {"operations", operations}});
                                  });
    return report;
}

Json KernelsReport(const ModuleLoader& modules) {
    const auto modulesOfClasses = ModulesOfClasses(modules);
    Json report = Json::array();
    for (const String& name : KernelNames())
        report.push_back(KernelReport(name, FindOr(modulesOfClasses, name, "host")));
    return report;
}

Json ConfigurationReport(const ModuleLoader&) {
    Json report = Json::array();
    for (const ConfigurationVariable& variable : GetConfigurationVariables())
        report.push_back({{"name", variable.name},
                          {"default", variable.defaultValue},
                          {"value", *variable.address},
                          {"help", variable.help}});
    return report;
}

} // namespace norvi
