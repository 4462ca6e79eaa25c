// What tests of commands need: loaded modules, and a folder of their own.
#pragma once

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "norvi/command.h"
#include "norvi/run_command.h"

namespace norvi {

inline CommandContext& TestContext() {
    static CommandContext context;
    return context;
}

/// A context with the modules that ship, loaded when it is first asked for.
inline CommandContext& LoadedContext() {
    CommandContext& context = TestContext();
    if (context.modules.GetModules().empty()) {
        auto modules = ModuleLoader::LoadDefault();
        EXPECT_TRUE(modules) << modules.GetError().ToString();
        if (modules)
            context.modules = std::move(*modules);
        context.isQuiet = true;
    }
    return context;
}

/// Unloads them, for tests that load modules on their own: two loaders would enter the same classes twice.
inline void UnloadContext() {
    TestContext() = {};
}

/// Ends the context before the modules' own static objects, which were made after it, are destroyed.
class UnloadAtEnd : public testing::Environment {
    void TearDown() override { UnloadContext(); }
};
inline auto* const g_unloadAtEnd = testing::AddGlobalTestEnvironment(new UnloadAtEnd);

/// A folder that is made for a test and removed after it.
class ScratchFolder {
  public:
    ScratchFolder() {
        path_ = std::filesystem::temp_directory_path() /
                (std::string("norvi_tool_") + std::to_string(getpid()) + "_" +
                 testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(path_);
    }
    ~ScratchFolder() { std::filesystem::remove_all(path_); }

    String File(const String& name) const { return (path_ / name).string(); }
    String Write(const String& name, std::string_view bytes) const {
        std::ofstream(File(name), std::ios::binary) << bytes;
        return File(name);
    }
    Int CountFiles() const {
        return std::distance(std::filesystem::directory_iterator(path_),
                             std::filesystem::directory_iterator());
    }

  private:
    std::filesystem::path path_;
};

/// The message of a failure, "" for success.
template <typename T>
String MessageOf(const Result<T>& result) {
    return result ? String() : result.GetError().GetMessage();
}

inline RunOptions Options(const char* kernel, const char* grid, const BaseArray<String>& buffers,
                          const BaseArray<String>& uniforms, const BaseArray<String>& outputs = {}) {
    RunOptions options;
    options.kernel = kernel;
    options.grid = grid;
    options.buffers = buffers;
    options.uniforms = uniforms;
    options.outputs = outputs;
    return options;
}

/// What is wrong with a run, or nothing.
inline String RunMessage(const RunOptions& options) {
    return MessageOf(RunKernel(options, LoadedContext()));
}

} // namespace norvi
