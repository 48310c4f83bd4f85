#include <gtest/gtest.h>

#include <csignal>
#include <system_error>

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

TEST(Process, TellsTheSignal) {
    const support::Outcome outcome = support::run(shell("kill -SEGV $$"));
    EXPECT_EQ(outcome.signal, SIGSEGV);
    EXPECT_EQ(outcome.status, -1);
}

TEST(Process, KillsWhatOutlivesItsTime) {
    for (const char* script : {"sleep 60", "exec >/dev/null 2>&1; sleep 60"}) {
        support::Command command = shell(script);
        command.timeout = std::chrono::milliseconds(200);
        support::Process process(command);
        const support::Outcome outcome = process.finish();
        EXPECT_TRUE(outcome.timedOut) << script;
        EXPECT_LT(outcome.duration.count(), 20'000) << script;
    }
}

TEST(Process, FeedsMoreThanAPipeHolds) {
    support::Command command = shell("cat");
    command.stdinFrom = support::Command::Input::Text;
    command.input.assign(1'000'000, 'x');
    EXPECT_EQ(support::run(command).out, command.input);
}

TEST(Process, InputMayBeEmptyOrClosed) {
    support::Command command = shell("read line || echo end; [ -e /proc/self/fd/0 ] && echo open");
    EXPECT_EQ(support::run(command).out, "end\nopen\n");
    command = shell("[ -e /proc/$$/fd/0 ] || echo closed");
    command.stdinFrom = support::Command::Input::Closed;
    EXPECT_EQ(support::run(command).out, "closed\n");
}

TEST(Process, SetsAndRemovesVariablesAndTheDirectory) {
    support::Command command = shell("echo \"$ADDED,${HOME-none}\"; pwd");
    command.environment = {{"ADDED", "a"}, {"HOME", std::nullopt}};
    command.directory = "/usr";
    EXPECT_EQ(support::run(command).out, "a,none\n/usr\n");
}

TEST(Process, WaitsForATextAndSendsSignals) {
    support::Process process(
        shell("trap 'echo caught; exit 0' USR1; echo ready; while :; do :; done"));
    ASSERT_TRUE(process.waitForText("ready"));
    process.send(SIGUSR1);
    const support::Outcome outcome = process.finish();
    EXPECT_EQ(outcome.out, "ready\ncaught\n");
    EXPECT_TRUE(outcome.clean());
    support::Process ends(shell("echo other"));
    EXPECT_FALSE(ends.waitForText("ready"));
}

TEST(Process, NamesAProgramThatDoesNotExist) {
    support::Command command;
    command.program = "/no/such/program";
    try {
        support::run(command);
        FAIL() << "started";
    } catch (const std::system_error& error) {
        EXPECT_NE(std::string(error.what()).find("/no/such/program"), std::string::npos);
        EXPECT_EQ(error.code().value(), ENOENT);
    }
}

TEST(Text, CutsLinesAndCells) {
    EXPECT_EQ(support::lines("a\n\nb"), (std::vector<std::string>{"a", "", "b"}));
    EXPECT_EQ(support::lines("a\n"), (std::vector<std::string>{"a"}));
    EXPECT_EQ(support::tableRows("a,,b\nc\n"), (std::vector<support::Row>{{"a", "", "b"}, {"c"}}));
    EXPECT_EQ(support::count("abcabca", "abca"), 1U);
}

TEST(Text, MasksWhatDiffersBetweenRuns) {
    EXPECT_EQ(support::masked("Start: Fri Nov 21 03:10:59 2025|", {}), "Start: <date>|");
    EXPECT_EQ(support::masked("2.0, Mar  7 2026", {}), "2.0, <day>");
    EXPECT_EQ(support::masked(" n=1 12.34 clocks per pxch 01:02:03\n", {}),
              " n=1 <clocks> clocks per pxch <time>\n");
    EXPECT_EQ(support::masked("in /tmp/a/x.csv at 0x7fff01234567", {"/tmp/a"}),
              "in <dir>/x.csv at <pointer>");
    EXPECT_EQ(support::masked(" Computer : any cpu |", {}), " <host>|");
}

TEST(TempDir, GoesWithAllItHolds) {
    std::filesystem::path path;
    {
        const support::TempDir directory;
        path = directory.path();
        support::writeFile(directory.file("a"), "text");
        EXPECT_EQ(support::readFile(directory.file("a")), "text");
        EXPECT_THROW(support::writeFile(directory.file("a/b"), "x"), std::runtime_error);
        EXPECT_THROW(support::readFile(directory.file("c")), std::runtime_error);
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
