#include <norvi/host/text.h>

#include <fmt/format.h>

namespace norvi {

String ToText(Int64 value) {
    return fmt::format("{}", value);
}

String ToText(UInt64 value) {
    return fmt::format("{}", value);
}

String ToText(Float32 value) {
    return fmt::format("{}", value);
}

String ToText(Float64 value) {
    return fmt::format("{}", value);
}

String FormatList(std::string_view pattern, std::initializer_list<String> values) {
    String text;
    auto value = values.begin();
    for (char c : pattern) {
        if (c == '@' && value != values.end())
            text += *value++;
        else
            text += c;
    }
    return text;
}

} // namespace norvi
