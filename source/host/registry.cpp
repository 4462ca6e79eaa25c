#include <norvi/host/registry.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include <norvi/host/log.h>

namespace norvi {

namespace {

class RegistryImpl final : public Registry {
  public:
    explicit RegistryImpl(const Id& id) : id_(id) {}

    Result<void> InsertEntry(const Id& id, const Class* value) noexcept override {
        return CatchOutOfMemory([&]() -> Result<void> {
            std::unique_lock lock(mutex_);
            if (!entries_.emplace(id, value).second)
                return IllegalArgumentError(Format("'@' is already entered in the registry '@'", id, id_));
            return OK;
        });
    }

    void EraseEntry(const Id& id) noexcept override {
        std::unique_lock lock(mutex_);
        entries_.erase(id);
    }

    const Class* FindEntryValue(const Id& id) const noexcept override {
        std::shared_lock lock(mutex_);
        const auto found = entries_.find(id);
        return found == entries_.end() ? nullptr : found->second;
    }

    BaseArray<Id> GetIds() const override {
        std::shared_lock lock(mutex_);
        BaseArray<Id> ids;
        for (const auto& [id, value] : entries_)
            ids.push_back(id);
        std::sort(ids.begin(), ids.end(),
                  [](const Id& a, const Id& b) { return a.ToString() < b.ToString(); });
        return ids;
    }

  private:
    Id id_;
    mutable std::shared_mutex mutex_;
    std::unordered_map<Id, const Class*> entries_;
};

} // namespace

Registry& Registry::Get(const Id& registryId) {
    // Never destroyed: modules erase their entries while the process ends.
    static auto* mutex = new std::mutex;
    static auto* registries = new std::map<String, RegistryImpl>;
    std::lock_guard lock(*mutex);
    return registries->try_emplace(registryId.ToString(), registryId).first->second;
}

const Class* FindClass(const Id& classId) {
    return Registry::Get(registryid::Classes).FindEntryValue(classId);
}

Result<ObjectRef> Class::Create() const noexcept {
    return CatchOutOfMemory([&]() -> Result<ObjectRef> {
        ObjectRef object = factory_();
        object->class_ = this;
        return object;
    });
}

Result<ObjectRef> ObjectInterface::CopyInstance() const noexcept {
    return CatchOutOfMemory([&]() -> Result<ObjectRef> {
        const String id = class_ ? class_->GetId().ToString() : String();
        LogCritical(Format("Component @ has members, but CopyFrom is not implemented!", id));
        return FunctionNotImplementedError(Format("'@' cannot be copied", id));
    });
}

} // namespace norvi
