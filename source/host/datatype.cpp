#include <norvi/host/datatype.h>

namespace norvi {

const String& DataType::ToString() const {
    static const String none;
    return description_ ? description_->name : none;
}

bool DataType::operator==(const DataType& other) const {
    if (description_ == other.description_)
        return true;
    // Types in unnamed namespaces of different modules may share a name.
    return description_ && other.description_ && description_->name == other.description_->name &&
           description_->size == other.description_->size &&
           description_->alignment == other.description_->alignment &&
           description_->kind == other.description_->kind;
}

} // namespace norvi
