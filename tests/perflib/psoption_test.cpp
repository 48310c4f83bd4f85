#include "psoption.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "pscmdline.h"
#include "psctrl87.h"
#include "session_fixture.h"
#include "temp_dir.h"

namespace {

// A session with its keys and nothing else; the directories are those of a
// program /opt/ps/pscv run with -l<temporary directory>.
class Keys : public SessionTest {
  protected:
    Keys() {
        qKeys = true;
        zmoEnvironment = [] {};
        pCmdList = &list;
        psSession::m_exePath = "/opt/ps/pscv";
        psSession::setInDir("");
        psSession::setOutDir(m_dir.c_str());
        psSession::setDefName("run");
        session.initSession();
    }
    ~Keys() override { pCmdList = nullptr; }

    // Applies the key and returns what it added to the options line.
    std::string echo(char key, const psString& arg) {
        const int before = session.optionsLine().length();
        session.applyOption(key, arg);
        return session.optionsLine().substr(before).c_str();
    }
    // `text` with @ for the output directory.
    std::string expand(std::string text) const {
        const std::size_t at = text.find('@');
        return at == std::string::npos ? text : text.replace(at, 1, m_dir + "/");
    }

    psCommandList list;
    psSession session;
};

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
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

// Words apart by '|', what the echo of the last one begins with (@ stands for the
// output directory), the settings that differ afterwards, and what of the last
// word has no effect.
const struct {
    const char *words, *echo, *changed, *unused = "";
} keyCases[] = {
    {"B", "", "batch=1 "},
    {"Bf=x", "", "batch=1 ", "f=x"},
    {"ATIMING", "ask timing method, data misalignment from console", "ask=5 "},
    {"AAll", "ask timing method, common parameters, data mis", "ask=15 "},
    {"d a b = 1;2 ", "set PS parameter  a b = 1;2 ", "data=a b<1;2> "},
    {"dn=1|dn=x=y", "", "data=n<x=y> "},
    {"dsize", "ignored: incorrect data format", ""},
    {"d  =1", "ignored", ""},
    {"Ia|ib", "", "ini=/opt/ps/b.ini r "},
    {"ia.b|I", "write PS parameters to /opt/ps/run.ini and exit", "ini=/opt/ps/run.ini w "},
    {"Px", "", "pressing=1 ", "x"},
    {"ox.lst", "write console output to @x.lst", ""},
    {"Oy", "add console output to @y.txt", ""},
    {"L|Linfo|Lx", "ignored: incorrect level of console output", ""},
    {"LDATA", "write fails,notes,performance results,tracing info,data info to console",
     "level=87 "},
    {"J0|J1.5|J12", "set the number of external measurement loops to (12)", "ext=12 "},
    {"c7|c99999999999", "ignored", "ms=7 "},
    {"j9|j|j 4|j-3", "ignored: incorrect number of loops", "loops=9 "},
    {"r|R", "add performance result table to @run.csv", ""},
    {"r/dev/null/x", "", "unopened=1 "},
    {"q", "write function parameter name lines to @run_name.csv", "names=2 "},
    {"q+", "ignored because -r or -R options are not present in command line", "names=1 "},
    {"Q", "ignored because -q option is not present in command line", ""},
    {"u", "write summary table to @run_sum.csv", ""},
    {"Us.x", "add summary table to @s.x", ""},
    {"ga|g", "create file @run.end at the end of PS work", "signal=@run.end "},
    {"nt", "name ini-file and output files as t.<proper-ext>", ""},
    {"pin", "open test data files & ini-file in /opt/ps/in/", ""},
    {"l/o/", "open output files in /o/", ""},
    {"fA|f-B|t=C|m+D|f+|t|f-", "ignored: empty function pattern", "conditions=01A 00B 12C 20D  "},
    {"f+C", "don't test functions without 'C' in the name", "conditions=00C  "},
    {"t=T", "run test equal to 'T'", "conditions=12T  "},
    {"m=", "ignored: empty file pattern", ""},
    {"kor", "keys composition: -f<conditions> OR ", "logic=1 "},
    {"ko|k", "keys composition: -f<conditions> AND ", ""},
    {"kOR", "keys composition: -f<conditions> AND ", "", "OR"},
    {"Fa|Fb", "start testing from b function", "start=b "},
    {"YLOW|Yhigh", "ignored: incorrect process priority value", "priority=3 "},
    {"YHIGH", "set high ", "priority=1 "},
    {"Honly", "add 'Interest' column", "hot=1 ", "only"},
    {"HO", "run tests for hot functions only", "hot=2 "},
    {"TAVX2,AES", "call zmoSetCpuFeatures ( Zmo64u AVX2,AES )", "features=34271 "},
    {"TAVX2|T|Tavx2", "ignored: incorrect CPU features", "features=33247 "},
    {"SU", "", "call=1 "},
    {"C", "", "cache=1 "},
    {"s-|s", "sort functions", "noSort=1 "},
    {"s-word", "don't sort functions", "noSort=1 ", "word"},
    {"e+|e", "enumerate tested functions and exit", "enum=0 "},
    {"e+", "enumerate applied and not applied library functions and exit", "enum=1 "},
    {"e-", "enumerate not applied", "enum=-1 "},
    {"@x", "ignored: option files cannot be nested", ""},
    {"h?", "type extended help for -? key and exit", ""},
    {"??", "type extended help with hidden keys and exit", ""},
    {"z1", "ignored: incorrect option key", ""},
};

TEST_F(Keys, EchoWhatTheyUnderstandAndChangeNothingElse) {
    std::set<char> seen{'v', 'W'};  // below
    for (const auto& c : keyCases) {
        putBack();
        psSession fresh;
        fresh.initSession();
        const std::vector<std::string> before = settings(fresh);
        psStringList words;
        psString(c.words).parse(words, "|");
        int echoed = 0;
        for (const psString& word : words) {
            echoed = fresh.optionsLine().length();
            fresh.applyOption(word[0], word.substr(1));
            seen.insert(word[0]);
        }
        const std::string line = str(fresh.optionsLine().substr(echoed)), echo = expand(c.echo);
        EXPECT_EQ(line.find("-" + str(words.back()) + ": " + echo), 0U) << line << echo;
        EXPECT_EQ(has(line, ": ignored"), echo.starts_with("ignored")) << line;
        std::string changed;
        const std::vector<std::string> after = settings(fresh);
        for (std::size_t i = 0; i < after.size(); ++i)
            if (after[i] != before[i]) changed += after[i] + " ";
        EXPECT_EQ(changed, expand(c.changed)) << c.words;
        const std::string unused = str(psSuperfluous(words.back()[0], words.back().substr(1)));
        EXPECT_TRUE(*c.unused ? has(unused, std::string(", '") + c.unused + "' was ignored")
                              : unused.empty())
            << unused;
    }
    for (const psOption* option : session.options())
        EXPECT_TRUE(seen.contains(option->key)) << "nothing is tested of -" << option->key;
}

TEST_F(Keys, EchoOfNameKeysDependsOnTheirPartners) {
    list.setArg('q', "+");
    list.setArg('R', "");
    EXPECT_EQ(echo('q', "+"),
              "-q+: add function parameter name lines to csv files defined by -r & -R keys\n");
    EXPECT_EQ(echo('Q', ""),
              "-Q: exit after function parameter name table creation and don't run tests\n");
    EXPECT_TRUE(psCStream::m_nameExit && psCStream::m_nameMode == 1 && g_qstrm.empty());
}

TEST_F(Keys, ExitKeysSilenceTheEchoOfTheOthers) {
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
    EXPECT_EQ(echo('o', "seen"), "-oseen: ignored because of -v option\n");
    EXPECT_TRUE(std::filesystem::exists(m_dir + "/seen.txt")) << "the key acts all the same";
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

TEST_F(Keys, HelpHidesTheDevelopersKeysAndDescribesOne) {
    psOption old, terse;
    old.key = '1';
    terse.key = '2';
    terse.help = "-2 = two\n";
    psOptionList options = session.options();
    options.push_back(&old);
    options.push_back(&terse);
    const std::pair<psString, const char*> cases[] = {
        {psQuickHelp(options, true), "QUICK HELP\n-B               = batch mode"},
        {psQuickHelp(options, false), "-SU  "},
        {psFullHelp(options, false),
         "\n\n-SU              = measure functions with data set & use\n"
         "This is hidden key used by developers only\n"},
        {psKeyHelp(options, 'B'), "-B wins over -A"},
        {psKeyHelp(options, 'z'), "EXTENDED KEY HELP\nKey -z is not valid\n"},
        {psKeyHelp(options, '1'), "EXTENDED KEY HELP\nKey -1 is deprecated\n"},
        {psKeyHelp(options, '2'),
         "EXTENDED KEY HELP\n-2 = two\nNo extended description for this key\n"}};
    for (const auto& [help, text] : cases) EXPECT_TRUE(help.contains(text)) << text;
    for (const psString& help : {psQuickHelp(options, true), psFullHelp(options, true)})
        EXPECT_FALSE(help.contains("-SU ")) << help.substr(0, 14).c_str();
}

// The fenced blocks of docs/KEYS.md are the texts of the help.
TEST_F(Keys, AreDocumentedWithTheTextOfTheHelp) {
    psInsertIntoDescription(*session.getOption('T'), psCpuFeatures::optimizedList());
    std::string expected;
    for (const psOption* option : session.options())
        expected += str(option->help) + str(option->description);
    for (const psOption* option : session.options()) {
        std::istringstream lines(str(option->description));
        for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80U) << line;
    }
    std::ifstream page(PSCV_SOURCE_DIR "/docs/KEYS.md");
    std::string documented;
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("```"))
            inside = !inside;
        else if (inside)
            documented += line + "\n";
    }
    EXPECT_EQ(documented, expected);
}

}  // namespace
