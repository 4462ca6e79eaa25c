#include "norvi/interrupt.h"

namespace norvi {

namespace {

volatile std::sig_atomic_t g_isRequested = 0;

void Remember(int) {
    g_isRequested = 1;
}

} // namespace

InterruptScope::InterruptScope() {
    g_isRequested = 0;
    struct sigaction action {};
    action.sa_handler = &Remember;
    // Back to the default after the first signal; calls in progress, such as the writing of a file, go on.
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigaction(SIGINT, &action, &oldInterrupt_);
    sigaction(SIGTERM, &action, &oldTerminate_);
}

InterruptScope::~InterruptScope() {
    sigaction(SIGINT, &oldInterrupt_, nullptr);
    sigaction(SIGTERM, &oldTerminate_, nullptr);
}

Bool InterruptScope::IsRequested() const {
    return g_isRequested != 0;
}

} // namespace norvi
