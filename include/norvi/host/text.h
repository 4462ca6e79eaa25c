// Text helpers: messages with placeholders, and the words that values are shown with.
#pragma once

#include <concepts>
#include <initializer_list>

#include <norvi/host/types.h>

namespace norvi {

String ToText(Int64 value);
String ToText(UInt64 value);
/// Shortest decimal text that reads back as the same number; never depends on the locale.
String ToText(Float32 value);
String ToText(Float64 value);
inline String ToText(Int32 value) {
    return ToText(Int64{value});
}
inline String ToText(UInt32 value) {
    return ToText(UInt64{value});
}
/// (A template, since every pointer would convert to Bool.)
template <std::same_as<Bool> Value>
String ToText(Value value) {
    return value ? "true" : "false";
}
inline String ToText(std::string_view text) {
    return String(text);
}
inline String ToText(const char* text) {
    return text;
}
inline String ToText(const String& text) {
    return text;
}
template <typename T>
requires requires(const T& value) {
    { value.ToString() } -> std::convertible_to<String>;
}
String ToText(const T& value) {
    return value.ToString();
}

/// Replaces the placeholders "@" of `pattern`, first to last, by `values`. Placeholders without a value stay.
String FormatList(std::string_view pattern, std::initializer_list<String> values);

/// "Kernel @ has @ parameters" with values of any type that ToText knows.
template <typename... Values>
String Format(std::string_view pattern, const Values&... values) {
    return FormatList(pattern, {ToText(values)...});
}

} // namespace norvi
