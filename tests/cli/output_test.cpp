// What the files of a run hold, pictures as input, and sinks that fail.
#include <gtest/gtest.h>
#include <sched.h>

#include <filesystem>
#include <regex>

#include "pscv.h"

namespace {

namespace fs = std::filesystem;
using support::Outcome;
using support::Row;
using Words = Pscv::Arguments;

// Every line of a box, whatever the machine and the folders are called.
void expectBoxes(const std::string& text) {
    std::size_t boxed = 0;
    for (const std::string& line : support::lines(text)) {
        if (line.empty() || (line[0] != '|' && line[0] != '+')) continue;
        EXPECT_TRUE(line.size() == 79 && line.back() == line[0]) << line;
        ++boxed;
    }
    EXPECT_GT(boxed, 10U) << text;
}

TEST(Output, SummaryTableAndBoxesKeepTheirForm) {
    const Pscv pscv;
    const std::string longDir = pscv.file(std::string(120, 'd'));
    fs::create_directory(longDir);
    const Outcome outcome = pscv.run(
        Pscv::smallCanny({"-o" + longDir + "/listing.txt", "-u" + longDir + "/sum, x.csv", "-LI"}));
    expectBoxes(outcome.out);
    expectBoxes(support::readFile(longDir + "/listing.txt"));
    const std::string summary = support::readFile(longDir + "/sum, x.csv");
    const std::vector<Row> data = Pscv::summaryLines(summary);
    ASSERT_EQ(data.size(), 2U);
    EXPECT_EQ(data[0][9], "OK");
    EXPECT_NE(summary.find("\nLibrary,libzmoi, 2.0 "), std::string::npos) << summary;
    for (const char* mode : {"-e", "-e+", "-e-"}) expectBoxes(pscv.run({mode}).out);
}

// At the 2000 MHz given, with three taps across and three down.
TEST(Output, FiguresAreThoseOfAnElementAndOfACall) {
    const Pscv pscv;
    pscv.run({"-B", "-f=zmoiFilterGaussianBorder_32f_C3R", "-dImageSize=64x48", "-dMaskSize=3x3",
              "-dBorder=replicate", "-dMethod=Manual", "-rtable"});
    const Row row = pscv.rows().at(0);
    EXPECT_EQ(row[colPer], "pxch");
    constexpr double elements = 64 * 48 * 3, operations = 10 * elements;
    const double time = std::stod(row[colTime]);
    EXPECT_NEAR(std::stod(row[colClocks]) * elements / 2000, time, time / 50);
    EXPECT_NEAR(std::stod(row[colMFlops]) * time, operations, operations / 50);
}

TEST(Output, AppendsToAnEarlierRun) {
    const Pscv pscv;
    for (const char* function : {"-f=zmoiCanny_16s8u_C1R", "-f=zmoiCanny_32f8u_C1R"})
        pscv.run({"-B", function, "-dImageSize=64x64", "-dnumFigures=2x2", "-Rall", "-Oall",
                  "-Usum", "-dMethod=Manual"});
    EXPECT_EQ(support::count(pscv.text("all.csv"), "\nzmoiCanny,16s8u,"), 1U);
    EXPECT_EQ(support::count(pscv.text("all.csv"), "\nzmoiCanny,32f8u,"), 1U);
    EXPECT_EQ(support::count(pscv.text("all.txt"), "|PS Summary "), 2U);
    EXPECT_EQ(Pscv::summaryLines(pscv.text("sum_sum.csv")).size(), 2U);
}

TEST(Output, NamesOfTheParameters) {
    const Pscv pscv;
    const std::string names = "zmoiCanny,16s8u,C1R,ImageSize,numFigures,-,-,-,-,parmNames,";
    const auto run = [&](const Words& more) { return pscv.run(Pscv::smallCanny(more)).out; };
    run({"-f-32f", "-qnames"});
    EXPECT_EQ(support::count(pscv.text("names_name.csv"), "\n" + names), 1U);
    EXPECT_EQ(support::count(pscv.text("table.csv"), names), 0U);
    run({"-f-32f", "-q+"});
    const std::string table = pscv.text("table.csv");
    EXPECT_TRUE(has(table, "\n" + names)) << table;
    EXPECT_TRUE(inOrder(table, names, ",64x64,")) << table;
    fs::remove(pscv.file("table.csv"));
    const std::string out = run({"-f-32f", "-qnames", "-Q"});
    EXPECT_EQ(support::count(pscv.text("names_name.csv"), "\n" + names), 1U);
    EXPECT_FALSE(has(pscv.text("table.csv"), ",64x64,")) << out;
}

TEST(Picture, IsMeasuredOrNamed) {
    const Pscv pscv;
    const std::string header("BM\1\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0", 18);
    const std::string sizes("\x40\0\0\0\x30\0\0\0\1\0\x18\0", 12);  // 64x48, 24 bits
    const std::string sound = header + sizes + std::string(24 + 64 * 48 * 3, '\0');
    for (const bool loads : {true, false}) {
        support::writeFile(pscv.file("pic.bmp"), loads ? sound : sound.substr(0, 53));
        const Outcome outcome =
            pscv.run(Pscv::smallCanny({"-f-32f", "-p" + pscv.file(""), "-dPicture=pic.bmp"}));
        ASSERT_EQ(pscv.rows().size(), loads ? 1U : 0U) << outcome.out;
        EXPECT_EQ(has(outcome.out, "-- Picture pic.bmp was not loaded\n"), !loads) << outcome.out;
        EXPECT_TRUE(!loads || has(pscv.rows()[0][colComment], "pic"));
    }
}

TEST(Sinks, ThatFailAreNamedAndCostNothingElse) {
    const Pscv pscv;
    fs::create_directory(pscv.file("dir.x"));
    support::writeFile(pscv.file("plain"), "");
    const struct {
        std::string path;
        std::string reason;
        bool runs;  // a sink that cannot be opened ends the run before it begins
    } cases[] = {{"/dev/full", "No space left on device", true},
                 {pscv.file("dir.x"), "Is a directory", false},
                 {pscv.file("plain/x.y"), "Not a directory", false}};
    for (const auto& c : cases) {
        for (const std::string key : {"-o", "-O", "-r", "-R", "-u", "-U", "-q", "-g"}) {
            fs::remove(pscv.file("table.csv"));
            const Outcome outcome = pscv.run(Pscv::smallCanny({"-gdone", key + c.path}));
            const bool full = c.path == "/dev/full";
            const bool runs = full || key == "-g";
            const std::string place =
                full ? "-- Can't write " + c.path + ": " + c.reason + ";"
                     : "-- Can't open file " + c.path + " to write: " + c.reason + "\n";
            EXPECT_EQ(support::count(outcome.out, place), 1U) << key << outcome.out;
            EXPECT_EQ(has(outcome.out, "FATAL FAIL: can't open output file for writing\n"), !runs);
            const std::size_t box = outcome.out.find("PS Summary");
            EXPECT_EQ(box != std::string::npos, runs);
            EXPECT_EQ(outcome.out.find("\nIncomplete output: " + c.path + " (" + c.reason + ")\n",
                                       runs ? box : 0) != std::string::npos,
                      full)
                << key << outcome.out;
            if (runs) {
                EXPECT_EQ(pscv.rows().size(), 2U);
                EXPECT_EQ(Pscv::summaryLines(pscv.text("tests_sum.csv")).size(), 2U);
            }
            if (key != "-g") {
                EXPECT_FALSE(pscv.text("done.end").empty());
            }
        }
    }
}

TEST(ExitStatus, SpeaksOfFaultsWhenItIsAskedTo) {
    const Pscv pscv;
    support::writeFile(pscv.file("plain"), "");
    const std::string strict = "\nExit status 1 by --strict: ", lost = "-o" + pscv.file("plain/x");
    const struct {
        Words keys;
        int status;
        std::string says;
    } cases[] = {
        {{"--strict"}, 0, "|.Number of tests   2"},
        {{"-dNope=1", "-X"}, 0, "-dNope: no such parameter"},
        {{"--strict", "-dNope=1", "-dImageSize=a", "-X", "lost", "-g/dev/full"},
         1,
         strict + "3 values, words or names were refused or not asked for, 1 output is incomplete"},
        {{"--strict", "-dPicture=none.bmp"},
         1,
         strict + "2 tests failed, 2 sets could not be prep"},
        {{"--strict", lost}, 2, "FATAL FAIL: can't open output file for writing\n"},
        {{lost}, 0, "FATAL FAIL: can't open output file for writing\n"},
        {{"--stric", "-h"}, 2, "--stric: ignored: incorrect option key; --strict?\n"}};
    for (const auto& c : cases) {
        fs::remove(pscv.file("table.csv"));
        const Outcome outcome = support::run(pscv.command(Pscv::smallCanny(c.keys)));
        EXPECT_EQ(outcome.status, c.status) << outcome.out;
        EXPECT_TRUE(has(outcome.out, c.says)) << outcome.out;
        EXPECT_EQ(fs::exists(pscv.file("table.csv")), c.keys[0] != "--stric");
    }
}

TEST(LongKeys, BindMeasureAndRepeat) {
    const Pscv pscv;
    const std::string core = std::to_string(sched_getcpu());
    const Outcome outcome =
        pscv.run(Pscv::smallCanny({"--loop=0.01", "--frequency=exact", "--cpu=" + core}));
    EXPECT_TRUE(has(pscv.text("table.csv"), "Hz (exact) bound to core " + core)) << outcome.out;
    std::string calls = outcome.out;
    const std::regex line(
        "called for 0.01 s by process [0-9]+ at 0x[0-9a-f]+\n  [1-9][0-9]* calls\n");
    EXPECT_EQ(std::distance(std::sregex_iterator(calls.begin(), calls.end(), line), {}), 2);
    EXPECT_TRUE(outcome.clean() && pscv.rows().empty()) << outcome.out;
}

// A shell's status behind the console of a run: nobody reads it, it is full, it
// is none. Only the first ends the run; the listing is whole in each.
TEST(Sinks, AConsoleThatFailsLeavesTheFilesWhole) {
    const Pscv pscv;
    const std::string box = "|.Total time  ";
    const struct {
        const char* script;
        const char* status;
        std::string reason;
        std::size_t rows;
    } cases[] = {{"mkfifo pipe && exec 3<>pipe 4>pipe 3<&- && \"$@\" >&4", "141", "Broken pipe", 0},
                 {"\"$@\" >/dev/full", "0", "No space left on device", 2},
                 {"\"$@\" >&-", "0", "Bad file descriptor", 2}};
    for (const auto& c : cases) {
        support::Command command = pscv.command(Pscv::smallCanny({"-gdone", "-olist"}));
        command.arguments.insert(
            command.arguments.begin(),
            {"-c", std::string(c.script) + "; echo $? >status", "sh", command.program});
        command.program = "/bin/sh";
        command.directory = pscv.file("");
        const Outcome outcome = support::run(command);
        EXPECT_EQ(pscv.text("status"), std::string(c.status) + "\n") << c.script;
        const std::string listing = pscv.text("list.txt");
        const std::string lost = "Incomplete output: standard output (" + c.reason + ")\n";
        EXPECT_TRUE(inOrder(listing, box, lost)) << listing;
        const bool interrupted = c.rows == 0;
        EXPECT_EQ(has(listing, lost + "Interrupted by SIGPIPE: 2 tests were not run\n"),
                  interrupted)
            << listing;
        EXPECT_EQ(outcome.err.ends_with(lost), !interrupted) << outcome.err;
        EXPECT_EQ(pscv.rows().size(), c.rows);
        EXPECT_EQ(Pscv::summaryLines(pscv.text("tests_sum.csv")).size(), c.rows);
        EXPECT_FALSE(pscv.text("done.end").empty());
    }
}

}  // namespace
