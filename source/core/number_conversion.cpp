#include "core/number_conversion.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <variant>

namespace norvi {

namespace {

/// Every number of the known types is exactly one of these.
using AnyNumber = std::variant<Int64, UInt64, Float64>;

template <typename T>
AnyNumber Read(const void* value) {
    T number;
    std::memcpy(&number, value, sizeof number);
    if constexpr (std::is_same_v<T, HalfFloat>)
        return Float64{static_cast<float>(number)};
    else if constexpr (std::is_floating_point_v<T>)
        return Float64{number};
    else if constexpr (std::is_signed_v<T>)
        return Int64{number};
    else
        return UInt64{number};
}

template <typename T>
std::optional<Data> FitFloat(Float64 number) {
    const T result(static_cast<float>(number));
    if (static_cast<Float64>(result) == number || std::isnan(number))
        return Data(result);
    return std::nullopt;
}

template <>
std::optional<Data> FitFloat<Float64>(Float64 number) {
    return Data(number);
}

template <typename T>
std::optional<Data> Fit(const AnyNumber& number) {
    return std::visit(
        [](auto n) -> std::optional<Data> {
            using N = decltype(n);
            if constexpr (std::is_same_v<T, HalfFloat> || std::is_floating_point_v<T>) {
                if constexpr (!std::is_floating_point_v<N>) {
                    // An integer above 2^53 may be lost on the way; the limits of N are never hit by a double
                    // that came from an N except at its upper end, which compares out of range.
                    const auto asFloat = static_cast<Float64>(n);
                    if (asFloat >= static_cast<Float64>(std::numeric_limits<N>::max()) ||
                        static_cast<N>(asFloat) != n)
                        return std::nullopt;
                    return FitFloat<T>(asFloat);
                } else {
                    return FitFloat<T>(n);
                }
            } else {
                if constexpr (std::is_floating_point_v<N>) {
                    constexpr Float64 end = static_cast<Float64>(std::numeric_limits<T>::max() / 2 + 1) * 2.0;
                    if (!(n >= static_cast<Float64>(std::numeric_limits<T>::min()) && n < end) ||
                        n != std::trunc(n))
                        return std::nullopt;
                } else if (!std::in_range<T>(n)) {
                    return std::nullopt;
                }
                return Data(static_cast<T>(n));
            }
        },
        number);
}

struct NumberType {
    DataType type;
    AnyNumber (*read)(const void* value);
    std::optional<Data> (*fit)(const AnyNumber& number);
};

template <typename T>
NumberType Describe() {
    return {DataType::Of<T>(), &Read<T>, &Fit<T>};
}

const NumberType* FindNumberType(DataType type) {
    static const NumberType types[] = {Describe<std::int8_t>(), Describe<UChar>(),  Describe<Int16>(),
                                       Describe<UInt16>(),      Describe<Int32>(),  Describe<UInt32>(),
                                       Describe<Int64>(),       Describe<UInt64>(), Describe<HalfFloat>(),
                                       Describe<Float32>(),     Describe<Float64>()};
    for (const NumberType& entry : types)
        if (entry.type == type)
            return &entry;
    return nullptr;
}

} // namespace

Bool IsNumber(DataType type) {
    return FindNumberType(type) != nullptr;
}

std::optional<Data> ConvertNumberExactly(DataType source, const void* value, DataType target) {
    const NumberType* from = FindNumberType(source);
    const NumberType* to = FindNumberType(target);
    if (!from || !to)
        return std::nullopt;
    return to->fit(from->read(value));
}

} // namespace norvi
