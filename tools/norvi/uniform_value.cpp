#include "norvi/uniform_value.h"

namespace norvi {

namespace {

std::optional<Number> ParseComponent(const ElementType& type, const String& text) {
    if (type.type == DataType::Of<Bool>() && (text == "true" || text == "false"))
        return text == "true";
    return ParseNumber(text);
}

} // namespace

Result<Data> ParseUniform(const ElementType& type, const String& text) {
    const auto parts = SplitText(text, ',');
    if (static_cast<Int>(parts.size()) != type.components)
        return IllegalArgumentError(
            Format("'@' has @ numbers, @ takes @", text, UInt{parts.size()}, type.name, type.components));
    // As large and as aligned as the largest type, a matrix.
    alignas(16) std::byte value[sizeof(SquareMatrix4d32)];
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto number = ParseComponent(type, parts[i]);
        if (!number)
            return IllegalArgumentError(Format("'@' is no number", parts[i]));
        if (!type.scalar->holds(*number))
            return IllegalArgumentError(Format("@ cannot hold @", type.name, parts[i]));
        type.scalar->store(value + static_cast<Int>(i) * type.scalar->size, *number);
    }
    return Data::Copy(type.type, value);
}

} // namespace norvi
