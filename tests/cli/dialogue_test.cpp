// What the console is asked without -B, and what pscv does not ask the processor.
#include <gtest/gtest.h>

#include "pscv.h"

namespace {

using support::Outcome;

const Pscv::Arguments small{"-f=zmoiCanny_16s8u_C1R", "-dImageSize=64x64", "-dnumFigures=2x2",
                            "-rtable"};

// Auto takes what the end of input and empty lines leave.
TEST(Dialogue, NoAnswerIsTheDefault) {
    Pscv pscv;
    support::Command closed = pscv.command(small);
    closed.stdinFrom = support::Command::Input::Closed;
    support::Command empty = pscv.command(small);
    empty.input.assign(50, '\n');
    for (const support::Command& command : {pscv.command(small), closed, empty}) {
        const Outcome outcome = support::run(command);
        ASSERT_TRUE(outcome.clean()) << outcome.out;
        EXPECT_TRUE(has(outcome.out, " {Auto|Manual|Statistic|Iterative} [Auto] = "))
            << outcome.out;
        EXPECT_TRUE(has(outcome.out, "End of common specifications")) << outcome.out;
        EXPECT_FALSE(has(outcome.out, "Invalid value")) << outcome.out;
        ASSERT_EQ(pscv.rows().size(), 1U);
        EXPECT_EQ(pscv.rows()[0][colComment].find("nLps="), 0U);
    }
}

// Whoever types is asked until the answer is good or the input ends; a file has
// one answer for each question.
TEST(Dialogue, AnswersAreTakenAndWrongOnesAskedForAgain) {
    Pscv pscv;
    using Input = support::Command::Input;
    const struct {
        Input from;
        const char *typed, *comment;
        std::size_t refused;
    } cases[] = {{Input::Text, "man\n7\n", "nLps=7", 0},
                 {Input::Text, "man\n0\n", "nLps=10", 1},
                 {Input::Text, "Foo\nman\n", "nLps=", 2},
                 {Input::Terminal, "Foo\nman\n0\n7\n5\n\4", "nLps=7", 2},
                 {Input::Terminal, "man\n0\n-1\n\4", "nLps=10", 2}};
    for (const auto& c : cases) {
        support::Command command = pscv.command(small);
        command.stdinFrom = c.from;
        command.input = c.typed;
        const Outcome outcome = support::run(command);
        EXPECT_TRUE(outcome.clean());
        EXPECT_EQ(pscv.rows().at(0)[colComment].find(c.comment), 0U) << c.typed << outcome.out;
        EXPECT_EQ(support::count(outcome.out, ": Invalid value of "), c.refused) << outcome.out;
        EXPECT_EQ(support::count(outcome.out, "-- a value is "), c.refused) << outcome.out;
    }
}

TEST(Dialogue, GivenValuesAndBatchModeAskNothing) {
    Pscv pscv;
    pscv.input = "Manual\n7\n";
    const Outcome outcome = pscv.run(small, {"-dMethod=Statistic", "-dNumCalls=5",
                                             "-dTotalCpuClocks=1", "-dAccuracy, %=9", "-ATiming"});
    EXPECT_FALSE(has(outcome.out, "End of common specifications"));
    EXPECT_EQ(pscv.rows().at(0)[colComment], "nCalls=5");
    EXPECT_FALSE(has(pscv.run(small, {"-AAll", "-B"}).out, "[Auto] = "));
}

TEST(Dialogue, EachTestAsksOnlyWithAll) {
    Pscv pscv;
    const Pscv::Arguments keys{"-f=zmoiCanny_16s8u_C1R", "-dMethod=Manual", "-dImageSize=64x64",
                               "-rtable"};
    for (const std::string all : {"-AAll", "-AParams", "-AMisalign"}) {
        pscv.input = std::string(20, '\n');
        const Outcome outcome = pscv.run(keys, {all});
        const bool asked =
            has(outcome.out, "[2x2;3x3;4x4] = ") || has(outcome.out, "[2x2; 3x3; 4x4] = ");
        EXPECT_EQ(asked, all == "-AAll") << outcome.out;
        EXPECT_EQ(has(outcome.out, "Specify vectors alignment, please"), all != "-AParams");
        EXPECT_EQ(pscv.rows().size(), 3U);
        for (const std::string& line : support::lines(outcome.out))
            EXPECT_TRUE(!line.starts_with(" *") || line.size() == 79) << line;
    }
}

// Who asks for the frequency is told that what is given is no number, and measures for three
// seconds.
TEST(Frequency, OnlyTheHeaderAsksForIt) {
    const std::string banner = "Morva ZMO Performance System 2.0, ",
                      echo = "Command line options: ",
                      refused = "-- PSCV_FREQ_MHZ=\"x\" is ignored: ";
    const std::pair<const char*, std::string> cases[] = {
        {"-h", echo},
        {"-v", echo},
        {"-hL", echo},
        {"--help", "usage: pscv [key...]\n-B               = batch mode (no console input)\n"},
        {"--help=-T", "-T[<cpu-features>]"},
        {"--help=loop", "--loop=<seconds> = "},
        {"--version", banner}};
    Pscv pscv;
    pscv.environment["PSCV_FREQ_MHZ"] = "x";
    for (const auto& [key, begin] : cases) {
        const Outcome outcome = pscv.run({key});
        EXPECT_TRUE(outcome.out.starts_with(begin)) << outcome.out;
        EXPECT_EQ(has(outcome.out, banner), !has(key, "--help")) << outcome.out;
        EXPECT_FALSE(has(outcome.out, refused) || has(outcome.out, "PS Summary")) << outcome.out;
    }
    const Outcome outcome = pscv.run(small, {"-B", "-dMethod=Manual"});
    EXPECT_EQ(support::count(outcome.out, refused), 1U) << outcome.out;
    EXPECT_FALSE(has(outcome.out, "(given)")) << outcome.out;
    EXPECT_TRUE(has(outcome.out, "Hz")) << outcome.out;
    EXPECT_EQ(pscv.rows().size(), 1U);
}

}  // namespace
