// Which tests a run takes, and where its keys and parameters come from.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>

#include "pscv.h"

namespace {

namespace fs = std::filesystem;
using support::Outcome;
using Words = Pscv::Arguments;

struct Listed {
    std::string function, testClass, source;
    bool operator==(const Listed&) const = default;
};

void PrintTo(const Listed& test, std::ostream* out) {
    *out << test.function << " " << test.testClass << " " << test.source;
}

// The lines of the list box: the columns begin at 6, 46 and 62.
std::vector<Listed> listed(const Pscv& pscv, const Words& keys, const Words& more = {}) {
    std::vector<Listed> tests;
    for (const std::string& line : Pscv::listed(pscv.run(keys, more).out)) {
        const auto cell = [&](std::size_t begin, std::size_t end) {
            const std::string text = line.substr(begin, end - begin);
            return text.substr(0, text.find_last_not_of(' ') + 1);
        };
        tests.push_back({cell(6, 46), cell(46, 62), cell(62, 77)});
    }
    return tests;
}

// The cells of data type, size and figures of every row.
std::string measured(const Pscv& pscv) {
    std::string text;
    for (const support::Row& row : support::tableRows(pscv.text("table.csv")))
        if (row[0] == "zmoiCanny")
            text += row[colType] + ":" + row[colSize] + ":" + row[colParm1] + " ";
    return text;
}

TEST(Selection, PatternsChooseFromTheList) {
    const Pscv pscv;
    const std::vector<Listed> all = listed(pscv, {"-e"});
    ASSERT_GT(all.size(), 40U);
    const struct {
        Words keys;
        std::function<bool(const Listed&)> runs;
    } cases[] = {
        {{"-fNorm", "-fCanny"},
         [](const Listed& t) { return has(t.function, "Norm") || has(t.function, "Canny"); }},
        {{"-f+8u", "-f+C1"},
         [](const Listed& t) { return has(t.function, "8u") && has(t.function, "C1"); }},
        {{"-f-Norm", "-f-", "Canny"},
         [](const Listed& t) { return !has(t.function, "Norm") && !has(t.function, "Canny"); }},
        {{"-f=zmoiCanny_16s8u_C1R"},
         [](const Listed& t) { return t.function == "zmoiCanny_16s8u_C1R"; }},
        {{"-m=p_cnorm", "-f32f"},
         [](const Listed& t) { return t.source == "p_cnorm" && has(t.function, "32f"); }},
        {{"-mnorm", "-m-p_cnorm"},
         [](const Listed& t) { return has(t.source, "norm") && !has(t.source, "p_cnorm"); }},
        {{"-tCanny", "-fMinMax", "-kor"},
         [](const Listed& t) { return has(t.testClass, "Canny") || has(t.function, "MinMax"); }},
        {{"-tCanny", "-fMinMax"}, [](const Listed&) { return false; }},
        {{"-f==x"}, [](const Listed&) { return false; }},
        {{"-f=zmoiCanny"}, [](const Listed&) { return false; }},
        {{"-f", "-", "-f+", "-m="}, [](const Listed&) { return true; }},
        {{"-f=zmoiCanny_16s8u_C1R", "-fMinMax"},
         [](const Listed& t) {
             return t.function == "zmoiCanny_16s8u_C1R" || has(t.function, "MinMax");
         }},
        {{"-f=zmoiCanny_32f8u_C1R", "-f-32f"},  // the exact one is not refused
         [](const Listed& t) {
             return t.function == "zmoiCanny_32f8u_C1R" || !has(t.function, "32f");
         }},
        {{"-t-Canny", "-m+p_c", "-f+C1R"},
         [](const Listed& t) {
             return !has(t.testClass, "Canny") && has(t.source, "p_c") && has(t.function, "C1R");
         }},
        {{"-t=TimcCanny"}, [](const Listed& t) { return t.testClass == "TimcCanny"; }},
    };
    for (const auto& c : cases) {
        std::vector<Listed> expected = all;
        std::erase_if(expected, [&](const Listed& test) { return !c.runs(test); });
        EXPECT_EQ(listed(pscv, {"-e"}, c.keys), expected) << c.keys[0];
    }
}

// What was asked for and is not there is named behind everything else.
TEST(Selection, NamesThatNothingHasStandAtTheEnd) {
    const Pscv pscv;
    const std::pair<Words, const char*> cases[] = {
        {{"-e", "-fcanny"}, "no function has 'canny' in its name; 5 have 'Canny'\n"},
        {{"-tTimccanny"}, "no test has 'Timccanny' in its name; 3 have 'TimcCanny'\n"},
        {{"-m=p_cadds"}, "no file has the name 'p_cadds'; p_cadd?\n"},
        {{"-f=zmoiCanny"}, "no function has the name 'zmoiCanny'; 5 have 'zmoiCanny' in theirs\n"},
        {{"-f=zmoiCanny_16s8u_C1R", "-f+qqq", "-dMethod=Manual", "-dmethod=1"},
         "no function has 'qqq' in its name\n-dmethod: no such parameter; Method?\n"},
        {{"-fCanny", "-f+MinMax"}, "no test fits all of -f, -t, -m and -H\n"},
        {{"-fCanny", "-Fmin"}, "-Fmin: no selected function has it in its name\n"},
        {{"-f=zmoiCanny_16s8u_C1R", "-dMethod=Manual", "-dImageSizes=1x1", "-dLevel=2"},
         "-dImageSizes: no such parameter; ImageSize?\n"
         "-dLevel: no such parameter in this run\n"}};
    for (const auto& [keys, end] : cases) {
        const std::string out = pscv.run({"-B", "-LP"}, keys).out;
        EXPECT_TRUE(out.ends_with("-+\n" + std::string(end))) << out;
    }
}

TEST(Selection, StartHotAndNamedFunctions) {
    const Pscv pscv;
    support::writeFile(pscv.file("one.ini"), "[zmoiCanny_32f8u_C1R]\n");
    const std::string both = "16s8u:64x64:2x2 32f8u:64x64:2x2 ", hot = "16s8u:64x64:2x2 ",
                      cold = "32f8u:64x64:2x2 ", in = "-p" + pscv.file("");
    const std::pair<Words, std::string> cases[] = {{{"-s"}, both},
                                                   {{"-s-"}, both},
                                                   {{"-FzmoiCanny_32f8u_C1R"}, cold},
                                                   {{"-HONLY"}, hot},
                                                   {{"-HONLY", "-FzmoiCanny_32f8u_C1R"}, ""},
                                                   {{in, "-ione", "-P"}, cold},
                                                   {{in, "-ione"}, both},
                                                   {{"-P"}, both}};
    for (const auto& [keys, rows] : cases) {
        const Outcome outcome = pscv.run(Pscv::smallCanny(keys));
        EXPECT_EQ(measured(pscv), rows) << keys.back() << outcome.out;
    }
    pscv.run(Pscv::smallCanny({"-H", "-rhot"}));
    std::string interest;
    for (const std::string& line : support::lines(pscv.text("hot.csv")))
        if (has(line, "zmoiCanny")) interest += line.substr(line.rfind(',')) + " ";
    EXPECT_EQ(interest, ",Hot ,- ");
}

// Without arguments: first the working directory, then the executable's own.
TEST(KeyFile, TheConfigurationFileIsTheCommandLine) {
    const Pscv pscv;
    const fs::path exe = pscv.file("bin/copied"), work = pscv.file("work");
    fs::create_directories(exe.parent_path());
    fs::create_directories(work);
    fs::copy_file(PSCV_PROGRAM, exe);
    support::Command command = pscv.command({});
    command.program = exe.string();
    command.arguments.clear();
    command.directory = work;
    command.environment["LD_LIBRARY_PATH"] =
        (fs::path(PSCV_PROGRAM).parent_path() / "lib").string();
    support::writeFile(pscv.file("bin/copied.cfg"), "-e -f=zmoiCanny_16s8u_C1R\n-v");
    const std::string beside = support::run(command).out;
    EXPECT_TRUE(has(beside, "read from " + exe.string() + ".cfg file\n-e: ")) << beside;
    EXPECT_TRUE(has(beside, " zmoiCanny_16s8u_C1R ") && !has(beside, "32f8u")) << beside;
    support::writeFile(pscv.file("work/copied.cfg"), "-v");
    const std::string own = support::run(command).out;
    EXPECT_TRUE(has(own, "read from copied.cfg file\n-v: ")) << own;
    command.arguments = {"-h"};
    EXPECT_FALSE(has(support::run(command).out, ".cfg file"));
}

TEST(IniFile, GivesBackTheSetsThatItTook) {
    const Pscv pscv;
    const std::string in = "-p" + pscv.file("");
    const Words keys{"-B", "-m=p_ccanny", in, "-rtable"};
    const auto with = [&](const Words& more) { return pscv.run(keys, more).out; };
    support::writeFile(pscv.file("set.ini"), "[zmoiCanny_32f8u_C1R]\nImageSize=24x8\nmine=1\n");
    with({"-Iset", "-dImageSize=64x64;32x48", "-dnumFigures=2x2", "-dMethod=Manual",
          "-dNumLoops=2"});
    const std::string text = pscv.text("set.ini");
    for (const char* part : {"Method=Manual\t// Auto|Manual|Statistic|Iterative\n", "NumLoops=2\n",
                             "[zmoiCanny_32f8u_C1R]\nImageSize=24x8\nmine=1\nnumFigures=2x2\n",
                             "[zmoiCanny_16s8u_C1R]\nImageSize=64x64;32x48\nnumFigures=2x2\n"})
        EXPECT_TRUE(has(text, part)) << part << text;
    const std::string out = with({"-iset"});
    EXPECT_EQ(measured(pscv), "16s8u:64x64:2x2 16s8u:32x48:2x2 32f8u:24x8:2x2 ") << out;
    EXPECT_EQ(pscv.text("set.ini"), text) << "read only";
    EXPECT_EQ(pscv.rows()[0][colComment], "nLps=2");
    // Nothing else has a section, not even the processor's test.
    EXPECT_EQ(Pscv::summary(pscv.run({"-B", "-P", "-iset", in}).out, ".Number of tests"), 2);
    with({"-iset", "-dImageSize=8x8", "-dImageSize=16x16"});
    EXPECT_EQ(measured(pscv), "16s8u:16x16:2x2 32f8u:16x16:2x2 ");
}

TEST(IniFile, ValuesThatMakeNoSenseLeaveTheDefaults) {
    const Pscv pscv;
    support::writeFile(pscv.file("odd.ini"),
                       "[zmoiCanny_16s8u_C1R]\nimagesize=8x8\nImageSize=many\nnumFigures=\n");
    pscv.run({"-B", "-P", "-p" + pscv.file(""), "-iodd", "-rtable", "-dMethod=Manual"});
    EXPECT_TRUE(measured(pscv).starts_with("16s8u:64x64:2x2 16s8u:64x64:3x3 ")) << measured(pscv);
}

}  // namespace
