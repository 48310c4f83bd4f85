#include <gtest/gtest.h>

#include <csignal>

#include "process.h"
#include "text.h"

namespace {

support::Command shell(const std::string& script) {
    support::Command command;
    command.program = "/bin/sh";
    command.arguments = {"-c", script};
    return command;
}

TEST(Process, KeepsOutputErrorsAndStatusApart) {
    const support::Outcome outcome = support::run(shell("echo out; echo err >&2; exit 3"));
    EXPECT_EQ(outcome.out, "out\n");
    EXPECT_EQ(outcome.err, "err\n");
    EXPECT_EQ(outcome.status, 3);
    EXPECT_FALSE(outcome.clean());
}

TEST(Process, KillsWhatOutlivesItsTime) {
    support::Command command = shell("sleep 60");
    command.timeout = std::chrono::milliseconds(200);
    support::Process process(command);
    EXPECT_FALSE(process.waitForText("never"));
    const support::Outcome outcome = process.finish();
    EXPECT_TRUE(outcome.timedOut && outcome.signal == SIGKILL);
}

TEST(Process, ClosesTheInputAndSetsAndRemovesVariables) {
    support::Command command = shell("[ -e /proc/$$/fd/0 ] || echo closed $ADDED,${HOME-none}");
    command.stdinFrom = support::Command::Input::Closed;
    command.environment = {{"ADDED", "a"}, {"HOME", std::nullopt}};
    EXPECT_EQ(support::run(command).out, "closed a,none\n");
}

TEST(Text, MasksWhatDiffersBetweenRuns) {
    EXPECT_EQ(support::masked("Start: Fri Nov 21 03:10:59 2025|"), "Start: <date>|");
    EXPECT_EQ(support::masked("2.0, Mar  7 2026 at 0x7fff01234567"), "2.0, <day> at <pointer>");
    EXPECT_EQ(support::masked(" n=1 12.34 clocks per pxch 01:02:03\n"),
              " n=1 <clocks> clocks per pxch <time>\n");
    EXPECT_EQ(support::masked(" Computer : any cpu |"), " <host>|");
}

}  // namespace
