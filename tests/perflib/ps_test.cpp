#include "ps.h"

#include "psdata.h"
#include "session_fixture.h"

namespace {

TEST(SessionPaths, DirectoriesLieBehindTheExecutablesAndNamesGetTheExtension) {
    const std::tuple<const char*, const char*, const char*> directories[] = {
        {"/opt/ps/pscv", "", "/opt/ps/"},  {"/opt/ps/pscv", "out", "/opt/ps/out/"},
        {"/opt/ps/pscv", "/tmp", "/tmp/"}, {"/opt/ps/pscv", "\\x", "\\x/"},
        {"/opt/ps/pscv", "C:x", "C:x/"},   {"pscv", "", ""},
        {"pscv", "out/", "out/"},          {"/pscv", "", "/"},
        {"b\\pscv", "out\\", "b\\out\\"},  {"", "", ""}};
    for (const auto& [exe, dir, path] : directories) {
        publish(&psSettings::exePath, exe);
        EXPECT_EQ(psSession::genDirName(dir), path) << exe << " " << dir;
    }
    const std::tuple<const char*, const char*, const char*> files[] = {
        {"run", "", "d/run.txt"},      {"run.1", "", "d/run.1.txt"},   {"/abs", "", "d//abs.txt"},
        {"run", "x", "d/x.txt"},       {"run", "x.log", "d/x.log"},    {"run", "./x", "d/./x"},
        {"run", "/data/x", "/data/x"}, {"run", "\\x", "\\x"},          {"run", "C:x", "C:x"},
        {"run", "C:", "C:"},           {"run", "sub/x", "d/sub/x.txt"}};
    for (const auto& [defName, name, path] : files) {
        publish(&psSettings::defName, defName);
        EXPECT_EQ(psSession::genPathName("d/", name, ".txt"), path) << name;
    }
    psPublish({});
}

// What must be known before any key acts is not looked for in option files.
TEST_F(SessionTest, OptionFilesAreAppliedInPlaceButSetNoDefaults) {
    m_dir.write("opts", "\xef\xbb\xbf-nother -p/in -e\n-l/o -v -@opts");
    psSession session;
    const std::string echo = parse(session, {"-ntitle", "-@opts", "-B"});
    EXPECT_TRUE(m_parsed);
    EXPECT_EQ(psSession::m_defName + " " + psSession::getInPath(), "title bin/");
    EXPECT_TRUE(psSession::m_exitLevel == 0 && g_settings.enumMode == 0);
    EXPECT_TRUE(has(echo,
                    "-nother: ignored: -n does not act in an option file\n"
                    "-p/in: ignored: -p does not act in an option file\n"
                    "-e: enumerate tested functions and exit\n"
                    "-l/o: ignored: -l does not act in an option file\n"
                    "-v: type the version number of the Performance System and exit\n"
                    "-@opts: ignored: option files cannot be nested\n-B: batch mode\n"))
        << echo;
}

TEST_F(SessionTest, WithoutArgumentsTheConfigurationFileIsTheCommandLine) {
    const std::string header = "Command line options: read from pscv.cfg file\n";
    const std::string cut =
        "-- pscv.cfg: only the first line is read, up to 1023 characters and no NUL byte\n";
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {nullptr, "",
         "Command line options: set by _FORCE_CMDLINE preprocessor definition\n-B: batch mode\n"},
        {"pscv.cfg", "\xef\xbb\xbf-s-\n\n-nlost\n", header + "-s-: don't sort functions\n" + cut},
        {"pscv.cfg", std::string("-s-\0-B", 6), header + "-s-: don't sort functions\n" + cut},
        {"pscv.cfg", "\r\n", header},
        {"pscv.cfg", "-@more\r\n", header + "-B: batch mode\n"},
        {"pscv.cfg", std::string(1021, ' ') + "-B -s-", header + "-B: batch mode\n" + cut}};
    m_dir.write("more", "-B");
    for (const auto& [config, text, echo] : cases) {
        if (config) m_dir.write(config, text);
        psRegCmdLine("-B");
        psSession session;
        EXPECT_EQ(parse(session, {}), echo);
        delete std::exchange(pCmdLine, nullptr);
    }
}

// The header would fix the frequency of the process.
struct HeadlessSession : psSession {
    void outputHeader() override {}
};

TEST_F(SessionTest, CommonValuesActInBatchMode) {
    HeadlessSession session;
    run(session, {"-B", "-fnone", "-dAlignVectorsBy=element", "-dVectorAlign=70",
                  "-dMisalignFirstVectorOnly=no", "-dMutualVectorShift=700", "-dAccuracy, %=2.5",
                  "-dMethod=Iterative", "-dStartNumLoops=3", "-dNumLoops=x"});
    EXPECT_EQ(pTestList, nullptr);
    EXPECT_TRUE(!psGetAlignByByte() && !psGetAlignSrc());
    EXPECT_EQ(psGetVectorAlign(), 6) << "brought into range";
    EXPECT_EQ(psGetVectorShift(), 640) << "brought into range";
    int start = 0, stop = 0;
    long long clocks = 0;
    EXPECT_TRUE(psGlobalTool().getMethodBest(start, stop, clocks));
    EXPECT_TRUE(start == 3 && stop == 2048 && clocks == 10000);
    EXPECT_EQ(psGlobalTool().accuracyLimit(), 0.025);
    psSetAlignByByte(true);
    psSetVectorAlign(0);
    psSetAlignSrc(true);
    psSetVectorShift(512);
}

}  // namespace
