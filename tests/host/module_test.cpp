#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#include <dlfcn.h>

#include <norvi/host/module.h>

#include "log_recorder.h"
#include "support/results.h"

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
    ASSERT_OK(loader->Load(path));
    EXPECT_EQ(log.entries, (BaseArray<String>{"info: start base.first", "info: start base.last"}));
    const Class* found = FindClass("base.class");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(Registry::Get("test.fixture.registry").FindEntryValue("base.class"), found);
    const ModuleRecord& record = *loader->GetModules().at(0).record;
    EXPECT_EQ(record.Resolve(Declaration::Kind::Class, "base.class"), found);
    EXPECT_EQ(record.Resolve(Declaration::Kind::Registry, "test.fixture.registry"),
              &Registry::Get("test.fixture.registry"));

    log.entries.clear();
    loader.reset();
    EXPECT_EQ(log.entries, (BaseArray<String>{"info: stop base.last", "info: stop base.first"}));
    EXPECT_EQ(FindClass("base.class"), nullptr);
    EXPECT_TRUE(IsInMemory(path)) << "values may point into it";
}

TEST_F(ModuleLoaderTest, LoadingAgainDoesNothing) {
    const String path = Place("base", "base.so"), copy = Place("base", "other_name.so");
    fs::create_symlink("base.so", folder / "link.so");
    ASSERT_OK(loader->LoadDirectory(folder.string()));
    log.entries.clear();
    for (const String& again : {path, copy})
        EXPECT_OK(loader->Load(again));
    EXPECT_OK(loader->LoadDirectory(folder.string()));
    EXPECT_TRUE(log.entries.empty());
    EXPECT_FALSE(IsInMemory(copy));
    ModuleLoader moved = std::move(*loader);
    loader.emplace();
    *loader = std::move(moved);
    EXPECT_EQ(LoadedIds(), "base ");
}

TEST_F(ModuleLoaderTest, WhatIsNoModuleIsRefusedAndLeavesNothing) {
    const String missing = (folder / "missing.so").string(), text = (folder / "text.so").string();
    std::ofstream(text) << "no library at all";
    const std::pair<String, const char*> cases[] = {
        {missing, "cannot open shared object file"},
        {text, "file too short"},
        {folder.string(), "cannot read file data: Is a directory"},
        {Place("no_module", "no_module.so"), "it exports no symbol g_norvi"},
        {Place("other_version", "other_version.so"), "it was built for another version of the host"},
    };
    for (const auto& [path, reason] : cases) {
        const Result<void> loaded = loader->Load(path);
        ASSERT_FALSE(loaded.IsOk()) << path;
        const Error& error = loaded.GetError();
        EXPECT_TRUE(error.Is(errorkind::IllegalArgument));
        EXPECT_NE(error.GetMessage().find(path), String::npos) << error.GetMessage();
        EXPECT_NE(error.GetMessage().find(reason), String::npos) << error.GetMessage();
        EXPECT_FALSE(IsInMemory(path));
    }
    for (const auto& [path, code] : {std::pair{missing, ENOENT}, std::pair{text, ENOTDIR}}) {
        const Result<void> loaded = loader->LoadDirectory(path);
        ASSERT_FALSE(loaded.IsOk()) << path;
        EXPECT_TRUE(loaded.GetError().Is(errorkind::System));
        EXPECT_EQ(loaded.GetError().GetNativeCode(), code);
        EXPECT_NE(loaded.GetError().GetMessage().find(path), String::npos);
    }
    EXPECT_EQ(LoadedIds(), "");
}

TEST_F(ModuleLoaderTest, MissingDependencyIsNamedAndUndone) {
    const String orphan = Place("orphan", "orphan.so"), dependent = Place("dependent", "dependent.so");
    for (const auto& [path, needs] : {std::pair{orphan, "base absent"}, std::pair{dependent, " base"}}) {
        EXPECT_TRUE(
            FailsWith(loader->Load(path), errorkind::IllegalState,
                      Format("the module '@' needs the modules '@', which are not loaded", path, needs)));
        EXPECT_FALSE(IsInMemory(path));
    }
    ASSERT_OK(loader->Load(Place("base", "base.so")));
    EXPECT_OK(loader->Load(dependent));
    EXPECT_FALSE(loader->Load(orphan).IsOk());
    EXPECT_EQ(LoadedIds(), "base dependent ");
}

TEST_F(ModuleLoaderTest, FailedStartUndoesWhatWasStarted) {
    const Result<void> loaded = loader->Load(Place("failing", "failing.so"));
    EXPECT_EQ(log.entries.at(0) + ", " + log.entries.at(1),
              "info: start failing.first, info: stop failing.first");
    EXPECT_EQ(FindClass("failing.class"), nullptr);
    EXPECT_EQ(LoadedIds(), "");
    // The error holds although the code that made it may be gone.
    EXPECT_TRUE(FailsWith(loaded, errorkind::IllegalState, "failing.last does not start"));
}

TEST_F(ModuleLoaderTest, ClassThatIsEnteredAlreadyIsRefusedAndKeepsItsEntry) {
    const Class taken("base.class", nullptr);
    for (const char* registry : {registryid::Classes, "test.fixture.registry"}) {
        ASSERT_OK(Registry::Get(registry).InsertEntry("base.class", &taken));
        EXPECT_TRUE(FailsWith(loader->Load(Place("base", String(registry) + ".so")),
                              errorkind::IllegalArgument,
                              Format("'base.class' is already entered in the registry '@'", registry)));
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
    ASSERT_OK(loader->LoadDirectory(folder.string()));
    EXPECT_EQ(LoadedIds(), "base dependent last ");
    log.entries.clear();
    loader.reset();
    EXPECT_EQ(log.entries, (BaseArray<String>{"info: stop last.last", "info: stop last.first",
                                              "info: stop dependent.last", "info: stop dependent.first",
                                              "info: stop base.last", "info: stop base.first"}));
}

TEST_F(ModuleLoaderTest, DirectoryPassesOverWhatDoesNotLoad) {
    for (const String fixture : {"no_module", "other_version", "failing", "orphan"}) {
        SCOPED_TRACE(fixture);
        const String bad = Place(fixture, fixture + "/b.so");
        Place("base", fixture + "/a.so");
        Place("dependent", fixture + "/c.so");
        log.entries.clear();
        EXPECT_OK(loader->LoadDirectory((folder / fixture).string()));
        EXPECT_EQ(LoadedIds(), "base dependent ");
        EXPECT_EQ(
            std::erase_if(log.entries, [](const String& entry) { return entry.starts_with("warning: "); }),
            1u);
        EXPECT_EQ(IsInMemory(bad), fixture == "failing");
        loader.emplace();
    }
}

TEST_F(ModuleLoaderTest, WideVariantIsTakenWhereTheProcessorHasIt) {
#if defined(__x86_64__)
    const String path = Place("base", "m.so"), wide = Place("base", "m.x86-64-v3.so");
    const bool suits =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma");
    ASSERT_OK(loader->Load(path));
    EXPECT_EQ(loader->GetModules().at(0).path, suits ? wide : path);
    loader.emplace();
    ASSERT_OK(loader->LoadDirectory(folder.string()));
    EXPECT_EQ(LoadedIds(), "base ");
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
    ASSERT_OK(loaded);
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
