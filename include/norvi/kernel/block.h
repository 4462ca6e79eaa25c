// Buffers as kernel text sees them.
#pragma once

#include <concepts>

#include <norvi/host/block.h>
#include <norvi/host/result.h>
#include <norvi/host/text.h>
#include <norvi/kernel/vector.h>

// Index checks cost time, so builds for use leave them out; NORVI_CHECK_INDICES=1 or 0 decides otherwise.
#ifndef NORVI_CHECK_INDICES
#ifdef NDEBUG
#define NORVI_CHECK_INDICES 0
#else
#define NORVI_CHECK_INDICES 1
#endif
#endif

namespace norvi::kernel {

#if NORVI_CHECK_INDICES

/// The first wrong index that the current thread met since the fault was last taken.
struct IndexFault {
    const char* parameter = nullptr;
    Int index = 0;
    Int count = 0;
};

inline IndexFault& CurrentIndexFault() {
    static thread_local IndexFault fault;
    return fault;
}

inline Result<void> TakeIndexFault(const char* kernelName) {
    const IndexFault fault = std::exchange(CurrentIndexFault(), {});
    if (!fault.parameter) [[likely]]
        return OK;
    return IllegalStateError(
        Format("index @ of parameter '@' of kernel '@' is out of range, the buffer has @ elements",
               fault.index, fault.parameter, kernelName, fault.count));
}

#endif

/// A buffer parameter. `T` is a type of the kernel language; memory holds its storage type, with the same
/// bytes. A negative index, or one at or past the count, must not be used: builds with index checks end the
/// dispatch with an error that names kernel, parameter, index and size, other builds do not look.
template <typename T>
class Block {
  public:
    T& operator[](std::integral auto index) const {
#if NORVI_CHECK_INDICES
        if (static_cast<Int>(index) < 0 || static_cast<Int>(index) >= view_.GetCount()) [[unlikely]]
            return Refuse(static_cast<Int>(index));
#endif
        return view_.GetFirst()[index];
    }

    Int GetCount() const {
        return view_.GetCount();
    }
    Bool IsBound() const {
        return view_.GetFirst() != nullptr;
    }

    /// The member that the program writes.
    auto& GetView() {
        return view_;
    }
    void SetName([[maybe_unused]] const char* name) {
#if NORVI_CHECK_INDICES
        name_ = name;
#endif
    }

  private:
    norvi::Block<T> view_;

#if NORVI_CHECK_INDICES
    // The invocation goes on with a value of nobody's until it ends.
    T& Refuse(Int index) const {
        IndexFault& fault = CurrentIndexFault();
        if (!fault.parameter)
            fault = {name_, index, view_.GetCount()};
        static thread_local std::remove_const_t<T> spare;
        return spare = {};
    }

    const char* name_ = "";
#endif
};

} // namespace norvi::kernel
