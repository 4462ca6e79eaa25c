// Operators of the kernel language's vectors, component by component.
//
// They are friends of each vector type, not templates over all of them: so a literal or a swizzle converts
// where a vector or a scalar is expected, and only the operators of the operands' own type are ever
// considered.
#pragma once

#include <concepts>

namespace norvi::kernel {

template <typename T>
concept Boolean = std::same_as<T, bool>;

template <typename T>
concept Number = !Boolean<T>;

template <typename T>
concept WholeNumber = std::integral<T> && Number<T>;

} // namespace norvi::kernel

// A list with one entry for each component: E(x, ...), E(y, ...), and so on.
#define NORVI_EACH_2(E, ...) E(x, __VA_ARGS__), E(y, __VA_ARGS__)
#define NORVI_EACH_3(E, ...) NORVI_EACH_2(E, __VA_ARGS__), E(z, __VA_ARGS__)
#define NORVI_EACH_4(E, ...) NORVI_EACH_3(E, __VA_ARGS__), E(w, __VA_ARGS__)

#define NORVI_VECTOR_VECTOR(c, op) left.c op right.c
#define NORVI_VECTOR_SCALAR(c, op) left.c op right
#define NORVI_SCALAR_VECTOR(c, op) left op right.c
#define NORVI_PREFIXED(c, op) op right.c

#define NORVI_BINARY_OPERATOR(V, N, op, Constraint)                                                          \
    friend constexpr V operator op(const V& left, const V& right) requires Constraint<T> {                   \
        return V(NORVI_EACH_##N(NORVI_VECTOR_VECTOR, op));                                                   \
    }                                                                                                        \
    friend constexpr V operator op(const V& left, T right) requires Constraint<T> {                          \
        return V(NORVI_EACH_##N(NORVI_VECTOR_SCALAR, op));                                                   \
    }                                                                                                        \
    friend constexpr V operator op(T left, const V& right) requires Constraint<T> {                          \
        return V(NORVI_EACH_##N(NORVI_SCALAR_VECTOR, op));                                                   \
    }                                                                                                        \
    constexpr V& operator op##=(const V& right) requires Constraint<T> {                                     \
        return *this = *this op right;                                                                       \
    }                                                                                                        \
    constexpr V& operator op##=(T right) requires Constraint<T> {                                            \
        return *this = *this op right;                                                                       \
    }

#define NORVI_PREFIX_OPERATOR(V, N, op, Constraint)                                                          \
    friend constexpr V operator op(const V& right) requires Constraint<T> {                                  \
        return V(NORVI_EACH_##N(NORVI_PREFIXED, op));                                                        \
    }

/// The operators of the vector class `V` with `N` components of type `T`; stands in the body of the class.
#define NORVI_VECTOR_OPERATORS(V, N)                                                                         \
    NORVI_BINARY_OPERATOR(V, N, +, Number)                                                                   \
    NORVI_BINARY_OPERATOR(V, N, -, Number)                                                                   \
    NORVI_BINARY_OPERATOR(V, N, *, Number)                                                                   \
    NORVI_BINARY_OPERATOR(V, N, /, Number)                                                                   \
    NORVI_BINARY_OPERATOR(V, N, %, WholeNumber)                                                              \
    NORVI_BINARY_OPERATOR(V, N, &, WholeNumber)                                                              \
    NORVI_BINARY_OPERATOR(V, N, |, WholeNumber)                                                              \
    NORVI_BINARY_OPERATOR(V, N, ^, WholeNumber)                                                              \
    NORVI_BINARY_OPERATOR(V, N, <<, WholeNumber)                                                             \
    NORVI_BINARY_OPERATOR(V, N, >>, WholeNumber)                                                             \
    NORVI_PREFIX_OPERATOR(V, N, +, Number)                                                                   \
    NORVI_PREFIX_OPERATOR(V, N, -, Number)                                                                   \
    NORVI_PREFIX_OPERATOR(V, N, ~, WholeNumber)                                                              \
    NORVI_PREFIX_OPERATOR(V, N, !, Boolean)
