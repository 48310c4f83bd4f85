#include "psinterrupt.h"

#include <csignal>
#include <initializer_list>

namespace {

volatile std::sig_atomic_t s_signal = 0;

}  // namespace

void psNoteInterrupt(int number) {
    if (s_signal == 0) s_signal = number;
}

void psCatchInterrupts() {
    struct sigaction action {};
    action.sa_handler = psNoteInterrupt;
    // SA_RESETHAND: the second signal meets the default action. No SA_RESTART:
    // a question that waits at the console ends with its default.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction old {};
        // Background jobs of a shell ignore SIGINT, what runs under nohup ignores
        // SIGHUP, and they shall go on doing so.
        if (sigaction(number, nullptr, &old) == 0 && old.sa_handler == SIG_IGN) continue;
        sigaction(number, &action, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool psInterrupted() {
    return s_signal != 0;
}

const char* psInterruptName() {
    switch (s_signal) {
        case SIGINT:
            return "SIGINT";
        case SIGTERM:
            return "SIGTERM";
        case SIGHUP:
            return "SIGHUP";
        case SIGPIPE:
            return "SIGPIPE";
        default:
            return "";
    }
}

void psEndIfInterrupted() {
    if (s_signal == 0) return;
    const int number = s_signal;
    std::signal(number, SIG_DFL);
    std::raise(number);
}
