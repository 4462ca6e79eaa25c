// What counts as a scalar in the kernel language, and the type that scalars of several types compute in.
#pragma once

#include <concepts>
#include <type_traits>

#include "norvi/host/types.h"

namespace norvi::kernel {

using uint = unsigned int;
/// A 16-bit float as it stands in memory. Every computation with it is one of `float`.
using half = Imath::half;

template <typename T>
concept Scalar = std::is_arithmetic_v<T> || std::same_as<T, half>;

template <typename T>
concept FloatingScalar = std::is_floating_point_v<T> || std::same_as<T, half>;

template <Scalar... T>
struct ScalarResultOf {
    static_assert(((FloatingScalar<T> || sizeof(T) <= 4) && ...), "kernels have no 64-bit integers");
    using Integer = std::conditional_t<(std::same_as<T, uint> || ...), uint, int>;
    using Type = std::conditional_t<(FloatingScalar<T> || ...), float, Integer>;
};

/// `float` if one of the types is a floating one (`double` too), else `uint` if one is, else `int`.
template <typename... T>
using ScalarResult = typename ScalarResultOf<T...>::Type;

} // namespace norvi::kernel
