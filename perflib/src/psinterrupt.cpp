#include "psinterrupt.h"

#include <csignal>
#include <initializer_list>

namespace {

volatile std::sig_atomic_t s_signal = 0;

void noteSignal(int number) {
    s_signal = number;
}

}  // namespace

void psCatchInterrupts() {
    struct sigaction action {};
    action.sa_handler = noteSignal;
    // SA_RESETHAND: the second signal meets the default action. No SA_RESTART:
    // a question that waits at the console ends with its default.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int number : {SIGINT, SIGTERM}) {
        struct sigaction old {};
        // Background jobs of a shell ignore SIGINT, and shall go on doing so.
        if (sigaction(number, nullptr, &old) == 0 && old.sa_handler == SIG_IGN) continue;
        sigaction(number, &action, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
}

bool psInterrupted() {
    return s_signal != 0;
}

void psEndIfInterrupted() {
    if (s_signal == 0) return;
    const int number = s_signal;
    std::signal(number, SIG_DFL);
    std::raise(number);
}
