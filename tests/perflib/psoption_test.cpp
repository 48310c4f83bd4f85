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
        psSettings settings;
        settings.exePath = "/opt/ps/pscv";
        psPublish(settings);
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
        for (std::size_t at; (at = text.find('@')) != std::string::npos;)
            text.replace(at, 1, m_dir + "/");
        return text;
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
std::vector<std::string> texts(const psSettings& s) {
    std::string patterns, data, files;
    for (const psGivenPattern& given : s.patterns)
        patterns += number(given.target) + given.text.c_str() + " ";
    for (const psGivenValue& given : s.data) data += str(given.name) + "<" + str(given.value) + ">";
    for (const psOutputFile& file : s.files)
        files += number(file.content) + (file.append ? ">>" : ">") + str(file.path) + " ";
    return {"batch=" + number(s.batMode),
            "ask=" + number(s.askMode),
            "data=" + data,
            "ini=" + str(s.iniName) + (s.iniWrite ? " w" : " r"),
            "pressing=" + number(s.pressing),
            "files=" + files,
            "level=" + number(s.levelMode),
            "ext=" + number(s.numExtLoops),
            "ms=" + number(s.numMilliseconds),
            "loops=" + number(s.minNumLoops),
            "signal=" + str(s.signalName),
            "patterns=" + patterns,
            "logic=" + number(s.logic),
            "start=" + str(s.startFunc),
            "priority=" + number(s.priority),
            "hot=" + number(s.hot),
            "unmask=" + number(s.unmask),
            "features=" + number(static_cast<long long>(s.cpuFeatures)),
            "call=" + number(s.setAndUse),
            "cache=" + number(s.cache),
            "noSort=" + number(s.noSort),
            "enum=" + number(s.enumMode),
            "version=" + number(s.version),
            "help=" + number(s.helpArg) + (s.hideHidden ? "" : "?"),
            "names=" + number(s.nameMode)};
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
    {"dn=1|dn=x=y", "", "data=n<1>n<x=y> "},
    {"dsize", "ignored: incorrect data format", ""},
    {"d  =1", "ignored", ""},
    {"Ia|ib", "", "ini=/opt/ps/b.ini r "},
    {"ia.b|I", "write PS parameters to /opt/ps/run.ini and exit", "ini=/opt/ps/run.ini w "},
    {"Px", "", "pressing=1 ", "x"},
    {"ox.lst", "write console output to @x.lst", "files=0>@x.lst  "},
    {"Oy", "add console output to @y.txt", "files=0>>@y.txt  "},
    {"L|Linfo|Lx", "ignored: incorrect level of console output", ""},
    {"LDATA", "write fails,notes,performance results,tracing info,data info to console",
     "level=87 "},
    {"J0|J1.5|J12", "set the number of external measurement loops to (12)", "ext=12 "},
    {"c7|c99999999999", "ignored", "ms=7 "},
    {"j9|j|j 4|j-3", "ignored: incorrect number of loops", "loops=9 "},
    {"r|R", "add performance result table to @run.csv", "files=1>@run.csv 1>>@run.csv  "},
    {"q", "write function parameter name lines to @run_name.csv",
     "files=2>@run_name.csv  names=2 "},
    {"q+", "ignored because -r or -R options are not present in command line", "names=1 "},
    {"Q", "ignored because -q option is not present in command line", ""},
    {"u", "write summary table to @run_sum.csv", "files=3>@run_sum.csv  "},
    {"Us.x", "add summary table to @s.x", "files=3>>@s.x  "},
    {"ga|g", "create file @run.end at the end of PS work", "signal=@run.end "},
    {"nt", "name ini-file and output files as t.<proper-ext>", ""},
    {"pin", "open test data files & ini-file in /opt/ps/in/", ""},
    {"l/o/", "open output files in /o/", ""},
    {"fA|f-B|t=C|m+D|f+|t|f-", "ignored: empty function pattern",
     "patterns=0A 0-B 1=C 2+D 0+ 1 0-  "},
    {"f+C", "don't test functions without 'C' in the name", "patterns=0+C  "},
    {"t=T", "run test equal to 'T'", "patterns=1=T  "},
    {"m=", "ignored: empty file pattern", "patterns=2=  "},
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
    {"h?", "type extended help for -? key and exit", "help=63 "},
    {"??", "type extended help with hidden keys and exit", "help=63? "},
    {"W=", "unmask floating-point exceptions", "unmask=1 "},
    {"v", "type the version number of the Performance System and exit", "version=1 "},
    {"z1", "ignored: incorrect option key", ""},
};

TEST_F(Keys, EchoWhatTheyUnderstandAndChangeNothingElse) {
    std::set<char> seen;
    for (const auto& c : keyCases) {
        psSession fresh;
        fresh.initSession();
        const std::vector<std::string> before = texts({});
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
        const std::vector<std::string> after = texts(fresh.settings());
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
    EXPECT_TRUE(session.settings().nameExit && session.settings().nameMode == 1 &&
                session.settings().files.empty());
}

TEST_F(Keys, ExitKeysSilenceTheEchoOfTheOthers) {
    const char* const reasons[] = {"", "ignored because of -e option",
                                   "ignored because of -h option", "ignored because of -v option"};
    const std::string selecting = "ftmse";
    for (int level = 1; level <= 3; ++level) {
        psSettings settings = g_settings;
        settings.exitLevel = level;
        psPublish(settings);
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
    EXPECT_EQ(session.settings().files.size(), 1U) << "the key acts all the same";
}

// In a process of its own: nothing takes the key back.
TEST_F(SessionTest, UnmaskingTakesEffectWithTheNextGuard) {
    const auto masksAreOpen = [this] {
        psSession session;
        parse(session, {"-W"});
        psInitCtrlStatus();
        const bool x87 = (ps87::instance().base().getCW() & PS_FP_ALL) == PS_FP_INEXACT;
        const bool sse = (psSSX::instance().base().get() & 0x1f80) == 0x1000;
        std::_Exit(x87 && sse ? 0 : 1);
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
