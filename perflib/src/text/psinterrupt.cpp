#include "psinterrupt.h"

#include <csignal>
#include <ctime>

namespace {

constexpr int ends[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t s_signal = 0;

timespec s_time;  // of the first signal that was sent

// timeout(1) signals the process and then its whole group: what follows at once is
// the same wish.
bool isRepetition(const timespec& now) {
    constexpr long long gap = 200'000'000;
    return (now.tv_sec - s_time.tv_sec) * 1'000'000'000LL + (now.tv_nsec - s_time.tv_nsec) < gap;
}

// The second wish meets the default action when the handler is left.
void takeSignal(int number) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (s_time.tv_sec == 0) s_time = now;
    psNoteInterrupt(number);
    if (isRepetition(now)) return;
    std::signal(number, SIG_DFL);
    std::raise(number);
}

}  // namespace

void psNoteInterrupt(int number) {
    if (s_signal == 0) s_signal = number;
}

void psCatchInterrupts() {
    struct sigaction action {};
    action.sa_handler = takeSignal;
    // No SA_RESTART: a question that waits at the console ends with its default.
    for (const int number : ends) sigaddset(&action.sa_mask, number);
    for (const int number : ends) {
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
