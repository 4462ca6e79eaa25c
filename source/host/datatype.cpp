#include <norvi/host/datatype.h>

namespace norvi {

const String& DataType::ToString() const {
    static const String none;
    return description_ ? description_->name : none;
}

bool DataType::operator==(const DataType& other) const {
    if (description_ == other.description_)
        return true;
    return description_ && other.description_ && description_->name == other.description_->name;
}

} // namespace norvi
