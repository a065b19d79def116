#include "Signals.h"

#include "Errors.h"

#include <csignal>

#include <atomic>

namespace cli {
namespace {

std::atomic<bool> requested = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not lock");

extern "C" void RaiseFlag(int) {
    requested = true;
}

} // namespace

void InstallSignalHandlers() {
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            action = {};
            action.sa_handler = RaiseFlag;
            action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
            sigaction(number, &action, nullptr);
        }
    }
}

bool InterruptRequested() {
    return requested;
}

void StopIfInterrupted() {
    if (requested) {
        throw Interrupted{};
    }
}

} // namespace cli
