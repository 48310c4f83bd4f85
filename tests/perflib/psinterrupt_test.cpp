#include "psinterrupt.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

namespace {

// What comes with the first one, as from timeout(1), is no second one.
TEST(InterruptDeathTest, ASecondOneEndsAtOnce) {
    EXPECT_EXIT(
        {
            psCatchInterrupts();
            std::raise(SIGINT);
            std::raise(SIGINT);
            if (psInterruptName() != std::string("SIGINT")) std::exit(3);
            usleep(300'000);
            std::raise(SIGHUP);
            std::exit(4);
        },
        testing::KilledBySignal(SIGHUP), "");
}

TEST(InterruptDeathTest, IgnoresClosedPipesAndWhatWasIgnoredBefore) {
    EXPECT_EXIT(
        {
            std::signal(SIGINT, SIG_IGN);
            psCatchInterrupts();
            std::raise(SIGPIPE);
            std::raise(SIGXFSZ);
            std::raise(SIGINT);
            std::exit(psInterrupted() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
