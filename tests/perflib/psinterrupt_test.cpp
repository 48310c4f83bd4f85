#include "psinterrupt.h"

#include <csignal>

#include "unit.h"

namespace {

// What comes with the first one, as from timeout(1), is no second one. Closed pipes and what was
// ignored before interrupt nothing.
TEST(Interrupt, ASecondOneEndsAtOnce) {
    const auto body = [] {
        for (const int caught : {SIGINT, SIGTERM}) std::signal(caught, SIG_DFL);
        std::signal(SIGHUP, SIG_IGN);
        psCatchInterrupts();
        for (const int ignored : {SIGPIPE, SIGXFSZ, SIGHUP}) std::raise(ignored);
        if (psInterrupted()) return false;
        std::raise(SIGINT);
        std::raise(SIGINT);
        if (psInterruptName() != std::string("SIGINT")) return false;
        usleep(300'000);
        std::raise(SIGTERM);
        return false;
    };
    EXPECT_EQ(inChild(body), SIGTERM);
}

}  // namespace
