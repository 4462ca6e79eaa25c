// Data types by id: how a caller that includes none of the records finds their types.
#pragma once

#include <norvi/host/datatype.h>
#include <norvi/host/registry.h>

namespace norvi {

namespace registryid {
inline constexpr const char* DataTypes = "net.norvi.registry.datatypes";
}

/// What the objects of this registry's classes implement: each stands for one data type.
class DataTypeInterface : public ObjectInterface {
  public:
    static constexpr const char* InterfaceId = "net.norvi.interface.datatype";

    virtual DataType GetDataType() const = 0;
};

/// The data type with this id, such as "net.norvi.datatype.parallelprogram.textures.samplingdata". An id that
/// no loaded module has registered is a null-pointer error. The handle is good as long as that module is
/// loaded.
inline Result<DataType> FindDataType(const Id& id) noexcept {
    return CatchOutOfMemory([&]() -> Result<DataType> {
        const Class* found = Registry::Get(registryid::DataTypes).FindEntryValue(id);
        if (!found)
            return NullPtrError(Format("no data type with the id '@' is registered", id));
        NORVI_TRY_VALUE(type, Ref<DataTypeInterface>::Create(found));
        return type->GetDataType();
    });
}

} // namespace norvi
