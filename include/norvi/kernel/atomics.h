// Atomic operations of the kernel language. They work on atomic counters and on plain elements of buffers
// alike, give the value that stood there before, and order nothing else (relaxed), as on the card.
#pragma once

#include <atomic>
#include <type_traits>

#include <norvi/host/datatype.h>

namespace norvi::kernel {

using norvi::AtomicUInt32;

namespace detail {

template <typename Cell>
struct AtomicCell {
    using Value = Cell;
    static std::atomic_ref<Cell> Of(Cell& cell) { return std::atomic_ref<Cell>(cell); }
};
template <>
struct AtomicCell<AtomicUInt32> {
    using Value = UInt32;
    static AtomicUInt32& Of(AtomicUInt32& cell) { return cell; }
};

template <typename Cell>
using AtomicValue = typename AtomicCell<Cell>::Value;

/// Replaces the value by `change(value)`, for the operations that the processor has no instruction for.
template <typename Cell, typename Change>
AtomicValue<Cell> AtomicChange(Cell& cell, Change change) {
    auto&& atomic = AtomicCell<Cell>::Of(cell);
    AtomicValue<Cell> old = atomic.load(std::memory_order_relaxed);
    while (!atomic.compare_exchange_weak(old, change(old), std::memory_order_relaxed)) {
    }
    return old;
}

} // namespace detail

template <typename Cell>
auto atomicAdd(Cell& cell, std::type_identity_t<detail::AtomicValue<Cell>> value) {
    return detail::AtomicCell<Cell>::Of(cell).fetch_add(value, std::memory_order_relaxed);
}
template <typename Cell>
auto atomicAnd(Cell& cell, std::type_identity_t<detail::AtomicValue<Cell>> value) {
    return detail::AtomicCell<Cell>::Of(cell).fetch_and(value, std::memory_order_relaxed);
}
template <typename Cell>
auto atomicOr(Cell& cell, std::type_identity_t<detail::AtomicValue<Cell>> value) {
    return detail::AtomicCell<Cell>::Of(cell).fetch_or(value, std::memory_order_relaxed);
}
template <typename Cell>
auto atomicXor(Cell& cell, std::type_identity_t<detail::AtomicValue<Cell>> value) {
    return detail::AtomicCell<Cell>::Of(cell).fetch_xor(value, std::memory_order_relaxed);
}
template <typename Cell>
auto atomicExchange(Cell& cell, std::type_identity_t<detail::AtomicValue<Cell>> value) {
    return detail::AtomicCell<Cell>::Of(cell).exchange(value, std::memory_order_relaxed);
}
template <typename Cell>
auto atomicMin(Cell& cell, std::type_identity_t<detail::AtomicValue<Cell>> value) {
    return detail::AtomicChange(cell, [value](auto old) { return value < old ? value : old; });
}
template <typename Cell>
auto atomicMax(Cell& cell, std::type_identity_t<detail::AtomicValue<Cell>> value) {
    return detail::AtomicChange(cell, [value](auto old) { return old < value ? value : old; });
}
/// Writes `value` if `expected` stands there.
template <typename Cell>
auto atomicCompSwap(Cell& cell, std::type_identity_t<detail::AtomicValue<Cell>> expected,
                    std::type_identity_t<detail::AtomicValue<Cell>> value) {
    detail::AtomicCell<Cell>::Of(cell).compare_exchange_strong(expected, value, std::memory_order_relaxed);
    return expected;
}

} // namespace norvi::kernel
