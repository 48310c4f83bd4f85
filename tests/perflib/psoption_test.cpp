#include "psoption.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "ps.h"
#include "pscmdline.h"
#include "psctrl87.h"
#include "psistream.h"
#include "pslib.h"
#include "pstest.h"
#include "pstool.h"

namespace {

namespace fs = std::filesystem;

void noEnvironment() {}

// A session with its keys and nothing else; the directories are those of a
// program /opt/ps/pscv run with -l<temporary directory>.
class Keys : public testing::Test {
  protected:
    Keys() {
        out = fs::temp_directory_path() / ("psoption_" + std::to_string(getpid()));
        fs::create_directories(out);
        qKeys = true;
        zmoEnvironment = noEnvironment;
        pCmdList = &list;
        psSession::m_exePath = "/opt/ps/pscv";
        psSession::m_exitLevel = 0;
        psSession::setInDir("");
        psSession::setOutDir(out.c_str());
        psSession::setDefName("run");
        session.initSession();
    }
    ~Keys() override {
        for (psSinkList* stream :
             std::initializer_list<psSinkList*>{&g_ostrm, &g_cstrm, &g_qstrm, &g_ustrm})
            closeFiles(*stream);
        pCmdList = nullptr;
        psSession::m_exitLevel = 0;
        psCStream::m_nameMode = 0;
        psCStream::m_nameExit = false;
        psTest::m_hot = 0;
        psTest::m_cache = false;
        psTest::m_pressing = false;
        psTestList::m_startFunc() = "";
        psGlobalTool().setCallMode(false);
        psTool::m_numMilliseconds = milliseconds;
        psTool::m_minNumLoops = minLoops;
        psTool::m_numExtLoops = extLoops;
        psTool::m_priority = 0;
        g_istrm.dataList().clear();
        zmoEnvironment = nullptr;
        fs::remove_all(out);
    }

    static void closeFiles(psSinkList& stream) {
        while (!stream.empty()) {
            if (!stream.back()->isConsole()) delete stream.back();
            stream.erase(--stream.end());
        }
    }

    void apply(char key, const psString& arg) { session.applyOption(key, arg); }
    // Applies the key and returns what it added to the options line.
    std::string echo(char key, const psString& arg) {
        const int before = session.optionsLine().length();
        apply(key, arg);
        return session.optionsLine().substr(before).c_str();
    }
    // `text` with @ for the output directory.
    std::string expand(std::string text) const {
        const std::size_t at = text.find('@');
        return at == std::string::npos ? text : text.replace(at, 1, out.string() + "/");
    }

    const int milliseconds = psTool::m_numMilliseconds;
    const int minLoops = psTool::m_minNumLoops;
    const int extLoops = psTool::m_numExtLoops;
    fs::path out;
    psCommandList list;
    psSession session;
};

struct EchoCase {
    char key;
    const char* arg;
    const char* text;
};

const EchoCase echoCases[] = {
    {'B', "", "batch mode"},
    {'B', "x", "batch mode"},
    {'A', "Timing", "ask timing method from console"},
    {'A', "TIMING", "ask timing method, data misalignment from console"},
    {'A', "PARAMS", "ask common parameters, data misalignment from console"},
    {'A', "",
     "ask timing method, common parameters, data misalignment, each test parameters "
     "from console"},
    {'A', "timing",
     "ask timing method, common parameters, data misalignment, each test "
     "parameters from console"},
    {'d', "size = 1;2", "set PS parameter size = 1;2"},
    {'d', "", "ignored: empty data argument"},
    {'d', "size", "ignored: incorrect data format"},
    {'d', "  =1", "ignored: incorrect data format"},
    {'i', "", "read from /opt/ps/run.ini"},
    {'i', "/etc/x", "read from /etc/x"},
    {'i', "a.b", "read from /opt/ps/a.b"},
    {'I', "a", "write PS parameters to /opt/ps/a.ini and exit"},
    {'P', "", "read tested function names from ini-file if any"},
    {'o', "", "write console output to @run.txt"},
    {'o', "x.lst", "write console output to @x.lst"},
    {'O', "y", "add console output to @y.txt"},
    {'L', "ERR", "write fails to console"},
    {'L', "PERF", "write fails,notes,performance results to console"},
    {'L', "DATA", "write fails,notes,performance results,tracing info,data info to console"},
    {'L', "IM", "write fails,notes,performance results,measurement process,memory info to console"},
    {'L', "", "ignored: incorrect level of console output"},
    {'L', "info", "ignored: incorrect level of console output"},
    {'J', "12", "set the number of external measurement loops to (12)"},
    {'J', "0", "ignored: incorrect number of external loops"},
    {'J', "1.5", "ignored: incorrect number of external loops"},
    {'r', "", "write performance result table to @run.csv"},
    {'R', "", "add performance result table to @run.csv"},
    {'q', "", "write function parameter name lines to @run_name.csv"},
    {'q', "+", "ignored because -r or -R options are not present in command line"},
    {'Q', "", "ignored because -q option is not present in command line"},
    {'u', "", "write summary table to @run_sum.csv"},
    {'U', "s.x", "add summary table to @s.x"},
    {'g', "", "create file @run.end at the end of PS work"},
    {'n', "t", "name ini-file and output files as t.<proper-ext>"},
    {'n', "", "ignored: empty default name"},
    {'p', "in", "open test data files & ini-file in /opt/ps/in/"},
    {'p', "", "ignored: empty directory name"},
    {'l', "/o/", "open output files in /o/"},
    {'l', "", "ignored: empty directory name"},
    {'f', "Canny", "test functions containing 'Canny' in the name"},
    {'f', "+Canny", "don't test functions without 'Canny' in the name"},
    {'f', "-Canny", "don't test functions containing 'Canny' in the name"},
    {'f', "=Canny", "test function equal to 'Canny'"},
    {'f', "-", "ignored: empty function pattern"},
    {'t', "Tim", "run tests containing 'Tim'"},
    {'t', "+Tim", "don't run tests which doesn't contain 'Tim'"},
    {'t', "-Tim", "don't run tests containing 'Tim'"},
    {'t', "=Tim", "run test equal to 'Tim'"},
    {'t', "", "ignored: empty test pattern"},
    {'m', "p_c", "run tests from file containing 'p_c' in file name"},
    {'m', "+p_c", "don't run tests from file which doesn't contain 'p_c' in file name"},
    {'m', "-p_c", "don't run tests from file containing 'p_c' in file name"},
    {'m', "=p_c", "run test equal from file with exact name 'p_c' in file name"},
    {'m', "=", "ignored: empty file pattern"},
    {'k', "or", "keys composition: -f<conditions> OR -t<conditions> OR -m<conditiosn>"},
    {'k', "OR", "keys composition: -f<conditions> AND -t<conditions> AND -m<conditions>"},
    {'F', "zmoiX", "start testing from zmoiX function"},
    {'Y', "HIGH", "set high process priority"},
    {'Y', "N", "set normal process priority"},
    {'Y', "LOW", "set low process priority"},
    {'Y', "high", "ignored: incorrect process priority value"},
    {'Y', "", "ignored: incorrect process priority value"},
    {'H', "", "add 'Interest' column to table file"},
    {'H', "O", "run tests for hot functions only"},
    {'T', "AVX2,AES", "call zmoSetCpuFeatures ( Zmo64u AVX2,AES )"},
    {'T', "avx2", "ignored: incorrect CPU features"},
    {'T', "", "ignored: incorrect CPU features"},
    {'S', "U", "include to measurement data set & use time"},
    {'C', "", "test data size will be in cache and out of cache if that is supported by test"},
    {'s', "", "sort functions"},
    {'s', "-word", "don't sort functions"},
    {'e', "", "enumerate tested functions and exit"},
    {'e', "+", "enumerate applied and not applied library functions and exit"},
    {'e', "-", "enumerate not applied library functions and exit"},
    {'@', "x", "ignored: option files cannot be nested"},
    {'h', "", "type short help and exit"},
    {'h', "h", "type extended help and exit"},
    {'h', "?", "type extended help for -? key and exit"},
    {'?', "", "type short help with hidden keys and exit"},
    {'?', "?", "type extended help with hidden keys and exit"},
    {'?', "h", "type extended help for -h key and exit"},
    {'c', "250", "set measurement loop to (250) milliseconds"},
    {'c', "x", "ignored: incorrect number of milliseconds"},
    {'j', "3", "set minimun number of measurement loops to (3)"},
    {'j', "-3", "ignored: incorrect number of loops"},
    {'z', "1", "ignored: incorrect option key"},
};

TEST_F(Keys, EchoWhatTheyUnderstood) {
    std::set<char> seen;
    for (const EchoCase& row : echoCases) {
        seen.insert(row.key);
        EXPECT_EQ(echo(row.key, row.arg),
                  "-" + std::string(1, row.key) + row.arg + ": " + expand(row.text) + "\n");
    }
    // These below: one depends on the other exit keys, nothing takes the other back.
    seen.insert({'v', 'W'});
    for (const psOption* option : session.options())
        EXPECT_TRUE(seen.contains(option->key)) << "no echo is tested for -" << option->key;
}

TEST_F(Keys, EchoOfNameKeysDependsOnTheirPartners) {
    list.setArg('q', "+");
    list.setArg('R', "");
    EXPECT_EQ(echo('q', "+"),
              "-q+: add function parameter name lines to csv files defined by -r & -R keys\n");
    EXPECT_EQ(echo('Q', ""),
              "-Q: exit after function parameter name table creation and don't run tests\n");
    EXPECT_TRUE(psCStream::m_nameExit);
    EXPECT_EQ(psCStream::m_nameMode, 1);
    EXPECT_TRUE(g_qstrm.empty());
    apply('q', "");
    EXPECT_EQ(psCStream::m_nameMode, 3);
    EXPECT_EQ(g_qstrm.size(), 1);
}

TEST_F(Keys, FeaturesNeedALibrary) {
    zmoEnvironment = nullptr;
    EXPECT_EQ(echo('T', "AVX2"),
              "-TAVX2: ignored: <zmocore.h> is not included before <pp.h> in test files\n");
    EXPECT_EQ(session.cpuFeatures(), 0U);
}

TEST_F(Keys, ExitKeysSilenceTheOthers) {
    const char* const reasons[] = {"", "ignored because of -e option",
                                   "ignored because of -h option", "ignored because of -v option"};
    const std::string selecting = "ftmse";
    for (int level = 1; level <= 3; ++level) {
        psSession::m_exitLevel = level;
        for (const psOption* option : session.options()) {
            const char key = option->key;
            if (key == '@') continue;
            const bool own = key == 'h' || key == '?' || (key == 'v' && level == 3) ||
                             (level == 1 && selecting.find(key) != std::string::npos);
            const psString text = option->info("x");
            EXPECT_EQ(text == reasons[level], !own) << key << " at level " << level;
        }
    }
    EXPECT_EQ(echo('v', ""), "-v: type the version number of the Performance System and exit\n");
}

TEST_F(Keys, ActAlthoughAnExitKeySilencesThem) {
    psSession::m_exitLevel = 2;
    EXPECT_EQ(echo('o', "seen"), "-oseen: ignored because of -h option\n");
    EXPECT_TRUE(fs::exists(out / "seen.txt"));
}

struct EffectCase {
    const char* name;
    std::vector<EchoCase> keys;  // the echoes are not looked at
    std::function<std::string(psSession&)> read;
    const char* value;
};

std::string number(long long value) {
    return std::to_string(value);
}
std::string word(const psString& text) {
    return text.c_str();
}
std::string data(const char* name) {
    psString value("none");
    g_istrm.dataList().get(name, value);
    return value.c_str();
}

const auto askMode = [](psSession& s) { return number(s.askMode()); };
const auto levelMode = [](psSession& s) { return number(s.levelMode()); };
const auto noSort = [](psSession& s) { return number(s.noSort()); };
const auto enumMode = [](psSession& s) { return number(s.enumMode()); };
const auto ini = [](psSession& s) { return word(s.iniName()) + (s.iniWrite() ? " w" : " r"); };
const auto conditions = [](psSession& s) {
    std::string text;
    for (const RunCondition* c : *s.conditions())
        text += number(c->target) + number(c->kind) + c->pattern.c_str() + " ";
    return text;
};
const auto logic = [](psSession& s) { return number(s.conditions()->logic); };
const auto features = [](psSession& s) { return number(static_cast<long long>(s.cpuFeatures())); };

const EffectCase effectCases[] = {
    {"batch", {{'B', "", ""}}, [](psSession& s) { return number(s.batMode()); }, "1"},
    {"askOne", {{'A', "Timing", ""}}, askMode, "1"},
    {"askAdds", {{'A', "Params", ""}, {'A', "Misalign", ""}}, askMode, "6"},
    {"askTwiceTheSame", {{'A', "TT", ""}}, askMode, "1"},
    {"askAll", {{'A', "All", ""}}, askMode, "15"},
    {"data", {{'d', " a b = 1;2 ", ""}}, [](psSession&) { return data("a b"); }, "1;2"},
    {"dataLastWins",
     {{'d', "n=1", ""}, {'d', "n=x=y", ""}},
     [](psSession&) { return data("n"); },
     "x=y"},
    {"dataEmptyValue", {{'d', "n=", ""}}, [](psSession&) { return data("n"); }, ""},
    {"dataName", {{'d', "n=1", ""}}, [](psSession&) { return data("N"); }, "none"},
    {"iniLastWins", {{'I', "a", ""}, {'i', "b", ""}}, ini, "/opt/ps/b.ini r"},
    {"iniWrite", {{'i', "a", ""}, {'I', "", ""}}, ini, "/opt/ps/run.ini w"},
    {"pressing", {{'P', "", ""}}, [](psSession&) { return number(psTest::m_pressing); }, "1"},
    {"levelDefault", {{'L', "", ""}, {'L', "x", ""}}, levelMode, "1"},
    {"levelsCombine", {{'L', "ERR", ""}, {'L', "INFO", ""}}, levelMode, "15"},
    {"levelLetters", {{'L', "DATA", ""}}, levelMode, "87"},
    {"levelMalloc", {{'L', "MALLOC", ""}}, levelMode, "39"},
    {"extLoops",
     {{'J', "5", ""}, {'J', "0", ""}},
     [](psSession&) { return number(psTool::m_numExtLoops); },
     "5"},
    {"milliseconds",
     {{'c', "7", ""}, {'c', "99999999999", ""}},
     [](psSession&) { return number(psTool::m_numMilliseconds); },
     "7"},
    {"minLoops",
     {{'j', "9", ""}, {'j', "", ""}, {'j', " 4", ""}},
     [](psSession&) { return number(psTool::m_minNumLoops); },
     "9"},
    {"signal",
     {{'g', "a", ""}, {'g', "/s.end", ""}},
     [](psSession& s) { return word(s.signalName()); },
     "/s.end"},
    {"conditions",
     {{'f', "A", ""},
      {'f', "-B", ""},
      {'t', "=C", ""},
      {'m', "+D", ""},
      {'f', "+", ""},
      {'t', "", ""}},
     conditions,
     "01A 00B 12C 20D "},
    {"logic", {{'k', "or", ""}}, logic, "1"},
    {"logicLastWins", {{'k', "o", ""}, {'k', "", ""}}, logic, "0"},
    {"start",
     {{'F', "a", ""}, {'F', "b", ""}},
     [](psSession&) { return word(psTestList::m_startFunc()); },
     "b"},
    {"priority",
     {{'Y', "LOW", ""}, {'Y', "x", ""}},
     [](psSession&) { return number(psTool::m_priority); },
     "3"},
    {"hotLastWins",
     {{'H', "ONLY", ""}, {'H', "", ""}},
     [](psSession&) { return number(psTest::m_hot); },
     "1"},
    {"hotOnly", {{'H', "O", ""}}, [](psSession&) { return number(psTest::m_hot); }, "2"},
    {"features", {{'T', "AVX2|AES", ""}, {'T', "none", ""}}, features, "34271"},
    {"callMode",
     {{'S', "U", ""}},
     [](psSession&) { return number(psGlobalTool().callMode()); },
     "1"},
    {"cache", {{'C', "", ""}}, [](psSession&) { return number(psTest::m_cache); }, "1"},
    {"sortStaysOff", {{'s', "-", ""}, {'s', "", ""}}, noSort, "1"},
    {"sort", {{'s', "", ""}}, noSort, "0"},
    {"list", {{'e', "+", ""}, {'e', "", ""}}, enumMode, "0"},
    {"listAll", {{'e', "+x", ""}}, enumMode, "1"},
    {"listMissing", {{'e', "-", ""}}, enumMode, "-1"},
    {"unopened",
     {{'r', "/dev/null/x", ""}},
     [](psSession& s) { return number(s.unopened()); },
     "1"},
    {"opened",
     {{'r', "x", ""}, {'u', "x", ""}, {'o', "x", ""}, {'q', "x", ""}},
     [](psSession& s) { return number(s.unopened()); },
     "0"},
};

TEST_F(Keys, ChangeTheirSettings) {
    for (const EffectCase& row : effectCases) {
        psSession fresh;
        fresh.initSession();
        g_istrm.dataList().clear();
        for (const EchoCase& key : row.keys) fresh.applyOption(key.key, key.arg);
        EXPECT_EQ(row.read(fresh), row.value) << row.name;
    }
}

// In a process of its own: nothing takes the key back.
TEST_F(Keys, UnmaskingTakesEffectWithTheNextGuard) {
    const auto masksAreOpen = [this] {
        const bool echoed = echo('W', "") == "-W: unmask floating-point exceptions\n";
        psInitCtrlStatus();
        const bool x87 = (ps87::instance().base().getCW() & PS_FP_ALL) == PS_FP_INEXACT;
        const bool sse = (psSSX::instance().base().get() & 0x1f80) == 0x1000;
        std::_Exit(echoed && x87 && sse ? 0 : 1);
    };
    EXPECT_EXIT(masksAreOpen(), testing::ExitedWithCode(0), "");
}

// Every key opens its file under its own default name in its own stream.
TEST_F(Keys, OpenEveryFileNamedAndAppendWhereAsked) {
    struct {
        char create, append;
        psSinkList& stream;
        const char* file;
    } rows[] = {{'o', 'O', g_ostrm, "run.txt"},
                {'r', 'R', g_cstrm, "run.csv"},
                {'u', 'U', g_ustrm, "run_sum.csv"},
                {'q', '\0', g_qstrm, "run_name.csv"}};
    for (const auto& row : rows) {
        std::ofstream(out / row.file) << "old\n";
        if (row.append) {
            apply(row.append, "");
            row.stream.write("new\n");
            row.stream.flush();
            std::stringstream text;
            text << std::ifstream(out / row.file).rdbuf();
            EXPECT_EQ(text.str(), "old\nnew\n") << row.file;
        }
        apply(row.create, "");
        EXPECT_EQ(fs::file_size(out / row.file), 0U) << row.file;
        apply(row.create, "more");
        EXPECT_EQ(row.stream.size(), row.append ? 3 : 2) << row.file;
    }
}

TEST_F(Keys, NameKeysAreOnlyThereWhenAskedFor) {
    EXPECT_NE(session.getOption('q'), nullptr);
    qKeys = false;
    psSession plain;
    plain.initSession();
    EXPECT_EQ(plain.getOption('q'), nullptr);
    EXPECT_EQ(plain.getOption('Q'), nullptr);
    EXPECT_EQ(plain.options().size() + 2, session.options().size());
    plain.applyOption('q', "+");
    EXPECT_EQ(plain.optionsLine(), "-q+: ignored: incorrect option key\n");
}

TEST_F(Keys, StandInTheOrderOfTheHelp) {
    std::string order;
    std::string hidden;
    for (const psOption* option : session.options()) {
        order += option->key;
        if (option->hidden) hidden += option->key;
    }
    EXPECT_EQ(order, "BAdiIPoOLJrRqQuUgnplftmkFYHWTSCsev@hcj?");
    EXPECT_EQ(hidden, "SC");
}

std::vector<std::string> linesOf(const psString& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text.c_str());
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

TEST_F(Keys, ShortHelpHasEveryLineAndHidesTheDevelopersKeys) {
    const psString text = psHelpText(session.options(), psShortHelp, true);
    EXPECT_TRUE(text.startsWith("QUICK HELP\n-B               = batch mode"));
    EXPECT_FALSE(text.contains("\n-SU"));
    EXPECT_EQ(linesOf(text).size(), 1U + 37 + 1 + 3 + 2 + 3);  // -q, -f, -h and -? have more
    const psString all = psHelpText(session.options(), psShortHelp, false);
    EXPECT_TRUE(all.startsWith("QUICK HELP with hidden keys\n"));
    EXPECT_EQ(linesOf(all).size(), linesOf(text).size() + 2);
}

TEST_F(Keys, ExtendedHelpExplainsEachKey) {
    const psString text = psHelpText(session.options(), 'h', true);
    EXPECT_TRUE(text.startsWith("EXTENDED HELP\n\n-B"));
    EXPECT_FALSE(text.contains("hidden key used"));
    const psString all = psHelpText(session.options(), '?', false);
    EXPECT_TRUE(all.startsWith("EXTENDED HELP with hidden keys\n\n-B"));
    EXPECT_TRUE(
        all.contains("\n\n-SU              = measure functions with data set & use\n"
                     "This is hidden key used by developers only\n"));
    EXPECT_EQ(psHelpText(session.options(), 'h', false), psKeyHelp(session.options(), 'h'));
    EXPECT_EQ(psHelpText(session.options(), '?', true), psKeyHelp(session.options(), '?'));
}

TEST_F(Keys, HelpOfOneKey) {
    const psString batch = psKeyHelp(session.options(), 'B');
    EXPECT_TRUE(batch.startsWith("EXTENDED KEY HELP\n-B  ") && batch.contains("-B wins over -A"));
    EXPECT_EQ(psKeyHelp(session.options(), 'z'), "EXTENDED KEY HELP\nKey -z is not valid\n");
    EXPECT_EQ(psKeyHelp(session.options(), '-'), "EXTENDED KEY HELP\nKey -- is not valid\n");

    psOption old;
    old.key = '1';
    psOption terse;
    terse.key = '2';
    terse.help = "-2 = two\n";
    psOptionList options;
    options.push_back(&old);
    options.push_back(&terse);
    EXPECT_EQ(psKeyHelp(options, '1'), "EXTENDED KEY HELP\nKey -1 is deprecated\n");
    EXPECT_EQ(psKeyHelp(options, '2'),
              "EXTENDED KEY HELP\n-2 = two\nNo extended description for this key\n");
}

// What a user without another manual needs of each description.
TEST_F(Keys, DescriptionsAreComplete) {
    const std::string files = "iIoOrRquUg";
    for (const psOption* option : session.options()) {
        const psString& text = option->description;
        EXPECT_TRUE(text.contains("  Example: pscv")) << option->key;
        for (const std::string& line : linesOf(text))
            EXPECT_LE(line.size(), 80U) << option->key << ": " << line;
        if (files.find(option->key) != std::string::npos) {
            EXPECT_TRUE(text.contains("Glue the path to the key")) << option->key;
            EXPECT_TRUE(text.contains("Default file: ")) << option->key;
        }
    }
    for (const char key : std::string("plLg")) EXPECT_NE(session.getOption(key), nullptr);
    for (const char key : std::string("gnplkFYHh?iI"))
        EXPECT_TRUE(session.getOption(key)->description.contains("wins")) << key;
}

TEST_F(Keys, FeatureHelpTakesTheListOnce) {
    psOption& option = *session.getOption('T');
    EXPECT_EQ(std::ranges::count(option.description.view(), '\t'), 1);
    psInsertIntoDescription(option, "<list>\n");
    EXPECT_TRUE(option.description.contains("without -T.\n<list>\n  Example"));
    const psString once = option.description;
    psInsertIntoDescription(option, "<list>\n");
    EXPECT_EQ(option.description, once);
}

// The keys of docs/KEYS.md: the text of each fenced block.
std::string documented(const fs::path& file) {
    std::ifstream stream(file);
    std::string text;
    bool inside = false;
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with("```"))
            inside = !inside;
        else if (inside)
            text += line + "\n";
    }
    return text;
}

TEST_F(Keys, AreDocumentedWithTheTextOfTheHelp) {
    psInsertIntoDescription(*session.getOption('T'), psCpuFeatures::optimizedList());
    std::string expected;
    for (const psOption* option : session.options()) {
        expected += option->help.c_str();
        expected += option->description.c_str();
    }
    EXPECT_EQ(documented(fs::path(PSCV_SOURCE_DIR) / "docs" / "KEYS.md"), expected);
}

}  // namespace
