#include "norvi/fault_guard.h"

#include <cstring>

#include <signal.h>
#include <unistd.h>

#include <norvi/host/text.h>

namespace norvi {

namespace {

struct Fault {
    int signal;
    const char* description;
};

constexpr Fault faults[] = {
    {SIGSEGV,
     "reached memory outside of its buffers; check --grid, the buffers' sizes and uniforms such as counts"},
    {SIGBUS,
     "reached memory outside of its buffers; check --grid, the buffers' sizes and uniforms such as counts"},
    {SIGFPE, "divided an integer by zero; check uniforms that are zero"},
};

// A signal handler may neither allocate nor format: the texts are made beforehand.
String g_messages[std::size(faults)];
struct sigaction g_former[std::size(faults)];

void ReportFault(int signal) {
    for (std::size_t i = 0; i < std::size(faults); ++i)
        if (faults[i].signal == signal &&
            write(STDERR_FILENO, g_messages[i].data(), g_messages[i].size()) < 0)
            _exit(1);
    _exit(1);
}

} // namespace

FaultGuard::FaultGuard(const String& kernelName) {
    for (std::size_t i = 0; i < std::size(faults); ++i) {
        g_messages[i] = Format("norvi: kernel '@' @\n", kernelName, faults[i].description);
        struct sigaction action {};
        action.sa_handler = &ReportFault;
        sigaction(faults[i].signal, &action, &g_former[i]);
    }
}

FaultGuard::~FaultGuard() {
    for (std::size_t i = 0; i < std::size(faults); ++i)
        sigaction(faults[i].signal, &g_former[i], nullptr);
}

} // namespace norvi
