// Backing off in spin waits.
#pragma once

#include <thread>

#include <norvi/yield.h>

namespace norvi {

/// One for each wait: counts the tries for the host's delegate.
class CpuYield {
  public:
    void operator()() {
        constexpr Int32 unlimited = 0x7FFFFFFF;
        if (g_CpuYieldDelegate.function)
            g_CpuYieldDelegate.function(unlimited, state_);
        else
            std::this_thread::yield();
    }

  private:
    Int32 state_ = 0;
};

} // namespace norvi
