// Backing off in spin waits.
#pragma once

#include <thread>

#include <norvi/yield.h>

namespace norvi {

inline void CpuYield() {
    constexpr Int32 unlimited = 0x7FFFFFFF;
    static thread_local Int32 state = 0;
    if (g_CpuYieldDelegate.function)
        g_CpuYieldDelegate.function(unlimited, state);
    else
        std::this_thread::yield();
}

} // namespace norvi
