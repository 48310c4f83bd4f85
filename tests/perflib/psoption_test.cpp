#include "psoption.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "pscmdline.h"
#include "psctrl87.h"
#include "session_fixture.h"
#include "temp_dir.h"

namespace {

namespace fs = std::filesystem;

void noEnvironment() {}

// A session with its keys and nothing else; the directories are those of a
// program /opt/ps/pscv run with -l<temporary directory>.
class Keys : public testing::Test {
  protected:
    Keys() {
        qKeys = true;
        zmoEnvironment = noEnvironment;
        pCmdList = &list;
        psSession::m_exePath = "/opt/ps/pscv";
        psSession::setInDir("");
        psSession::setOutDir(out.path().c_str());
        psSession::setDefName("run");
        reset();
        session.initSession();
    }
    ~Keys() override {
        reset();
        pCmdList = nullptr;
        zmoEnvironment = nullptr;
    }

    // Puts back what keys change outside the session.
    void reset() const {
        for (psSinkList* stream :
             {static_cast<psSinkList*>(&g_ostrm), static_cast<psSinkList*>(&g_cstrm),
              static_cast<psSinkList*>(&g_qstrm), static_cast<psSinkList*>(&g_ustrm)})
            release(*stream);
        psSession::m_exitLevel = psCStream::m_nameMode = psTest::m_hot = psTool::m_priority = 0;
        psCStream::m_nameExit = psTest::m_cache = psTest::m_pressing = false;
        psTestList::m_startFunc() = "";
        psGlobalTool().setCallMode(false);
        psTool::m_numMilliseconds = milliseconds;
        psTool::m_minNumLoops = minLoops;
        psTool::m_numExtLoops = extLoops;
        g_istrm.dataList().clear();
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
        return at == std::string::npos ? text : text.replace(at, 1, out.path() + "/");
    }

    const int milliseconds = psTool::m_numMilliseconds;
    const int minLoops = psTool::m_minNumLoops;
    const int extLoops = psTool::m_numExtLoops;
    const TempDir out;
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
    {'A', "TIMING", "ask timing method, data misalignment from console"},
    {'A', "timing",
     "ask timing method, common parameters, data misalignment, each test "
     "parameters from console"},
    {'d', "size = 1;2", "set PS parameter size = 1;2"},
    {'d', "size", "ignored: incorrect data format"},
    {'d', "  =1", "ignored: incorrect data format"},
    {'i', "a.b", "read from /opt/ps/a.b"},
    {'I', "a", "write PS parameters to /opt/ps/a.ini and exit"},
    {'P', "", "read tested function names from ini-file if any"},
    {'o', "x.lst", "write console output to @x.lst"},
    {'O', "y", "add console output to @y.txt"},
    {'L', "DATA", "write fails,notes,performance results,tracing info,data info to console"},
    {'L', "", "ignored: incorrect level of console output"},
    {'L', "info", "ignored: incorrect level of console output"},
    {'J', "12", "set the number of external measurement loops to (12)"},
    {'r', "", "write performance result table to @run.csv"},
    {'R', "", "add performance result table to @run.csv"},
    {'q', "", "write function parameter name lines to @run_name.csv"},
    {'q', "+", "ignored because -r or -R options are not present in command line"},
    {'Q', "", "ignored because -q option is not present in command line"},
    {'u', "", "write summary table to @run_sum.csv"},
    {'U', "s.x", "add summary table to @s.x"},
    {'g', "", "create file @run.end at the end of PS work"},
    {'n', "t", "name ini-file and output files as t.<proper-ext>"},
    {'p', "in", "open test data files & ini-file in /opt/ps/in/"},
    {'l', "/o/", "open output files in /o/"},
    {'f', "Canny", "test functions containing 'Canny' in the name"},
    {'f', "+Canny", "don't test functions without 'Canny' in the name"},
    {'f', "=Canny", "test function equal to 'Canny'"},
    {'f', "-", "ignored: empty function pattern"},
    {'t', "+Tim", "don't run tests which doesn't contain 'Tim'"},
    {'t', "=Tim", "run test equal to 'Tim'"},
    {'m', "p_c", "run tests from file containing 'p_c' in file name"},
    {'m', "+p_c", "don't run tests from file which doesn't contain 'p_c' in file name"},
    {'m', "=p_c", "run test equal from file with exact name 'p_c' in file name"},
    {'m', "=", "ignored: empty file pattern"},
    {'k', "or", "keys composition: -f<conditions> OR -t<conditions> OR -m<conditiosn>"},
    {'F', "zmoiX", "start testing from zmoiX function"},
    {'Y', "HIGH", "set high process priority"},
    {'Y', "high", "ignored: incorrect process priority value"},
    {'H', "", "add 'Interest' column to table file"},
    {'H', "O", "run tests for hot functions only"},
    {'T', "AVX2,AES", "call zmoSetCpuFeatures ( Zmo64u AVX2,AES )"},
    {'T', "avx2", "ignored: incorrect CPU features"},
    {'S', "U", "include to measurement data set & use time"},
    {'C', "", "test data size will be in cache and out of cache if that is supported by test"},
    {'s', "", "sort functions"},
    {'s', "-word", "don't sort functions"},
    {'e', "", "enumerate tested functions and exit"},
    {'e', "+", "enumerate applied and not applied library functions and exit"},
    {'@', "x", "ignored: option files cannot be nested"},
    {'h', "h", "type extended help and exit"},
    {'h', "?", "type extended help for -? key and exit"},
    {'?', "", "type short help with hidden keys and exit"},
    {'?', "?", "type extended help with hidden keys and exit"},
    {'?', "h", "type extended help for -h key and exit"},
    {'c', "250", "set measurement loop to (250) milliseconds"},
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
    EXPECT_TRUE(fs::exists(out.path() + "/seen.txt"));
}

std::string number(long long value) {
    return std::to_string(value);
}

// Every setting that a key can change, as "name=value".
std::vector<std::string> settings(const psSession& s) {
    std::string conditions, data;
    for (const RunCondition* c : *s.conditions())
        conditions += number(c->target) + number(c->kind) + c->pattern.c_str() + " ";
    for (const char* name : {"a b", "n", "N"}) {
        psString value;
        if (g_istrm.dataList().get(name, value))
            data += std::string(name) + "<" + value.c_str() + ">";
    }
    return {"batch=" + number(s.batMode()),
            "ask=" + number(s.askMode()),
            "data=" + data,
            std::string("ini=") + s.iniName().c_str() + (s.iniWrite() ? " w" : " r"),
            "pressing=" + number(psTest::m_pressing),
            "level=" + number(s.levelMode()),
            "ext=" + number(psTool::m_numExtLoops),
            "ms=" + number(psTool::m_numMilliseconds),
            "loops=" + number(psTool::m_minNumLoops),
            std::string("signal=") + s.signalName().c_str(),
            "conditions=" + conditions,
            "logic=" + number(s.conditions()->logic),
            std::string("start=") + psTestList::m_startFunc().c_str(),
            "priority=" + number(psTool::m_priority),
            "hot=" + number(psTest::m_hot),
            "features=" + number(static_cast<long long>(s.cpuFeatures())),
            "call=" + number(psGlobalTool().callMode()),
            "cache=" + number(psTest::m_cache),
            "noSort=" + number(s.noSort()),
            "enum=" + number(s.enumMode()),
            "unopened=" + number(s.unopened()),
            "names=" + number(psCStream::m_nameMode)};
}

TEST_F(Keys, ChangeTheirSettingsAndNoOther) {
    const struct {
        const char *words, *changed;  // words apart by '|'
    } cases[] = {
        {"B", "batch=1 "},
        {"ATiming", "ask=1 "},
        {"AParams|AMisalign", "ask=6 "},
        {"ATT", "ask=1 "},
        {"AAll", "ask=15 "},
        {"d a b = 1;2 ", "data=a b<1;2> "},
        {"dn=1|dn=x=y", "data=n<x=y> "},
        {"dn=", "data=n<> "},
        {"Ia|ib", "ini=/opt/ps/b.ini r "},
        {"ia|I", "ini=/opt/ps/run.ini w "},
        {"P", "pressing=1 "},
        {"L|Lx", ""},
        {"LERR|LINFO", "level=15 "},
        {"LDATA", "level=87 "},
        {"LMALLOC", "level=39 "},
        {"J5|J0|J1.5", "ext=5 "},
        {"c7|c99999999999", "ms=7 "},
        {"j9|j|j 4", "loops=9 "},
        {"ga|g/s.end", "signal=/s.end "},
        {"fA|f-B|t=C|m+D|f+|t", "conditions=01A 00B 12C 20D  "},
        {"kor", "logic=1 "},
        {"ko|k", ""},
        {"Fa|Fb", "start=b "},
        {"YLOW|Yx", "priority=3 "},
        {"HONLY|H", "hot=1 "},
        {"HO", "hot=2 "},
        {"TAVX2,AES|Tnone|T", "features=34271 "},
        {"SU", "call=1 "},
        {"C", "cache=1 "},
        {"s-|s", "noSort=1 "},
        {"e+|e", "enum=0 "},
        {"e+x", "enum=1 "},
        {"e-", "enum=-1 "},
        {"r/dev/null/x", "unopened=1 "},
        {"rx|ux|ox", ""},
        {"qx", "names=2 "},
    };
    for (const auto& c : cases) {
        reset();
        psSession fresh;
        fresh.initSession();
        const std::vector<std::string> before = settings(fresh);
        psStringList words;
        psString(c.words).parse(words, "|");
        for (const psString& word : words) fresh.applyOption(word[0], word.substr(1));
        std::string changed;
        const std::vector<std::string> after = settings(fresh);
        for (std::size_t i = 0; i < after.size(); ++i)
            if (after[i] != before[i]) changed += after[i] + " ";
        EXPECT_EQ(changed, c.changed) << c.words;
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
        out.write(row.file, "old\n");
        if (row.append) {
            apply(row.append, "");
            row.stream.write("new\n");
            row.stream.flush();
            EXPECT_EQ(out.read(row.file), "old\nnew\n");
        }
        apply(row.create, "");
        EXPECT_EQ(out.read(row.file), "") << row.file;
        apply(row.create, "more");
        EXPECT_EQ(row.stream.size(), row.append ? 3 : 2) << row.file;
    }
}

std::vector<std::string> linesOf(const psString& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text.c_str());
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

TEST_F(Keys, HelpHasEveryLineAndHidesTheDevelopersKeys) {
    const psOptionList& options = session.options();
    const psString text = psHelpText(options, psShortHelp, true);
    EXPECT_TRUE(text.startsWith("QUICK HELP\n-B               = batch mode"));
    EXPECT_EQ(linesOf(text).size(), 1U + 37 + 1 + 3 + 2 + 3);  // -q, -f, -h and -? have more
    EXPECT_EQ(linesOf(psHelpText(options, psShortHelp, false)).size(), linesOf(text).size() + 2);
    EXPECT_FALSE(psHelpText(options, 'h', true).contains("hidden key used"));
    EXPECT_TRUE(psHelpText(options, '?', false)
                    .contains("\n\n-SU              = measure functions with data set & use\n"
                              "This is hidden key used by developers only\n"));
    EXPECT_EQ(psHelpText(options, 'h', false), psKeyHelp(options, 'h'));
    EXPECT_EQ(psHelpText(options, '?', true), psKeyHelp(options, '?'));
}

TEST_F(Keys, HelpOfOneKey) {
    psOption old, terse;
    old.key = '1';
    terse.key = '2';
    terse.help = "-2 = two\n";
    psOptionList options = session.options();
    options.push_back(&old);
    options.push_back(&terse);
    const std::pair<char, const char*> cases[] = {
        {'B', "-B wins over -A"},
        {'z', "EXTENDED KEY HELP\nKey -z is not valid\n"},
        {'-', "EXTENDED KEY HELP\nKey -- is not valid\n"},
        {'1', "EXTENDED KEY HELP\nKey -1 is deprecated\n"},
        {'2', "EXTENDED KEY HELP\n-2 = two\nNo extended description for this key\n"}};
    for (const auto& [key, text] : cases)
        EXPECT_TRUE(psKeyHelp(options, key).contains(text)) << psKeyHelp(options, key).c_str();
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
