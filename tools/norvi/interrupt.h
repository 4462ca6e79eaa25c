// Ctrl-C as a request to come to an end.
#pragma once

#include <csignal>

#include <norvi/host/types.h>

namespace norvi {

/// While it lives, the first SIGINT or SIGTERM is remembered instead of ending the program, so that a long
/// job can stop between two steps; the second one ends it as usual. Only one at a time.
class InterruptScope {
  public:
    InterruptScope();
    InterruptScope(const InterruptScope&) = delete;
    InterruptScope& operator=(const InterruptScope&) = delete;
    ~InterruptScope();

    Bool IsRequested() const;

  private:
    struct sigaction oldInterrupt_ {};
    struct sigaction oldTerminate_ {};
};

} // namespace norvi
