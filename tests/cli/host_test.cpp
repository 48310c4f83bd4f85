// Whole runs of the host program: its tests have known behaviour, so what a run shows and what its
// files hold can be foreseen.
#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <memory>

#include "pscv.h"

namespace {

using support::Outcome;
using support::Row;

struct Host : Pscv {
    Host() {
        program = HOST_PROGRAM;
        // An exception that is caught far above drops what lay on the stack without destructors.
        environment["ASAN_OPTIONS"] = "detect_leaks=0";
    }
};

const Pscv::Arguments withFiles{"-B", "-rtable", "-utests", "-olist"};

struct Expected {
    const char* function;
    const char* result;  // as in the summary, with the console at level PERF
    std::size_t rows;
    const char* says;  // on the console
};

// This stands behind the result of a test; the closing box has the totals.
const std::string oneLost = "\n-- 1 of 3 sets could not be prepared\n";

constexpr Expected expectations[] = {
    {"hostFast", "OK", 4, "Rounds=200 Mode=twice "},
    {"hostSlow", "OK", 1, "clocks per call"},
    {"hostOwnTiming", "DATAWRN", 1, " 20000 clocks per call"},
    {"hostNothing", "FAIL", 1, "runTiming() function returns undefined result"},
    {"hostThrow", "EXCPTFAIL", 0, "thrown by the function"},
    {"hostFpState", "BADSTSWRN", 1, "Status   : SSE ?Invalid"},
    {"hostControl", "OK", 1, "clocks per call"},
    {"hostEmpty", "DATAFAIL", 0, "-- One of argument list for timing is empty"},
    {"hostTwice", "DATAWRN", 2, "have identical parameters"},
    {"hostOldValues", "OK", 4, "clocks per call"},
    {"hostCannot", "UNDEFINED", 0, "-- Can't start timing"},
    {"hostMemory", "OK", 2, "-- Memory fault: can't allocate -1000 bytes"},
    {"hostUnprepared", "DATAFAIL", 0, "-- Fail while initialization of function data"},
};

class HostRun : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        s_host = std::make_unique<Host>();
        s_out = s_host->run(withFiles, {"-LPERF"}).out;
    }
    static void TearDownTestSuite() { s_host.reset(); }

    // The part of the console between the title of a test and the next one's.
    static std::string consoleOf(const std::string& function) {
        const std::size_t start = s_out.find(function + " ");
        return s_out.substr(start, s_out.find("Function", start) - start);
    }
    static std::vector<Row> rowsOf(const char* function) { return s_host->rows(colBase, function); }

    static std::unique_ptr<Host> s_host;
    static std::string s_out;
};

std::unique_ptr<Host> HostRun::s_host;
std::string HostRun::s_out;

TEST_F(HostRun, EveryTestEndsAsItShould) {
    const std::string summary = s_host->text("tests_sum.csv");
    for (const Expected& expected : expectations) {
        SCOPED_TRACE(expected.function);
        EXPECT_EQ(s_host->result(expected.function), expected.result);
        EXPECT_EQ(rowsOf(expected.function).size(), expected.rows);
        EXPECT_TRUE(has(consoleOf(expected.function), expected.says))
            << consoleOf(expected.function);
        EXPECT_EQ(has(summary,
                      std::string("--No measurements have been done\n") + expected.function + ","),
                  expected.rows == 0)
            << summary;
    }
}

TEST_F(HostRun, LinesOfDeprecatedValuesFollowTheRegularOnes) {
    const std::vector<Row> rows = rowsOf("hostOldValues");
    ASSERT_EQ(rows.size(), 4U);
    const char* levels[] = {"1", "2", "3", "two"};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(rows[i][1], levels[i]);
    EXPECT_EQ(rows[3][colComment], "deprecated");
    EXPECT_EQ(rows[1][colClocks], rows[3][colClocks]);
}

TEST_F(HostRun, SetThatCannotBePreparedIsNamedAndTheNextOneRuns) {
    const std::string console = consoleOf("hostMemory");
    EXPECT_EQ(rowsOf("hostMemory").at(1)[1], "2000");
    // What the set was comes before what went wrong.
    EXPECT_TRUE(inOrder(console, "Bytes=-1000", "can't allocate -1000 bytes")) << console;
    EXPECT_TRUE(inOrder(console, "  Result   : OK", oneLost)) << console;
    EXPECT_TRUE(inOrder(s_out, "|PS Summary", "\n2 of ")) << s_out;
    EXPECT_TRUE(has(s_out, " sets could not be prepared, in 2 of ")) << s_out;
}

TEST_F(HostRun, SummaryHasTheFlagsOfADisturbedState) {
    EXPECT_EQ(s_host->summaryOf("hostFpState")[5], "?Invalid");
    EXPECT_EQ(s_host->summaryOf("hostCannot")[5], "-");
    const Row row = s_host->summaryOf("hostFast");
    EXPECT_EQ((Row{row[1], row[5], row[6], row[8], row[10]}),
              (Row{"HostSets", "Ok", "HOST", "modules", "host"}));
    EXPECT_EQ(row[2].substr(0, 8), "Near 53 ");
}

TEST_F(HostRun, ClosingBoxAddsUp) {
    const auto count = [](const char* label) { return Pscv::summary(s_out, label); };
    EXPECT_EQ(count(".Number of tests"),
              count(".Successes") + count(".Failures") + count("...Undefined"));
    EXPECT_EQ(count(".Failures"), count("...Fails") + count("...Notes"));
    EXPECT_EQ(count("...Fails"), count(".....-FAIL") + count(".....-EXCPTFAIL"));
    EXPECT_EQ(count("...Notes"), count(".....-NOTE") + count(".....-BADSTSWRN"));
    std::map<std::string, int> ended;
    for (const Row& row : Pscv::summaryLines(s_host->text("tests_sum.csv"))) ++ended[row[9]];
    EXPECT_EQ(count(".....-EXCPTFAIL"), ended["EXCPTFAIL"]);
    EXPECT_EQ(count(".....-FAIL"), ended["FAIL"] + ended["FUNCFAIL"] + ended["DATAFAIL"]);
    EXPECT_EQ(count(".....-BADSTSWRN"), ended["BADSTSWRN"]);
    EXPECT_EQ(count("...Undefined"), ended["UNDEFINED"]);
}

// ---- other runs ------------------------------------------------------------------

TEST(HostKeys, ChooseTheOrder) {
    const std::pair<Pscv::Arguments, std::string> cases[] = {
        {{"-fhostSlow", "-fhostControl", "-fhostFast"}, "Control Fast Fast Fast Fast Slow "},
        {{"-fhostSlow", "-fhostControl", "-fhostFast", "-dMode=twice", "-s-"},
         "Fast Fast Slow Control "}};
    for (const auto& [keys, expected] : cases) {
        const Host host;
        host.run(withFiles, keys);
        std::string functions;
        for (const Row& row : host.rows()) functions += row[colBase].substr(4) + " ";
        EXPECT_EQ(functions, expected) << keys.back();
    }
}

// Rows are in the table before their sets are on the console.
TEST(HostKeys, InterruptEndsTheRunInOrder) {
    const std::pair<int, std::string> cases[] = {
        {SIGINT, "SIGINT"}, {SIGTERM, "SIGTERM"}, {SIGHUP, "SIGHUP"}};
    std::string rounds = "-dRounds=1";
    for (int i = 2; i <= 3000; ++i) rounds += ";" + std::to_string(i);
    for (const auto& [signal, name] : cases) {
        const Host host;
        support::Process process(
            host.command(withFiles, {"-gdone", "-LP", rounds, "-fhostFast", "-fhostSlow"}));
        ASSERT_TRUE(process.waitForText("Rounds=4 "));
        EXPECT_TRUE(has(host.text("table.csv"), "\nhostFast,3,"));
        process.send(signal);
        process.send(signal);  // timeout(1) does so
        const Outcome outcome = process.finish();
        EXPECT_EQ(outcome.signal, signal);
        EXPECT_EQ(outcome.out, host.text("list.txt"));
        const std::string cut = "\n-- Interrupted: " + std::to_string(host.rows().size()) +
                                " of 6000 sets were measured\n";
        EXPECT_TRUE(inOrder(outcome.out, "  Result   : OK", cut)) << outcome.out;
        EXPECT_TRUE(outcome.out.ends_with("+\nInterrupted by " + name + ": 1 test was not run\n"))
            << outcome.out;
        EXPECT_FALSE(has(outcome.out, "hostSlow "));
        EXPECT_FALSE(host.text("done.end").empty());
    }
}

// Neither level PERF nor a table: nobody sees what is measured.
TEST(HostKeys, ARunWithoutFiguresSaysHowToSeeThem) {
    const std::string hint =
        "No figure was shown: -LP shows them here, -r writes them to a table\n";
    const std::pair<Pscv::Arguments, bool> cases[] = {
        {{"-LW"}, true}, {{"-LP"}, false}, {{"-r"}, false}, {{"-q"}, true}, {{"-q", "-Q"}, false}};
    for (const auto& [keys, hinted] : cases) {
        const std::string out = Host().run({"-B", "-f=hostFast"}, keys).out;
        EXPECT_EQ(out.ends_with("+\n" + hint), hinted) << out;
        EXPECT_EQ(has(out, hint), hinted) << out;
    }
}

}  // namespace
