#include "psinterrupt.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

namespace {

TEST(InterruptDeathTest, ASecondOneEndsAtOnce) {
    EXPECT_EXIT(
        {
            psCatchInterrupts();
            std::raise(SIGINT);
            std::raise(SIGINT);
            std::exit(3);
        },
        testing::KilledBySignal(SIGINT), "");
}

TEST(InterruptDeathTest, IgnoresClosedPipesAndWhatWasIgnoredBefore) {
    EXPECT_EXIT(
        {
            std::signal(SIGINT, SIG_IGN);
            psCatchInterrupts();
            std::raise(SIGPIPE);
            std::raise(SIGINT);
            std::exit(psInterrupted() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
