#include "ps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "psdata.h"
#include "session_fixture.h"

namespace {

// A session whose operations note the output level that they find.
class NotingSession : public psSession {
  public:
    std::string notes;
    bool endEarly = false;

    void initSession() override {
        note("init");
        psSession::initSession();
    }
    bool startSession() override {
        note("start");
        return !endEarly;
    }
    void outputHeader() override { note("header"); }
    void listTests(int mode) override { note("list" + std::to_string(mode)); }
    void readCommonData() override {
        note("common");
        psSession::readCommonData();
    }
    void putTableTitle() override {
        note("title");
        psSession::putTableTitle();
    }
    void outputFooter() override { note("footer"); }
    void outputSignal() override {
        note("signal");
        psSession::outputSignal();
    }

  private:
    void note(const std::string& what) {
        notes += what + ":" + std::to_string(g_ostrm.getOutLevel()) + " ";
    }
};

TEST(SessionPaths, DirectoriesLieBehindTheExecutablesAndNamesGetTheExtension) {
    const std::tuple<const char*, const char*, const char*> directories[] = {
        {"/opt/ps/pscv", "", "/opt/ps/"},  {"/opt/ps/pscv", "out", "/opt/ps/out/"},
        {"/opt/ps/pscv", "/tmp", "/tmp/"}, {"/opt/ps/pscv", "\\x", "\\x/"},
        {"/opt/ps/pscv", "C:x", "C:x/"},   {"pscv", "", ""},
        {"pscv", "out/", "out/"},          {"/pscv", "", "/"},
        {"b\\pscv", "out\\", "b\\out\\"},  {"", "", ""}};
    const psString oldPath = psSession::m_exePath, oldName = psSession::m_defName;
    for (const auto& [exe, dir, path] : directories) {
        psSession::m_exePath = exe;
        EXPECT_EQ(psSession::genDirName(dir), psString(path)) << exe << " " << dir;
    }
    const std::tuple<const char*, const char*, const char*> files[] = {
        {"run", "", "d/run.txt"},      {"run.1", "", "d/run.1.txt"},   {"/abs", "", "d//abs.txt"},
        {"run", "x", "d/x.txt"},       {"run", "x.log", "d/x.log"},    {"run", "./x", "d/./x"},
        {"run", "/data/x", "/data/x"}, {"run", "\\x", "\\x"},          {"run", "C:x", "C:x"},
        {"run", "C:", "C:"},           {"run", "sub/x", "d/sub/x.txt"}};
    for (const auto& [defName, name, path] : files) {
        psSession::setDefName(defName);
        EXPECT_EQ(psSession::genPathName("d/", name, ".txt"), psString(path)) << name;
    }
    psSession::m_exePath = oldPath;
    psSession::setDefName(oldName);
}

TEST_F(SessionTest, ExitLevelsReplaceTheEcho) {
    const struct {
        Words keys;
        int level;
        const char* echo;  // of -B, which says it at every level
    } cases[] = {{{"-B"}, 0, "batch mode"},
                 {{"-B", "-e"}, 1, "ignored because of -e option"},
                 {{"-B", "-?"}, 2, "ignored because of -h option"},
                 {{"-B", "-v"}, 3, "ignored because of -v option"},
                 {{"-B", "-e", "-v"}, 1, "ignored because of -e option"},
                 {{"-B", "-v", "-e", "--help"}, 2, "ignored because of -h option"}};
    for (const auto& c : cases) {
        psSession session;
        const std::string echo = parse(session, c.keys);
        EXPECT_EQ(psSession::m_exitLevel, c.level) << echo;
        EXPECT_NE(echo.find(std::string("-B: ") + c.echo + "\n"), std::string::npos) << echo;
        EXPECT_TRUE(session.batMode());
    }
}

// What must be known before any key acts is not looked for in option files.
TEST_F(SessionTest, OptionFilesAreAppliedInPlaceButSetNoDefaults) {
    file("opts", "-nother -p/in -e\n-@opts");
    psSession session;
    const std::string echo = parse(session, {"-ntitle", "-@opts", "-B"});
    EXPECT_TRUE(m_parsed);
    EXPECT_EQ(psSession::m_defName, "title");
    EXPECT_EQ(psSession::getInPath(), "bin/");
    EXPECT_EQ(psSession::m_exitLevel, 0);
    EXPECT_EQ(session.enumMode(), 0);
    EXPECT_NE(echo.find("-@opts: ignored: option files cannot be nested\n-B: batch mode\n"),
              std::string::npos)
        << echo;
}

TEST_F(SessionTest, TheLastOfTheNameKeysCountsAndAnEmptyOneKeepsTheTitle) {
    struct {
        Words keys;
        const char *title, *in, *out;
    } const cases[] = {{{}, "pscv", "bin/", "bin/"},
                       {{"-na", "-nb"}, "b", "bin/", "bin/"},
                       {{"-na", "-n"}, "pscv", "bin/", "bin/"},
                       {{"-pin", "-l/out"}, "pscv", "bin/in/", "/out/"},
                       {{"-pin", "-p"}, "pscv", "bin/", "bin/"}};
    for (const auto& c : cases) {
        psSession session;
        Words keys = c.keys;
        keys.push_back("-B");
        parse(session, keys);
        EXPECT_EQ(psSession::m_defName, psString(c.title));
        EXPECT_EQ(psSession::getInPath(), psString(c.in));
        EXPECT_EQ(psSession::getOutPath(), psString(c.out));
    }
}

TEST_F(SessionTest, WithoutArgumentsTheConfigurationFileIsTheCommandLine) {
    const std::string header = "Command line options: read from pscv.cfg file\n";
    const struct {
        std::map<std::string, std::string> files;  // no content: a directory
        const char* forced;
        std::string echo;
    } cases[] = {
        {{}, nullptr, ""},
        {{},
         "-B",
         "Command line options: set by _FORCE_CMDLINE preprocessor definition\n-B: batch mode\n"},
        {{{"pscv.cfg", "-B\n-nlost\n"}}, "-s-", header + "-B: batch mode\n"},
        {{{"pscv.cfg", "\r\n"}}, "-B", header},
        {{{"pscv.cfg", "-@more\r\n"}, {"more", "-B"}}, nullptr, header + "-B: batch mode\n"},
        {{{"pscv.cfg", std::string(1021, ' ') + "-B -s-"}}, nullptr, header + "-B: batch mode\n"},
        {{{"pscv.cfg", ""}, {"bin/pscv.cfg", "-B"}},
         nullptr,
         "Command line options: read from bin/pscv.cfg file\n-B: batch mode\n"},
    };
    for (const auto& c : cases) {
        for (const auto& [name, content] : c.files) {
            content.empty() ? void(std::filesystem::create_directory(name)) : file(name, content);
        }
        if (c.forced) psRegCmdLine(c.forced);
        psSession session;
        EXPECT_EQ(parse(session, {}), c.echo);
        for (const auto& entry : c.files) std::filesystem::remove(entry.first);
        delete std::exchange(pCmdLine, nullptr);
    }
}

TEST_F(SessionTest, FilesThatCannotBeOpenedEndTheRunAfterAllKeys) {
    for (const std::string key : {"-@none", "-Inone/x.ini"}) {
        NotingSession session;
        const std::string text = run(session, {key, "-B"});
        EXPECT_NE(text.find("-B: batch mode\n"), std::string::npos) << text;
        EXPECT_NE(text.find(std::string("FATAL FAIL: can't open ") +
                            (key[1] == 'I' ? "ini-file" : "output file") + " for writing\n"),
                  std::string::npos)
            << text;
        EXPECT_EQ(session.notes, "init:1 signal:7 ");
        EXPECT_EQ(m_result, 0);
    }
}

TEST_F(SessionTest, TheOutputLevelFollowsTheCourseOfTheRun) {
    const struct {
        Words keys;
        const char* notes;
    } cases[] = {
        {{"-B", "-fnone"}, "init:1 start:7 header:7 common:7 title:1 footer:1 signal:1 "},
        {{"-B", "-fnone", "-LI"}, "init:1 start:7 header:7 common:7 title:15 footer:15 signal:15 "},
        {{"-e"}, "init:1 start:7 header:7 list0:7 signal:7 "},
        {{"-e-"}, "init:1 start:7 header:7 list-1:7 signal:7 "},
        {{"-v", "-e"}, "init:1 start:7 signal:7 "},
    };
    for (const auto& c : cases) {
        NotingSession session;
        run(session, c.keys);
        EXPECT_EQ(session.notes, c.notes);
        EXPECT_EQ(pTestList, nullptr);
    }
}

// Nothing on the way to help and version may open the measured library.
TEST_F(SessionTest, TheLibraryIsWantedOnlyOnceTheKeysAreApplied) {
    static std::string calls;
    const std::pair<const char*, const char*> cases[] = {
        {"-e", "011"}, {"-h", "0"}, {"-v", "0"}, {"-@none", "0"}};
    for (const auto& [key, expected] : cases) {
        calls.clear();
        psRegZmoEnvironment([] { calls += psSession::libraryWanted() ? "1" : "0"; });
        NotingSession session;
        run(session, {key});
        EXPECT_EQ(calls, expected) << key;
    }
}

// The method with its figures, as it stands after the keys.
std::vector<long long> timing() {
    const psTool& tool = psGlobalTool();
    int a = 0, b = 0;
    long long clocks = 0;
    std::vector<long long> figures{tool.method(), std::lround(tool.accuracyLimit() * 1000)};
    if (tool.getMethodLoop(a)) figures.push_back(a);
    if (tool.getMethodStat(a, clocks)) figures.insert(figures.end(), {a, clocks});
    if (tool.getMethodBest(a, b, clocks)) figures.insert(figures.end(), {a, b, clocks});
    return figures;
}

TEST_F(SessionTest, TimingValuesActInBatchModeWhateverTheirSource) {
    const std::pair<Words, std::vector<long long>> cases[] = {
        {{}, {psTool::AUTO, 50}},
        {{"-dAccuracy, %=2.5"}, {psTool::AUTO, 25}},
        {{"-dMethod=Manual"}, {psTool::MANUAL, 1000, 10}},
        {{"-dMethod=m", "-dNumLoops=77"}, {psTool::MANUAL, 1000, 77}},
        {{"-dMethod=Statistic", "-dNumCalls=9", "-dTotalCpuClocks=5000000000"},
         {psTool::STATISTIC, 1000, 9, 5'000'000'000}},
        {{"-dMethod=Iterative", "-dStartNumLoops=3", "-dStopNumLoops=99", "-dMinCpuClocks=7"},
         {psTool::ITERATIVE, 50, 3, 99, 7}},
        {{"-dMethod=Iterative"}, {psTool::ITERATIVE, 50, 1, 2048, 10000}},
        {{"-dMethod=unknown"}, {psTool::AUTO, 50}},
        {{"-dNumLoops=x", "-dMethod=Manual"}, {psTool::MANUAL, 1000, 10}}};
    for (const auto& [extra, expected] : cases) {
        NotingSession session;
        Words keys{"-B", "-fnone"};
        keys.insert(keys.end(), extra.begin(), extra.end());
        run(session, keys);
        EXPECT_EQ(timing(), expected);
    }
}

TEST_F(SessionTest, AlignmentValuesAreBroughtIntoRange) {
    NotingSession session;
    run(session, {"-B", "-fnone", "-dAlignVectorsBy=element", "-dVectorAlign=70",
                  "-dMisalignFirstVectorOnly=no", "-dMutualVectorShift=700"});
    EXPECT_TRUE(!psGetAlignByByte() && !psGetAlignSrc());
    EXPECT_EQ(psGetVectorAlign() * 1000 + psGetVectorShift(), 6640);
    psSetAlignByByte(true);
    psSetVectorAlign(0);
    psSetAlignSrc(true);
    psSetVectorShift(512);
}

TEST_F(SessionTest, TheProcessorTestPrintsItsLinesAndNoRow) {
    const auto fallback = zmo_GetCpuFeatures;
    NotingSession session;
    psRegZmoEnvironment([] {});
    zmo_GetCpuFeatures = [](Zmo64u* mask, Zmo32u, Zmo32u*) -> ZmoStatus { return *mask = 0x5f, 0; };
    const std::string text = run(session, {"-B", "-f__ps", "-rt"});
    zmo_GetCpuFeatures = fallback;
    EXPECT_EQ(m_result, 0);
    EXPECT_NE(text.find("\nCPU: "), std::string::npos) << text;
    EXPECT_NE(text.find("CPU features: MMX SSE SSE2 SSE3 SSSE3 SSE41\n"), std::string::npos)
        << text;
    release(g_cstrm);
    const std::string table = readFile(m_dir + "/bin/t.csv");
    EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 1) << table;
}

}  // namespace
