// Registries: where modules enter their classes under ids and others find them.
#pragma once

#include <norvi/host/object.h>

namespace norvi {

/// Ids of the registries.
namespace registryid {
inline constexpr const char* Classes = "net.norvi.registry.classes"; ///< all classes
inline constexpr const char* KernelClasses = "net.norvi.registry.kernelclasses";
inline constexpr const char* NoiseClasses = "net.norvi.render.registry.rendernoiseclasses";
} // namespace registryid

/// A table from Id to class. All operations are thread-safe.
class Registry {
  public:
    virtual ~Registry() = default;

    /// The registry with this id; made when it is first asked for, and alive as long as the process.
    static Registry& Get(const Id& registryId);

    /// Enters a class. An id that is there already is an illegal-argument error, and the entry stays.
    virtual Result<void> InsertEntry(const Id& id, const Class* value) noexcept = 0;
    virtual void EraseEntry(const Id& id) noexcept = 0;
    /// The class under `id`, or null.
    virtual const Class* FindEntryValue(const Id& id) const noexcept = 0;
    /// The ids of all entries, sorted by name.
    virtual BaseArray<Id> GetIds() const = 0;
};

} // namespace norvi
