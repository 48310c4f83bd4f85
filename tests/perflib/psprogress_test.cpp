#include "psprogress.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(ProgressLine, TellsPositionTimesAndFunction) {
    const struct {
        int number, total;
        double elapsed;
        const char* line;
    } cases[] = {
        {1, 438, 0.9, "test 1 of 438, f, elapsed 00:00:00, remaining unknown"},
        {2, 3, 10.0, "test 2 of 3, f, elapsed 00:00:10, remaining 00:00:20"},
        {3, 3, 3725.5, "test 3 of 3, f, elapsed 01:02:05, remaining 00:31:02"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(psProgress::line(c.number, c.total, "f", c.elapsed), psString(c.line));
}

// A line that wraps could not be taken away by a carriage return.
TEST(ProgressLine, NeverFillsTheTerminal) {
    const psString line = psProgress::line(437, 438, psString(std::string(200, 'x')), 100000.0);
    EXPECT_EQ(line.length(), 79);
    EXPECT_TRUE(line.endsWith(", elapsed 27:46:40, remaining 00:07:38"));
}

TEST(Progress, WritesNothingWhenStandardErrorIsNoTerminal) {
    testing::internal::CaptureStderr();
    {
        psProgress progress(2);
        progress.startTest("f");
        psProgress::refresh();
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
