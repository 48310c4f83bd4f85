// Whole runs of the host program: its tests have known behaviour, so what every
// file of a run holds can be foreseen.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <map>
#include <memory>
#include <thread>

#include "process.h"
#include "text.h"

using support::Command;
using support::Outcome;
using support::Row;
using support::TempDir;

namespace {

// One run in a directory of its own, with all files that a run can write.
struct HostFiles {
    TempDir dir;
    Outcome outcome;
    std::vector<Row> table;
    std::map<std::string, Row> results;  // summary rows by function

    std::string file(const std::string& suffix) const {
        return support::readFile(dir.path() / ("host" + suffix));
    }
    std::vector<Row> rowsOf(const std::string& function) const {
        std::vector<Row> rows;
        std::ranges::copy_if(table, std::back_inserter(rows),
                             [&](const Row& row) { return row[0] == function; });
        return rows;
    }
};

Command command(const TempDir& dir, std::vector<std::string> keys) {
    Command host;
    host.program = HOST_PROGRAM;
    host.arguments = std::move(keys);
    host.arguments.push_back("-l" + dir.path().string());
    host.arguments.push_back("-p" + dir.path().string());
    host.environment["PSCV_FREQ_MHZ"] = "2000";
    // A caught fault drops what lay on the stack without destructors.
    host.environment["ASAN_OPTIONS"] = "detect_leaks=0";
    return host;
}

void start(HostFiles& run, std::vector<std::string> keys) {
    for (const char* key : {"-B", "-r", "-u", "-o"}) keys.push_back(key);
    run.outcome = support::run(command(run.dir, keys));
    run.table = support::tableRows(run.file(".csv"));
    for (const Row& row : support::tableRows(run.file("_sum.csv"))) {
        if (row.size() == 11) run.results[row[0]] = row;
    }
}

struct Expected {
    const char* function;
    const char* result;  // as in the summary, with the console at level PERF
    std::size_t rows;
    const char* says;  // on the console
};

// Behind the result of a test; the closing box has the totals.
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
        s_run = std::make_unique<HostFiles>();
        start(*s_run, {"-LPERF"});
    }
    static void TearDownTestSuite() { s_run.reset(); }
    static const HostFiles& shared() { return *s_run; }

  private:
    static std::unique_ptr<HostFiles> s_run;
};

std::unique_ptr<HostFiles> HostRun::s_run;

// The part of the console between the title of a test and the next one's.
std::string consoleOf(const std::string& console, const std::string& function) {
    const std::size_t start = console.find(function + " ");
    if (start == std::string::npos) return "";
    const std::size_t end = console.find("Function", start);
    return console.substr(start, end == std::string::npos ? end : end - start);
}

TEST_F(HostRun, EveryTestEndsAsItShould) {
    ASSERT_TRUE(shared().outcome.clean()) << shared().outcome.out << shared().outcome.err;
    const std::string summary = shared().file("_sum.csv");
    for (const Expected& expected : expectations) {
        SCOPED_TRACE(expected.function);
        const auto result = shared().results.find(expected.function);
        ASSERT_NE(result, shared().results.end());
        EXPECT_EQ(result->second[9], expected.result);
        EXPECT_EQ(shared().rowsOf(expected.function).size(), expected.rows);
        EXPECT_NE(consoleOf(shared().outcome.out, expected.function).find(expected.says),
                  std::string::npos)
            << consoleOf(shared().outcome.out, expected.function);
        EXPECT_EQ(support::has(summary, std::string("--No measurements have been done\n") +
                                            expected.function + ","),
                  expected.rows == 0)
            << summary;
    }
}

TEST_F(HostRun, FiguresAreThoseOfAUnitAndOfACall) {
    for (const Row& row : shared().rowsOf("hostFast")) {
        EXPECT_EQ(row[11], "round");
        // At the 2000 MHz given.
        const double clocks = std::stod(row[10]) * std::stod(row[1]);
        EXPECT_NEAR(std::stod(row[12]), clocks / 2000.0, clocks / 2000.0 * 0.02);
        EXPECT_GT(std::stod(row[13]), 0.0);
    }
}

TEST_F(HostRun, LinesOfDeprecatedValuesFollowTheRegularOnes) {
    const std::vector<Row> rows = shared().rowsOf("hostOldValues");
    ASSERT_EQ(rows.size(), 4u);
    const char* levels[] = {"1", "2", "3", "two"};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(rows[i][1], levels[i]);
    EXPECT_EQ(rows[3][9], "deprecated");
    EXPECT_EQ(rows[1][10], rows[3][10]);
}

TEST_F(HostRun, SetThatCannotBePreparedIsNamedAndTheNextOneRuns) {
    const std::string console = consoleOf(shared().outcome.out, "hostMemory");
    EXPECT_NE(console.find("Bytes=-1000"), std::string::npos) << console;
    const std::vector<Row> rows = shared().rowsOf("hostMemory");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1][1], "2000");
    // What the set was comes before what went wrong.
    EXPECT_LT(console.find("Bytes=-1000"), console.find("can't allocate -1000 bytes"));
    EXPECT_LT(console.find("  Result   : OK"), console.find(oneLost)) << console;
    const std::string& out = shared().outcome.out;
    EXPECT_GT(out.find("\n2 of "), out.find("|PS Summary"));
    EXPECT_TRUE(support::has(out, " sets could not be prepared, in 2 of ")) << out;
}

TEST_F(HostRun, SummaryHasTheFlagsOfADisturbedState) {
    const auto& results = shared().results;
    EXPECT_EQ(results.at("hostFpState")[5], "?Invalid");
    EXPECT_EQ(results.at("hostCannot")[5], "-");
    const Row& row = results.at("hostFast");
    EXPECT_EQ((Row{row[1], row[5], row[6], row[8], row[10]}),
              (Row{"HostSets", "Ok", "HOST", "modules", "host"}));
    EXPECT_EQ(row[2].substr(0, 8), "Near 53 ");
}

TEST_F(HostRun, ClosingBoxAddsUp) {
    std::map<std::string, int> counts;
    for (const Row& row : support::tableRows(shared().file("_sum.csv"))) {
        if (row.size() == 2 && row[0].starts_with(".") && row[1].find(':') == std::string::npos)
            counts[row[0].substr(0, row[0].find_last_not_of(' ') + 1)] = std::stoi(row[1]);
    }
    EXPECT_EQ(counts[".Number of tests"],
              counts[".Successes"] + counts[".Failures"] + counts["...Undefined"]);
    EXPECT_EQ(counts[".Failures"], counts["...Fails"] + counts["...Notes"]);
    EXPECT_EQ(counts["...Fails"], counts[".....-FAIL"] + counts[".....-EXCPTFAIL"]);
    EXPECT_EQ(counts["...Notes"], counts[".....-NOTE"] + counts[".....-BADSTSWRN"]);
    std::map<std::string, int> ended;
    for (const auto& [function, row] : shared().results) ++ended[row[9]];
    EXPECT_EQ(counts[".....-EXCPTFAIL"], ended["EXCPTFAIL"]);
    EXPECT_EQ(counts[".....-FAIL"], ended["FAIL"] + ended["FUNCFAIL"] + ended["DATAFAIL"]);
    EXPECT_EQ(counts[".....-BADSTSWRN"], ended["BADSTSWRN"]);
    EXPECT_EQ(counts["...Undefined"], ended["UNDEFINED"]);
}

// ---- other runs ------------------------------------------------------------------

TEST(HostKeys, ChooseTheOrder) {
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"-fhostSlow", "-fhostControl", "-fhostFast"}, "Control Fast Fast Fast Fast Slow "},
        {{"-fhostSlow", "-fhostControl", "-fhostFast", "-dMode=twice", "-s-"},
         "Fast Fast Slow Control "}};
    for (const auto& [keys, expected] : cases) {
        HostFiles run;
        start(run, keys);
        std::string functions;
        for (const Row& row : run.table)
            if (row[0].starts_with("host")) functions += row[0].substr(4) + " ";
        EXPECT_EQ(functions, expected) << keys.back() << run.outcome.out;
    }
}

// Rows are in the file as soon as they are measured.
bool waitForRow(const std::filesystem::path& table, const std::string& row) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < deadline) {
        if (std::filesystem::exists(table) &&
            support::readFile(table).find(row) != std::string::npos)
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

TEST(HostKeys, InterruptEndsTheRunInOrder) {
    const std::pair<int, std::string> cases[] = {
        {SIGINT, "SIGINT"}, {SIGTERM, "SIGTERM"}, {SIGHUP, "SIGHUP"}};
    std::string rounds = "-dRounds=1";
    for (int i = 2; i <= 3000; ++i) rounds += ";" + std::to_string(i);
    for (const auto& [signal, name] : cases) {
        HostFiles run;
        support::Process process(
            command(run.dir, {"-B", "-r", "-u", "-o", "-g" + run.dir.file("done.end"), "-LP",
                              rounds, "-fhostFast", "-fhostSlow"}));
        ASSERT_TRUE(waitForRow(run.dir.path() / "host.csv", "\nhostFast,3,"));
        process.send(signal);
        process.send(signal);  // timeout(1) does so
        const Outcome outcome = process.finish();
        EXPECT_EQ(outcome.signal, signal);
        EXPECT_EQ(outcome.out, run.file(".txt"));
        const std::vector<Row> table = support::tableRows(run.file(".csv"));
        const auto rows = std::ranges::count_if(
            table, [](const Row& row) { return row[0] == "hostFast" && row.size() == 14; });
        const std::string cut =
            "\n-- Interrupted: " + std::to_string(rows) + " of 6000 sets were measured\n";
        EXPECT_LT(outcome.out.find("  Result   : OK"), outcome.out.find(cut)) << outcome.out;
        EXPECT_TRUE(outcome.out.ends_with("+\nInterrupted by " + name + ": 1 test was not run\n"))
            << outcome.out;
        EXPECT_EQ(outcome.out.find("hostSlow "), std::string::npos);
        EXPECT_FALSE(support::readFile(run.dir.path() / "done.end").empty());
    }
}

// Neither level PERF nor a table: nobody sees what is measured.
TEST(HostKeys, ARunWithoutFiguresSaysHowToSeeThem) {
    const std::string hint =
        "No figure was shown: -LP shows them here, -r writes them to a table\n";
    const std::pair<std::vector<std::string>, bool> cases[] = {
        {{"-LW"}, true}, {{"-LP"}, false}, {{"-r"}, false}, {{"-q"}, true}, {{"-q", "-Q"}, false}};
    for (const auto& [keys, hinted] : cases) {
        const TempDir dir;
        std::vector<std::string> words{"-B", "-f=hostFast"};
        words.insert(words.end(), keys.begin(), keys.end());
        const Outcome outcome = support::run(command(dir, words));
        EXPECT_EQ(outcome.out.ends_with("+\n" + hint), hinted) << outcome.out;
        EXPECT_EQ(support::has(outcome.out, hint), hinted) << outcome.out;
    }
}

}  // namespace
