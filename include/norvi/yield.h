// How spin waits back off.
#pragma once

#include <norvi/host/types.h>

namespace norvi {

/// A slot for the host: what spin waits of a module call. An empty slot yields the processor.
struct CpuYieldDelegate {
    /// @param spinLimit how often the waiter will try at most
    /// @param state the waiter's count of tries so far, kept by the callee
    using Function = void (*)(Int32 spinLimit, Int32& state);
    Function function = nullptr;
};

} // namespace norvi

/// Exported by the module; the host sets it.
extern "C" [[gnu::visibility("default")]] norvi::CpuYieldDelegate g_CpuYieldDelegate;
