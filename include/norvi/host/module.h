// Loadable modules: what a module declares, and the loader that starts and stops it.
//
// A module is a shared library that exports one data symbol, `g_norvi`, its record. Its source files declare
// in static objects what the module offers; each declaration links itself into the record when the library is
// loaded. The loader then sets the record's initialiser, starts modules after those they depend on, runs each
// declaration's start in the order of declaration, and undoes everything in reverse.
#pragma once

#include <atomic>

#include <norvi/host/configuration.h>
#include <norvi/host/reflection.h>
#include <norvi/host/registry.h>

namespace norvi {

class ModuleRecord;

/// One thing that a module declares. Objects have static storage in the module.
class Declaration {
  public:
    enum class Kind { Class, Interface, Registry, Configuration };

    Declaration(ModuleRecord& module, Kind kind, const char* id);
    virtual ~Declaration() = default;
    Declaration(const Declaration&) = delete;
    Declaration& operator=(const Declaration&) = delete;

    Kind GetKind() const { return kind_; }
    const char* GetId() const { return id_; }
    Declaration* GetNext() const { return next_; }

    virtual Result<void> Start() noexcept { return OK; }
    virtual void Stop() noexcept {}

  private:
    friend class ModuleRecord;
    Kind kind_;
    const char* id_;
    Declaration* next_ = nullptr;
};

/// What the host knows of a module. Constant-initialised, so that declarations of any source file can enter
/// themselves whatever the order of initialisation.
class ModuleRecord {
  public:
    /// Raised when the layout of this record or of a declaration changes: a module of another version is
    /// refused.
    static constexpr UInt32 CurrentVersion = 1;
    /// Resolves a declared id to the object that stands behind it, or null.
    using Initializer = const void* (*)(Declaration::Kind kind, const char* id);

    /// @param dependencies ids of modules that must be started first, separated by blanks.
    constexpr ModuleRecord(const char* id, const char* dependencies) : id_(id), dependencies_(dependencies) {}

    UInt32 GetVersion() const { return version_; }
    const char* GetId() const { return id_; }
    const char* GetDependencies() const { return dependencies_; }
    Declaration* GetFirst() const { return first_; }

    void SetInitializer(Initializer initializer) { initializer_ = initializer; }
    Initializer GetInitializer() const { return initializer_; }
    /// Resolves through the initialiser. A use before the host has set it writes a critical message and gives
    /// null.
    const void* Resolve(Declaration::Kind kind, const char* id) const noexcept;

    void Add(Declaration& declaration);

  private:
    UInt32 version_ = CurrentVersion;
    const char* id_;
    const char* dependencies_;
    Initializer initializer_ = nullptr;
    Declaration* first_ = nullptr;
    Declaration* last_ = nullptr;
};

/// Declares the class of `Implementation`, entered under its id in the table of all classes and, where
/// `registryId` is not null, in that registry too.
class ClassDeclaration final : public Declaration {
  public:
    ClassDeclaration(ModuleRecord& module, const char* id, Class::Factory factory,
                     const char* registryId = nullptr)
        : Declaration(module, Kind::Class, id), class_(id, factory), registryId_(registryId) {}

    const Class& GetClass() const { return class_; }
    const char* GetRegistryId() const { return registryId_; }
    Result<void> Start() noexcept override;
    void Stop() noexcept override;

  private:
    Class class_;
    const char* registryId_;
};

/// A factory for ClassDeclaration.
template <typename Implementation>
ObjectRef MakeObject() {
    return std::make_shared<Implementation>();
}

/// Publishes the reflection record of an interface.
class InterfaceDeclaration final : public Declaration {
  public:
    InterfaceDeclaration(ModuleRecord& module, const InterfaceRecord& record)
        : Declaration(module, Kind::Interface, record.id), record_(record) {}

    const InterfaceRecord& GetRecord() const { return record_; }

  private:
    const InterfaceRecord& record_;
};

class RegistryDeclaration final : public Declaration {
  public:
    RegistryDeclaration(ModuleRecord& module, const char* id)
        : Declaration(module, Kind::Registry, id), module_(module) {}

    Result<void> Start() noexcept override;
    /// The registry, resolved through the module's record on first use. A host that cannot resolve it has
    /// broken its contract: a critical message, and the program ends. Thread-safe.
    Registry& Get() const noexcept;

  private:
    const ModuleRecord& module_;
    mutable std::atomic<Registry*> registry_ = nullptr;
};

/// What the loader sets as the initialiser of each module: finds registries and the classes that started
/// modules declared; null for anything else.
const void* ResolveDeclared(Declaration::Kind kind, const char* id);

/// A loaded and started module.
struct LoadedModule {
    String path;
    const ModuleRecord* record = nullptr;
};

/// Loads modules and keeps them loaded; the destructor stops them, last first. Objects of a module's classes
/// must be gone by then. The code and constants of a module that was started stay in memory until the process
/// ends, so that values and errors that came from it may outlive the loader. A loader must not be a static
/// object: when the process ends, what the modules declared is destroyed before it. Used by one thread.
class ModuleLoader {
  public:
    ModuleLoader() = default;
    ModuleLoader(ModuleLoader&&) noexcept = default;
    ModuleLoader& operator=(ModuleLoader&& other) noexcept;
    ~ModuleLoader();

    /// Loads every module of the directory that belongs to this host library (its "norvi" subdirectory) and
    /// of those named in the environment variable NORVI_MODULE_PATH (separated by ':').
    static Result<ModuleLoader> LoadDefault() noexcept;

    /// Loads and starts one module. Of "name.so" and "name.x86-64-v3.so" beside it the one is taken that
    /// suits the processor best. Loading a module again does nothing. A file that is missing or is no module
    /// is an illegal argument, and leaves everything as it was.
    Result<void> Load(const String& path) noexcept;
    /// Loads every module of a directory. One that does not load is logged as a warning and passed over.
    Result<void> LoadDirectory(const String& directory) noexcept;

    BaseArray<LoadedModule> GetModules() const;

  private:
    struct CloseLibrary {
        void operator()(void* handle) const noexcept;
    };
    struct Library {
        std::unique_ptr<void, CloseLibrary> handle;
        String path;
        ModuleRecord* record = nullptr;
        Int startedCount = 0;
    };

    Result<Library> Open(const String& path);
    BaseArray<Result<void>> StartAll(BaseArray<Library>& opened);
    Result<void> Start(Library library);
    static void Stop(Library& library) noexcept;
    Bool IsStarted(std::string_view id) const;
    Bool CanStart(const Library& library) const;

    BaseArray<Library> libraries_;
};

} // namespace norvi

/// The record of the module that is being compiled. Each module defines it, constant-initialised, and exports
/// it:
///     constinit norvi::ModuleRecord g_norvi("my.module", "");
extern "C" [[gnu::visibility("default")]] norvi::ModuleRecord g_norvi;
