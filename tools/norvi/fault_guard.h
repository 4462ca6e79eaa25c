// What the tool says when a kernel's own arithmetic ends the program.
#pragma once

#include <norvi/host/types.h>

namespace norvi {

/// While it lives, an access to memory that is not there, and a division of an integer by zero, end the
/// program with exit status 1 and a message that names the kernel, instead of by a signal. Kernels of other
/// people cannot be trusted to check what they are given, and a value that was forgotten is zero. One at a
/// time.
class FaultGuard {
  public:
    explicit FaultGuard(const String& kernelName);
    FaultGuard(const FaultGuard&) = delete;
    FaultGuard& operator=(const FaultGuard&) = delete;
    ~FaultGuard();
};

} // namespace norvi
