#include <norvi/host/module.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <dlfcn.h>

#include <norvi/host/log.h>

namespace norvi {

namespace {

constexpr const char* RecordSymbol = "g_norvi";
constexpr const char* ModuleSuffix = ".so";
constexpr const char* WideSuffix = ".x86-64-v3.so";

/// The variant for x86-64-v3 beside `path` where the processor has it, else `path`.
String BestVariant(const String& path) {
#if defined(__x86_64__)
    if (path.ends_with(ModuleSuffix) && !path.ends_with(WideSuffix) && __builtin_cpu_supports("avx2") &&
        __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma")) {
        const String wide = path.substr(0, path.size() - std::strlen(ModuleSuffix)) + WideSuffix;
        std::error_code ignored;
        if (std::filesystem::is_regular_file(wide, ignored))
            return wide;
    }
#endif
    return path;
}

String DynamicLoaderMessage() {
    const char* message = dlerror();
    return message ? message : "unknown reason";
}

/// The directory of the library that holds this function.
String HostDirectory() {
    Dl_info info{};
    std::error_code error;
    if (!dladdr(reinterpret_cast<const void*>(&HostDirectory), &info) || !info.dli_fname)
        return ".";
    return std::filesystem::absolute(info.dli_fname, error).parent_path().string();
}

BaseArray<String> Split(std::string_view text, char separator) {
    BaseArray<String> parts;
    while (!text.empty()) {
        const auto end = std::min(text.find(separator), text.size());
        if (end > 0)
            parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

} // namespace

const void* ResolveDeclared(Declaration::Kind kind, const char* id) {
    switch (kind) {
    case Declaration::Kind::Registry:
        return &Registry::Get(id);
    case Declaration::Kind::Class:
        return FindClass(id);
    default:
        return nullptr;
    }
}

Declaration::Declaration(ModuleRecord& module, Kind kind, const char* id) : kind_(kind), id_(id) {
    module.Add(*this);
}

void ModuleRecord::Add(Declaration& declaration) {
    (last_ ? last_->next_ : first_) = &declaration;
    last_ = &declaration;
}

const void* ModuleRecord::Resolve(Declaration::Kind kind, const char* id) const noexcept {
    if (!initializer_) {
        LogCritical("Assertion failed: g_norvi.GetInitializer()");
        return nullptr;
    }
    return initializer_(kind, id);
}

Result<void> ClassDeclaration::Start() noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(Registry::Get(registryid::Classes).InsertEntry(GetId(), &class_));
        if (!registryId_)
            return OK;
        Result<void> entered = Registry::Get(registryId_).InsertEntry(GetId(), &class_);
        if (!entered)
            Registry::Get(registryid::Classes).EraseEntry(GetId());
        return entered;
    });
}

void ClassDeclaration::Stop() noexcept {
    if (registryId_)
        Registry::Get(registryId_).EraseEntry(class_.GetId());
    Registry::Get(registryid::Classes).EraseEntry(class_.GetId());
}

Result<void> RegistryDeclaration::Start() noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        Registry::Get(GetId());
        return OK;
    });
}

Registry& RegistryDeclaration::Get() const noexcept {
    Registry* registry = registry_.load(std::memory_order_acquire);
    if (!registry) {
        registry = static_cast<Registry*>(const_cast<void*>(module_.Resolve(Kind::Registry, GetId())));
        if (!registry) {
            LogCritical(Format("Method invocation of unresolvable interface @", GetId()));
            std::abort();
        }
        registry_.store(registry, std::memory_order_release);
    }
    return *registry;
}

ModuleLoader& ModuleLoader::operator=(ModuleLoader&& other) noexcept {
    std::swap(libraries_, other.libraries_);
    return *this;
}

ModuleLoader::~ModuleLoader() {
    while (!libraries_.empty()) {
        Stop(libraries_.back());
        libraries_.pop_back();
    }
}

Result<ModuleLoader> ModuleLoader::LoadDefault() noexcept {
    return CatchOutOfMemory([]() -> Result<ModuleLoader> {
        ModuleLoader loader;
        NORVI_TRY(loader.LoadDirectory(HostDirectory() + "/norvi"));
        if (const char* path = std::getenv("NORVI_MODULE_PATH"))
            for (const String& directory : Split(path, ':'))
                NORVI_TRY(loader.LoadDirectory(directory));
        return loader;
    });
}

Result<void> ModuleLoader::Load(const String& path) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(library, Open(path));
        BaseArray<Library> opened;
        if (library.handle)
            opened.push_back(std::move(library));
        BaseArray<Result<void>> failures = StartAll(opened);
        return failures.empty() ? Result<void>() : std::move(failures.front());
    });
}

Result<void> ModuleLoader::LoadDirectory(const String& directory) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        std::error_code error;
        BaseArray<String> paths;
        // Not a range-for, whose steps throw.
        for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
             entry.increment(error)) {
            const String path = entry->path().string();
            if (path.ends_with(ModuleSuffix) && !path.ends_with(WideSuffix))
                paths.push_back(path);
        }
        if (error)
            return SystemError(Format("the module directory '@' cannot be read", directory), error.value());
        std::sort(paths.begin(), paths.end());
        BaseArray<Library> opened;
        for (const String& path : paths) {
            if (auto library = Open(path); !library)
                Log(LogLevel::Warning, library.GetError().GetMessage());
            else if (library->handle)
                opened.push_back(std::move(*library));
        }
        for (const Result<void>& failure : StartAll(opened))
            Log(LogLevel::Warning, failure.GetError().GetMessage());
        return OK;
    });
}

BaseArray<LoadedModule> ModuleLoader::GetModules() const {
    BaseArray<LoadedModule> modules;
    for (const Library& library : libraries_)
        modules.push_back({library.path, library.record});
    return modules;
}

void ModuleLoader::CloseLibrary::operator()(void* handle) const noexcept {
    dlclose(handle);
}

/// A library without a handle stands for a module that is loaded already.
Result<ModuleLoader::Library> ModuleLoader::Open(const String& path) {
    const String variant = BestVariant(path);
    Library library;
    library.path = variant;
    library.handle.reset(dlopen(variant.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!library.handle)
        return IllegalArgumentError(
            Format("the module '@' cannot be loaded: @", variant, DynamicLoaderMessage()));
    library.record = static_cast<ModuleRecord*>(dlsym(library.handle.get(), RecordSymbol));
    const char* reason = nullptr;
    if (!library.record)
        reason = "it exports no symbol g_norvi";
    else if (library.record->GetVersion() != ModuleRecord::CurrentVersion)
        reason = "it was built for another version of the host";
    if (reason)
        return IllegalArgumentError(Format("'@' is not a module of this host: @", variant, reason));
    if (IsStarted(library.record->GetId()))
        return Library{};
    return library;
}

/// Starts what can be started until nothing is left, so that the order of the list does not matter. Gives
/// what failed.
BaseArray<Result<void>> ModuleLoader::StartAll(BaseArray<Library>& opened) {
    BaseArray<Result<void>> failures;
    while (!opened.empty()) {
        auto next = std::find_if(opened.begin(), opened.end(), [&](const Library& l) { return CanStart(l); });
        if (next == opened.end())
            break;
        Library library = std::move(*next);
        opened.erase(next);
        // Two files of one folder may be the same module.
        if (IsStarted(library.record->GetId()))
            continue;
        if (auto started = Start(std::move(library)); !started)
            failures.push_back(std::move(started));
    }
    for (const Library& library : opened)
        failures.push_back(
            IllegalStateError(Format("the module '@' needs the modules '@', which are not loaded",
                                     library.path, library.record->GetDependencies())));
    return failures;
}

Result<void> ModuleLoader::Start(Library library) {
    libraries_.reserve(libraries_.size() + 1);
    // From here on values and errors may point at the module's code and constants.
    library.handle.reset(dlopen(library.path.c_str(), RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE));
    library.record->SetInitializer(&ResolveDeclared);
    for (Declaration* d = library.record->GetFirst(); d; d = d->GetNext()) {
        if (auto started = d->Start(); !started) {
            Stop(library);
            return started;
        }
        ++library.startedCount;
    }
    libraries_.push_back(std::move(library));
    return OK;
}

void ModuleLoader::Stop(Library& library) noexcept {
    // The list is linked forward only; stopping in reverse walks it once for each declaration, at unload.
    for (Int remaining = library.startedCount; remaining > 0; --remaining) {
        Declaration* declaration = library.record->GetFirst();
        for (Int index = 1; index < remaining; ++index)
            declaration = declaration->GetNext();
        declaration->Stop();
    }
}

Bool ModuleLoader::IsStarted(std::string_view id) const {
    return std::any_of(libraries_.begin(), libraries_.end(),
                       [&](const Library& library) { return id == library.record->GetId(); });
}

Bool ModuleLoader::CanStart(const Library& library) const {
    const auto needed = Split(library.record->GetDependencies(), ' ');
    return std::all_of(needed.begin(), needed.end(), [&](const String& id) { return IsStarted(id); });
}

} // namespace norvi
