// Declares data types of the module.
#pragma once

#include <norvi/host/module.h>
#include <norvi/texture_datatypes.h>

namespace norvi {

template <typename T>
class DataTypeObject final : public DataTypeInterface {
  public:
    void* QueryInterface(const Id& interfaceId) override {
        return interfaceId == DataTypeInterface::InterfaceId ? static_cast<DataTypeInterface*>(this)
                                                             : nullptr;
    }
    DataType GetDataType() const override { return DataType::Of<T>(); }
};

/// Enters the data type of `T` under `id` in the registry of data types.
template <typename T>
ClassDeclaration DeclareDataType(const char* id) {
    return ClassDeclaration(g_norvi, id, &MakeObject<DataTypeObject<T>>, registryid::DataTypes);
}

} // namespace norvi
