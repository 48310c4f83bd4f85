#include "psoption.h"

#include <set>

#include "psctrl87.h"
#include "session_fixture.h"

namespace {

// A session with all keys, of a program bin/pscv with a library.
class Keys : public SessionTest {
  protected:
    Keys() {
        qKeys = true;
        psRegZmoEnvironment([] {});
        session.initSession();
    }
    psSession session;
};

// Every setting that a key can change, as "name=value".
std::vector<psString> texts(const psSettings& s) {
    psString patterns, data, files;
    for (const psGivenPattern& given : s.patterns)
        patterns += psText(given.target) + given.text + ",";
    for (const psGivenValue& given : s.data) data += given.name + "<" + given.value + ">";
    for (const psOutputFile& file : s.files)
        files += psText(file.content) + (file.append ? ">>" : ">") + file.path + ",";
    const std::pair<const char*, int> numbers[] = {
        {"batch", s.batMode},      {"ask", s.askMode},
        {"pressing", s.pressing},  {"level", s.levelMode},
        {"ext", s.numExtLoops},    {"ms", s.numMilliseconds},
        {"loops", s.minNumLoops},  {"logic", s.logic},
        {"priority", s.priority},  {"hot", s.hot},
        {"unmask", s.unmask},      {"features", static_cast<int>(s.cpuFeatures)},
        {"call", s.setAndUse},     {"cache", s.cache},
        {"noSort", s.noSort},      {"enum", s.enumMode},
        {"version", s.version},    {"help", s.helpArg},
        {"hidden", !s.hideHidden}, {"names", s.nameMode},
        {"nameExit", s.nameExit},  {"iniWrite", s.iniWrite},
        {"core", s.core},          {"exact", s.exactFrequency},
        {"strict", s.strict},      {"ms of loop", static_cast<int>(s.loopSeconds * 1000)}};
    std::vector<psString> all{
        "data=" + data,         "files=" + files,       "signal=" + s.signalName,
        "patterns=" + patterns, "title=" + s.defName,   "in=" + s.inDir,
        "out=" + s.outDir,      "start=" + s.startFunc, "ini=" + s.iniName};
    for (const auto& [name, value] : numbers) all.push_back(name + ("=" + psText(value)));
    return all;
}

// Words apart by '|', the settings that differ afterwards, and what the console says; whatever
// is ignored there is listed.
const struct {
    const char *words, *changed;
    std::vector<const char*> says = {};
} keyCases[] = {
    {"B|P|C|SU|W=", "batch=1 pressing=1 unmask=1 call=1 cache=1 "},
    {"v", "version=1 "},
    {"Bf=x|Px|s-word",
     "batch=1 pressing=1 noSort=1 ",
     {"'f=x' was ignored", "'x' was ignored", "'word' was ignored"}},
    {"ATIMING", "ask=5 ", {"ask timing method, data misalignment from console\n"}},
    {"AAll", "ask=15 ", {"method, common parameters, data misalignment, each test par"}},
    {"d a b = 1;2 |dn=1|dn=x=y", "data=a b<1;2>n<1>n<x=y> "},
    {"dsize|d =1|d", "", {"-dsize: ignored", "-d =1: ignored", "-d: ignored"}},
    {"Ia|ib", "ini=bin/b.ini ", {"to bin/a.ini and exit\n"}},
    {"ia.b|I", "ini=bin/pscv.ini iniWrite=1 "},
    {"ox.lst|Oy", "files=0>bin/x.lst,0>>bin/y.txt, ", {"bin/x.lst\n", "bin/y.txt\n"}},
    {"L|Linfo|Lx", "", {"-L: ignored", "-Linfo: ignored", "-Lx: ignored"}},
    {"LDATA",
     "level=87 ",
     {"write fails,notes,performance results,tracing info,data info to console\n"}},
    {"J0|J1.5|J12", "ext=12 ", {"-J0: ignored", "-J1.5: ignored", "loops to (12)\n"}},
    {"c7|c99999999999|j9|j|j 4|j-3",
     "ms=7 loops=9 ",
     {"99: ignored", "-j: ignored", "-j 4: ignored", "-j-3: ignored"}},
    {"r|R|u|Us.x",
     "files=1>bin/pscv.csv,1>>bin/pscv.csv,3>bin/pscv_sum.csv,3>>bin/s.x, ",
     {"write summary table to bin/pscv_sum.csv\n", "add summary table to bin/s.x\n"}},
    {"q", "files=2>bin/pscv_name.csv, names=2 "},
    {"q+", "names=1 ", {"-q+: ignored because -r or -R options"}},
    {"r|q+", "files=1>bin/pscv.csv, names=1 "},
    {"R|q+|Q", "files=1>>bin/pscv.csv, names=1 nameExit=1 "},
    {"Q", "", {"-Q: ignored because -q"}},
    {"ga|g", "signal=bin/pscv.end ", {"bin/a.end ", "bin/pscv.end "}},
    {"na|nt|pin|l/o", "title=t in=bin/in/ out=/o/ ", {"as t.<", "in bin/in/\n", "in /o/\n"}},
    {"nt|n|pin|p|lo|l", "", {"-n: ignored", "-p: ignored", "-l: ignored"}},
    {"fA|f-B|t=C|m+D|f+|t|f-|m=",
     "patterns=0A,0-B,1=C,2+D,0+,1,0-,2=, ",
     {"tions containing 'A' in", "don't test functions containing 'B' in", "equal to 'C'\n",
      "doesn't contain 'D' in", "-f+: ignored", "-t: ignored", "-f-: ignored", "-m=: ignored"}},
    {"kor", "logic=1 ", {" OR -t"}},
    {"kor|k|kOR", "", {" AND -t", "'OR' was ignored"}},
    {"Fa|Fb", "start=b ", {"from b function"}},
    {"YLOW|Yhigh", "priority=3 ", {"set low process", "-Yhigh: ignored"}},
    {"YHIGH", "priority=1 ", {"set high process"}},
    {"YN|Honly", "priority=2 hot=1 ", {"'only' was ignored"}},
    {"HO", "hot=2 "},
    {"TAVX2,AES", "features=34271 ", {"( Zmo64u AVX2,AES )\n"}},
    {"TAVX2|T|Tavx2", "features=33247 ", {"-T: ignored", "-Tavx2: ignored"}},
    {"s-|s", "noSort=1 ", {"-: don't sort", "-s: sort"}},
    {"e+|e", "enum=0 "},
    {"e+", "enum=1 "},
    {"e-", "enum=-1 "},
    {"h", "help=1 "},
    {"??", "help=63 hidden=1 "},
    {"hB", "help=66 "},
    {"z1", "", {"-z1: ignored"}},
    {"-frequency=exact|-loop=9|-strict|-loop=.5", "exact=1 strict=1 ms of loop=500 "},
    {"-stric|-cpus=1|-wide|-",
     "",
     {"-stric: ignored: incorrect option key; --strict?\n",
      "--cpus=1: ignored: incorrect option key; --cpu?\n",
      "--wide: ignored: incorrect option key\n", "--: ignored: incorrect option key\n"}},
    {"-cpu|-cpu=|-cpu 1|-cpu=9999|-cpu=-1|-cpu=0x",
     "",
     {"--cpu: ignored: the value is missing; --cpu=<core>\n", "--cpu=: ignored: the value is mis",
      "--cpu 1: ignored: a value stands behind '='; --cpu=1?\n",
      "--cpu=9999: ignored: a core is one of ", "--cpu=-1: ignored", "--cpu=0x: ignored"}},
    {"-loop=0|-loop=x|-loop=inf|-frequency=fast|-strict=1|-strict on|-help=stric",
     "",
     {"--loop=0: ignored: seconds are a number above 0", "--loop=x: ignored", "--loop=inf: ignored",
      "--frequency=fast: ignored: the only value is exact\n",
      "--strict=1: ignored: --strict takes no value\n", "--strict on: ignored: --strict takes no",
      "--help=stric: ignored: no such key; --strict?\n"}},
};

TEST_F(Keys, ChangeTheirOwnSettingsAndSayWhatTheyIgnore) {
    psSession plain;
    parse(plain, {});
    const std::vector<psString> before = texts(plain.settings());
    std::set<char> seen{'@', '?'};
    for (const auto& c : keyCases) {
        psStringList arguments;
        psString(c.words).parse(arguments, "|");
        Words words;
        for (const psString& word : arguments) {
            words.push_back("-" + str(word));
            seen.insert(word[0]);
        }
        psSession fresh;
        const std::string console = parse(fresh, words);
        std::size_t ignored = 0;
        for (const std::string says : c.says) {
            EXPECT_TRUE(has(console, says)) << says << "\n" << console;
            ignored += has(says, "ignored");
        }
        EXPECT_EQ(support::count(console, "ignored"), ignored) << console;
        psString changed;
        const std::vector<psString> after = texts(fresh.settings());
        for (std::size_t i = 0; i < after.size(); ++i)
            if (str(after[i]) != str(before[i])) changed += after[i] + " ";
        EXPECT_EQ(str(changed), c.changed) << c.words;
    }
    for (const psOption* option : session.options())
        EXPECT_TRUE(seen.contains(option->key)) << "nothing is tested of -" << option->key;
}

TEST_F(Keys, ExitKeysSilenceTheEchoOfTheOthers) {
    std::string others;
    for (const psOption* option : session.options())
        if (!has("@eh?v", {&option->key, 1})) others += option->key;
    const std::pair<char, Words> exits[] = {
        {'e', {"-v", "-e"}}, {'h', {"-v", "-e", "-h"}}, {'h', {"-?"}}, {'v', {"-v"}}};
    for (const auto& [exit, given] : exits) {
        Words words;
        for (const char key : others) words.push_back(std::string{'-', key, 'x'});
        words.insert(words.end(), given.begin(), given.end());
        psSession fresh;
        const std::string echo = parse(fresh, words);
        for (const char key : others) {
            const bool selects = exit == 'e' && has("ftms", {&key, 1});
            const std::string silent = std::string{'-', key} + "x: ignored because of -" + exit;
            EXPECT_NE(has(echo, silent), selects) << silent;
        }
        EXPECT_EQ(fresh.settings().files.size(), 7U) << "the keys act all the same";
    }
}

// This runs in a process of its own, since nothing takes the key back.
TEST_F(SessionTest, UnmaskingTakesEffectWithTheNextGuard) {
    const auto masksAreOpen = [this] {
        psSession session;
        parse(session, {"-W"});
        psInitCtrlStatus();
        const bool x87 = (ps87::instance().base().getCW() & PS_FP_ALL) == PS_FP_INEXACT;
        return x87 && (psSSX::instance().base().get() & 0x1f80) == 0x1000;
    };
    EXPECT_EQ(inChild(masksAreOpen), 0);
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

}  // namespace
