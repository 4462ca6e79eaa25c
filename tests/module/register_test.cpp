// What the loaded module registers, publishes and exports.
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <set>

#include <dlfcn.h>

#include <norvi/host/module.h>
#include <norvi/kernelinterface.h>
#include <norvi/parallelprogram.h>
#include <norvi/yield.h>

#include "host/log_recorder.h"
#include "support/results.h"

namespace norvi {
namespace {

constexpr const char* ModulePath = NORVI_MODULE_DIR "/norvi.so";

/// The lines that the command writes.
std::set<String> LinesOf(const String& command) {
    std::set<String> lines;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
    std::array<char, 4096> line;
    while (pipe && fgets(line.data(), line.size(), pipe.get()))
        lines.insert(String(line.data()).substr(0, String(line.data()).find('\n')));
    return lines;
}

TEST(Module, ExportsItsDataAndNothingElse) {
    const String record = "g_norvi", yield = "g_CpuYieldDelegate";
    for (const char* name : {"norvi", "norvi-kernels", "norvi-kernels.x86-64-v3"}) {
        const String path = Format("@/@.so", NORVI_MODULE_DIR, name);
        if (!std::filesystem::exists(path) && String(name).ends_with("v3"))
            continue; // no such variant on this processor
        const bool isNorvi = String(name) == "norvi";
        std::set<String> exported;
        for (const String& line : LinesOf(Format("@ -D --defined-only '@'", NORVI_NM, path))) {
            // "address kind name"; initialised (D) or zeroed (B) data
            const auto kind = line.find(' ') + 1;
            EXPECT_TRUE(line[kind] == 'D' || line[kind] == 'B') << line;
            exported.insert(line.substr(kind + 2));
        }
        EXPECT_EQ(exported, isNorvi ? (std::set<String>{record, yield}) : std::set<String>{record}) << path;
    }
}

TEST(Module, RegistersItsClassesWhileItIsLoaded) {
    const struct {
        const char* registry;
        const char* id;
    } rows[] = {{registryid::Classes, "net.norvi.drawportmisc.cpuprogram"},
                {registryid::Classes, "net.norvi.kernelclasses.base"},
                {"net.norvi.registry.kernelclasses", "net.norvi.kernelclasses.base"}};
    for (int round = 0; round < 2; ++round) {
        {
            ModuleLoader loader;
            ASSERT_OK(loader.Load(ModulePath));
            for (const auto& row : rows)
                EXPECT_NE(Registry::Get(row.registry).FindEntryValue(row.id), nullptr) << row.id;
            Result<ParallelProgramRef> program = ParallelProgramRef::Create(rows[0].id);
            ASSERT_OK(program);
            LogRecorder log;
            EXPECT_TRUE(FailsWith((*program)->CopyInstance(), errorkind::FunctionNotImplemented,
                                  "'net.norvi.drawportmisc.cpuprogram' cannot be copied"));
        }
        for (const auto& row : rows)
            EXPECT_EQ(Registry::Get(row.registry).FindEntryValue(row.id), nullptr) << row.id;
    }
}

TEST(Module, BaseOfKernelsHasTheDefaults) {
    ModuleLoader loader;
    ASSERT_OK(loader.Load(ModulePath));
    Result<Kernel::KernelRef> kernel = Kernel::KernelRef::Create("net.norvi.kernelclasses.base");
    ASSERT_OK(kernel);
    ASSERT_OK((*kernel)->Init());
    EXPECT_EQ((*kernel)->GetKernelWorkGroupSize(), (Vec3<UInt32>{0, 0, 0}));
    EXPECT_EQ((*kernel)->GetGranularity(), 16);
    EXPECT_EQ((*kernel)->GetSingleThreadedThreshold(), 0);
    EXPECT_TRUE((*kernel)->GetKernelParameterMap().empty());
    EXPECT_OK((*kernel)->Set("anything", nullptr));
    kernel->reset();
}

TEST(Module, PublishesItsConfiguration) {
    const struct {
        const char* name;
        bool defaultValue;
        const char* help;
    } rows[] = {
        {"g_32bitOnlyParallelProgram", false, "sets all textures to 32-bit"},
        {"g_checkActiveProgramForUpdatedShaders", false, "enables reloading of shader files from hd"},
        {"g_metalPointCircleAAWorkaround", true,
         "Set to true to enable point circle code workaround when used with MSAA."},
        {"g_outOfCoreParallelProgram", true, "enables out of core simulation"},
        {"g_reloadKernelsParallelProgram", false, "enables reloading of kernel files from hd"},
        {"g_simUseShaderCache", true, "turns on shadercache for simulation compute shaders"},
    };
    EXPECT_TRUE(GetConfigurationVariables().empty());
    {
        ModuleLoader loader;
        ASSERT_OK(loader.Load(ModulePath));
        const auto variables = GetConfigurationVariables();
        ASSERT_EQ(variables.size(), std::size(rows));
        for (std::size_t i = 0; i < variables.size(); ++i) {
            EXPECT_EQ(variables[i].name, rows[i].name);
            EXPECT_EQ(variables[i].help, rows[i].help);
            EXPECT_EQ(variables[i].defaultValue, rows[i].defaultValue);
            EXPECT_EQ(*variables[i].address, rows[i].defaultValue);
        }
        EXPECT_OK(SetConfiguration("g_simUseShaderCache", "off"));
        EXPECT_FALSE(*variables.back().address);
    }
    EXPECT_TRUE(GetConfigurationVariables().empty());
}

TEST(Module, RecordAndYieldSlotAreTheHosts) {
    ModuleLoader loader;
    ASSERT_OK(loader.Load(ModulePath));
    void* library = dlopen(ModulePath, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    const auto* record = static_cast<const ModuleRecord*>(dlsym(library, "g_norvi"));
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record, loader.GetModules().at(0).record);
    EXPECT_NE(record->GetInitializer(), nullptr);
    EXPECT_NE(record->Resolve(Declaration::Kind::Class, "net.norvi.drawportmisc.cpuprogram"), nullptr);
    const auto* slot = static_cast<CpuYieldDelegate*>(dlsym(library, "g_CpuYieldDelegate"));
    ASSERT_NE(slot, nullptr);
    EXPECT_EQ(slot->function, nullptr);
    dlclose(library);
}

} // namespace
} // namespace norvi
