#include <norvi/host/url.h>

namespace norvi {

String Url::GetName() const {
    const auto separator = text_.find_last_of("/:");
    return separator == String::npos ? text_ : text_.substr(separator + 1);
}

} // namespace norvi
