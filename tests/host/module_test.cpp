#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#include <dlfcn.h>

#include <gtest/gtest.h>

#include <norvi/host/module.h>

#include "log_recorder.h"

namespace norvi {
namespace {

namespace fs = std::filesystem;

/// Loads copies of the fixtures out of a folder of the test's own.
class ModuleLoaderTest : public testing::Test {
  protected:
    void SetUp() override {
        String pattern = testing::TempDir() + "norvi_modules_XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
    }
    void TearDown() override {
        loader.reset();
        EXPECT_TRUE(Registry::Get("test.fixture.registry").GetIds().empty());
        EXPECT_EQ(Registry::Get(registryid::Classes).GetIds(), classesBefore);
        fs::remove_all(folder);
    }

    /// Puts a copy of the fixture into the folder.
    String Place(const String& fixture, const String& name) const {
        const fs::path target = folder / name;
        fs::create_directories(target.parent_path());
        fs::copy_file(fs::path(NORVI_FIXTURES) / (fixture + ".so"), target);
        return target.string();
    }
    String LoadedIds() const {
        String ids;
        for (const LoadedModule& module : loader->GetModules())
            ids += module.record->GetId() + String(" ");
        return ids;
    }
    static bool IsInMemory(const String& path) {
        void* handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
        if (handle)
            dlclose(handle);
        return handle;
    }

    const BaseArray<Id> classesBefore = Registry::Get(registryid::Classes).GetIds();
    fs::path folder;
    std::optional<ModuleLoader> loader{std::in_place};
    LogRecorder log;
};

TEST_F(ModuleLoaderTest, StartsInOrderOfDeclarationAndUndoesInReverse) {
    const String path = Place("base", "base.so");
    ASSERT_TRUE(loader->Load(path).IsOk());
    EXPECT_EQ(log.entries, (BaseArray<String>{"info: start base.first", "info: start base.last"}));
    const Class* found = FindClass("base.class");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(Registry::Get("test.fixture.registry").FindEntryValue("base.class"), found);
    ASSERT_EQ(loader->GetModules().size(), 1u);
    const LoadedModule module = loader->GetModules()[0];
    EXPECT_EQ(module.path, path);
    EXPECT_EQ(module.record->Resolve(Declaration::Kind::Class, "base.class"), found);
    EXPECT_EQ(module.record->Resolve(Declaration::Kind::Registry, "test.fixture.registry"),
              &Registry::Get("test.fixture.registry"));

    log.entries.clear();
    loader.reset();
    EXPECT_EQ(log.entries, (BaseArray<String>{"info: stop base.last", "info: stop base.first"}));
    EXPECT_EQ(FindClass("base.class"), nullptr);
    EXPECT_TRUE(IsInMemory(path)) << "values may point into it";
}

TEST_F(ModuleLoaderTest, LoadingAgainDoesNothing) {
    const String path = Place("base", "base.so"), copy = Place("base", "other_name.so");
    ASSERT_TRUE(loader->Load(path).IsOk());
    log.entries.clear();
    EXPECT_TRUE(loader->Load(path).IsOk());
    EXPECT_TRUE(loader->Load(copy).IsOk());
    EXPECT_TRUE(loader->LoadDirectory(folder.string()).IsOk());
    EXPECT_EQ(LoadedIds(), "base ");
    EXPECT_TRUE(log.entries.empty());
    EXPECT_FALSE(IsInMemory(copy));
    ModuleLoader moved = std::move(*loader);
    loader.emplace();
    EXPECT_EQ(moved.GetModules().size(), 1u);
    *loader = std::move(moved);
    EXPECT_EQ(LoadedIds(), "base ");
}

TEST_F(ModuleLoaderTest, WhatIsNoModuleIsRefusedAndLeavesNothing) {
    std::ofstream(folder / "text.so") << "no library at all";
    const struct {
        String path;
        const char* reason;
    } cases[] = {
        {(folder / "missing.so").string(), "cannot open shared object file"},
        {(folder / "text.so").string(), "file too short"},
        {folder.string(), "cannot read file data: Is a directory"},
        {Place("no_module", "no_module.so"), "it exports no symbol g_norvi"},
        {Place("other_version", "other_version.so"), "it was built for another version of the host"},
    };
    for (const auto& test : cases) {
        const Result<void> loaded = loader->Load(test.path);
        ASSERT_FALSE(loaded.IsOk()) << test.path;
        const Error& error = loaded.GetError();
        EXPECT_TRUE(error.Is(errorkind::IllegalArgument));
        EXPECT_NE(error.GetMessage().find(test.path), String::npos) << error.GetMessage();
        EXPECT_NE(error.GetMessage().find(test.reason), String::npos) << error.GetMessage();
        EXPECT_FALSE(IsInMemory(test.path));
    }
    EXPECT_EQ(LoadedIds(), "");
}

TEST_F(ModuleLoaderTest, MissingDependencyIsNamedAndUndone) {
    const String orphan = Place("orphan", "orphan.so"), dependent = Place("dependent", "dependent.so");
    for (const auto& [path, needs] : {std::pair{orphan, "base absent"}, std::pair{dependent, " base"}}) {
        const Result<void> loaded = loader->Load(path);
        ASSERT_FALSE(loaded.IsOk());
        EXPECT_TRUE(loaded.GetError().Is(errorkind::IllegalState));
        EXPECT_EQ(loaded.GetError().GetMessage(),
                  Format("the module '@' needs the modules '@', which are not loaded", path, needs));
        EXPECT_FALSE(IsInMemory(path));
    }
    ASSERT_TRUE(loader->Load(Place("base", "base.so")).IsOk());
    EXPECT_TRUE(loader->Load(dependent).IsOk());
    EXPECT_FALSE(loader->Load(orphan).IsOk());
    EXPECT_EQ(LoadedIds(), "base dependent ");
}

TEST_F(ModuleLoaderTest, FailedStartUndoesWhatWasStarted) {
    const String path = Place("failing", "failing.so");
    const Result<void> loaded = loader->Load(path);
    ASSERT_FALSE(loaded.IsOk());
    ASSERT_GE(log.entries.size(), 2u);
    EXPECT_EQ(log.entries[0], "info: start failing.first");
    EXPECT_EQ(log.entries[1], "info: stop failing.first");
    EXPECT_EQ(FindClass("failing.class"), nullptr);
    EXPECT_EQ(LoadedIds(), "");
    // The error holds although the code that made it may be gone.
    EXPECT_TRUE(loaded.GetError().Is(errorkind::IllegalState));
    EXPECT_EQ(loaded.GetError().ToString().find("failing.last does not start"), 0u);
}

TEST_F(ModuleLoaderTest, ClassThatIsEnteredAlreadyIsRefusedAndKeepsItsEntry) {
    const Class taken("base.class", nullptr);
    for (const char* registry : {registryid::Classes, "test.fixture.registry"}) {
        ASSERT_TRUE(Registry::Get(registry).InsertEntry("base.class", &taken).IsOk());
        const Result<void> loaded = loader->Load(Place("base", String(registry) + ".so"));
        ASSERT_FALSE(loaded.IsOk()) << registry;
        EXPECT_EQ(loaded.GetError().GetMessage(),
                  Format("'base.class' is already entered in the registry '@'", registry));
        EXPECT_EQ(Registry::Get(registry).FindEntryValue("base.class"), &taken);
        Registry::Get(registry).EraseEntry("base.class");
        EXPECT_EQ(Registry::Get(registryid::Classes).GetIds(), classesBefore);
    }
}

TEST_F(ModuleLoaderTest, DirectoryIsLoadedInOrderOfDependency) {
    Place("last", "a.so");
    Place("dependent", "b.so");
    Place("base", "c.so");
    std::ofstream(folder / "readme.txt") << "no module";
    ASSERT_TRUE(loader->LoadDirectory(folder.string()).IsOk());
    EXPECT_EQ(LoadedIds(), "base dependent last ");
    log.entries.clear();
    loader.reset();
    EXPECT_EQ(log.entries, (BaseArray<String>{"info: stop last.last", "info: stop last.first",
                                              "info: stop dependent.last", "info: stop dependent.first",
                                              "info: stop base.last", "info: stop base.first"}));
}

TEST_F(ModuleLoaderTest, DirectoryPassesOverWhatDoesNotLoad) {
    const char* const fixtures[] = {"no_module", "other_version", "failing", "orphan"};
    for (const char* fixture : fixtures) {
        const String directory = (folder / fixture).string();
        const String bad = Place(fixture, String(fixture) + "/b.so");
        Place("base", String(fixture) + "/a.so");
        Place("dependent", String(fixture) + "/c.so");
        log.entries.clear();
        loader.emplace();
        EXPECT_TRUE(loader->LoadDirectory(directory).IsOk()) << fixture;
        EXPECT_EQ(LoadedIds(), "base dependent ") << fixture;
        EXPECT_EQ(std::count_if(log.entries.begin(), log.entries.end(),
                                [](const String& entry) { return entry.starts_with("warning: "); }),
                  1)
            << fixture;
        EXPECT_EQ(IsInMemory(bad), String(fixture) == "failing") << fixture;
        loader.reset();
    }
    loader.emplace();
}

TEST_F(ModuleLoaderTest, TwoFilesOfOneModuleInADirectoryAreOneModule) {
    Place("base", "a.so");
    Place("base", "b.so");
    fs::create_symlink("a.so", folder / "c.so");
    EXPECT_TRUE(loader->LoadDirectory(folder.string()).IsOk());
    EXPECT_EQ(LoadedIds(), "base ");
}

TEST_F(ModuleLoaderTest, DirectoryThatCannotBeReadIsASystemError) {
    std::ofstream(folder / "file") << "no directory";
    for (const auto& [name, code] : {std::pair{"missing", ENOENT}, std::pair{"file", ENOTDIR}}) {
        const String directory = (folder / name).string();
        const Result<void> loaded = loader->LoadDirectory(directory);
        ASSERT_FALSE(loaded.IsOk()) << name;
        EXPECT_TRUE(loaded.GetError().Is(errorkind::System));
        EXPECT_EQ(loaded.GetError().GetNativeCode(), code);
        EXPECT_NE(loaded.GetError().GetMessage().find(directory), String::npos);
    }
}

TEST_F(ModuleLoaderTest, WideVariantIsTakenWhereTheProcessorHasIt) {
#if defined(__x86_64__)
    const String path = Place("base", "m.so"), wide = Place("base", "m.x86-64-v3.so");
    const bool suits =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma");
    ASSERT_TRUE(loader->Load(path).IsOk());
    ASSERT_EQ(loader->GetModules().size(), 1u);
    EXPECT_EQ(loader->GetModules()[0].path, suits ? wide : path);
    loader.emplace();
    ASSERT_TRUE(loader->LoadDirectory(folder.string()).IsOk());
    EXPECT_EQ(loader->GetModules().size(), 1u);
#else
    GTEST_SKIP() << "there is one variant only on this processor";
#endif
}

TEST_F(ModuleLoaderTest, DefaultIncludesTheDirectoriesOfTheEnvironment) {
    Place("base", "one/base.so");
    Place("dependent", "two/dependent.so");
    setenv("NORVI_MODULE_PATH", Format(":@/one::@/two", folder.string(), folder.string()).c_str(), 1);
    Result<ModuleLoader> loaded = ModuleLoader::LoadDefault();
    unsetenv("NORVI_MODULE_PATH");
    ASSERT_TRUE(loaded.IsOk()) << loaded.GetError().GetMessage();
    *loader = *std::move(loaded);
    EXPECT_NE(LoadedIds().find("base dependent "), String::npos) << LoadedIds();
}

TEST(ModuleRecord, UseBeforeItsStartIsReported) {
    LogRecorder log;
    const ModuleRecord record("test.unstarted", "");
    EXPECT_EQ(record.Resolve(Declaration::Kind::Class, "any"), nullptr);
    ASSERT_EQ(log.entries.size(), 1u);
    EXPECT_EQ(log.entries[0].find("critical: Assertion failed: g_norvi.GetInitializer() ["), 0u);
}

} // namespace
} // namespace norvi
