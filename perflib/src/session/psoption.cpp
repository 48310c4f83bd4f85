#include "psoption.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "ps.h"
#include "pscmdline.h"
#include "pscore.h"
#include "pscputick_gcc.h"
#include "psfaults.h"
#include "pshelp.h"
#include "psinterrupt.h"
#include "psistream.h"
#include "pskeytext.h"
#include "pslib.h"
#include "pslongkey.h"
#include "psremarks.h"
#include "psstream.h"
#include "pstest.h"

namespace {

using Info = psOption::Info;

// The echo of a key while an exit key of that level or above is present; most
// keys have no say then, the ones that select tests still serve -e.
template <Info info, int level = 1>
psString unlessExit(const psString& arg) {
    return psSession::isExit(level) ? psSession::getExitInfo() : info(arg);
}

// The echo of a key that must be known before any key acts: those in an option
// file come too late.
template <Info info, char key>
psString onCommandLine(const psString& arg) {
    if (psSession::isOptionFile())
        return "ignored: -" + psString(key) + " does not act in an option file";
    return info(arg);
}

bool isGiven(char key) {
    return pCmdList && pCmdList->isKey(key);
}

bool beginsWith(const psString& arg, char c) {
    return !arg.empty() && arg[0] == c;
}

void applyNothing(const psString&, psSettings&) {}

// Of a key whose argument says nothing more.
template <auto member, auto value = true>
void applyValue(const psString&, psSettings& settings) {
    settings.*member = value;
}

// Questions and values

psString infoBatch(const psString&) {
    return "batch mode";
}

int askBits(const psString& arg) {
    int bits = 0;
    if (arg.contains("T")) bits |= psSettings::askTiming;
    if (arg.contains("P")) bits |= psSettings::askParams;
    if (arg.contains("M")) bits |= psSettings::askMisalign;
    constexpr int all = psSettings::askTiming | psSettings::askParams | psSettings::askMisalign |
                        psSettings::askAll;
    return bits ? bits : all;
}
psString infoAsk(const psString& arg) {
    const int bits = askBits(arg);
    psString items;
    if (bits & psSettings::askTiming) items += ", timing method";
    if (bits & psSettings::askParams) items += ", common parameters";
    if (bits & psSettings::askMisalign) items += ", data misalignment";
    if (bits & psSettings::askAll) items += ", each test parameters";
    return psString("ask") + items.substr(1) + " from console";
}
void applyAsk(const psString& arg, psSettings& settings) {
    settings.askMode |= askBits(arg);
}

// False without a "=" or a name before it.
bool splitData(const psString& arg, psGivenValue& given) {
    const int at = arg.find("=");
    if (at < 0) return false;
    given = {arg.substr(0, at).trim(), arg.substr(at + 1).trim()};
    return !given.name.empty();
}
psString infoData(const psString& arg) {
    psGivenValue given;
    if (arg.empty()) return "ignored: empty data argument";
    if (!splitData(arg, given)) return "ignored: incorrect data format";
    return "set PS parameter " + arg;
}
void applyData(const psString& arg, psSettings& settings) {
    psGivenValue given;
    if (splitData(arg, given)) settings.data.push_back(given);
}

psString iniPath(const psString& arg) {
    return psSession::genInPath(arg, ".ini");
}
psString infoIniRead(const psString& arg) {
    return "read from " + iniPath(arg);
}
psString infoIniWrite(const psString& arg) {
    return "write PS parameters to " + iniPath(arg) + " and exit";
}
template <bool write>
void applyIni(const psString& arg, psSettings& settings) {
    settings.iniName = iniPath(arg);
    settings.iniWrite = write;
}
psString infoPressing(const psString&) {
    return "read tested function names from ini-file if any";
}

// Output files

struct Output {
    psOutputFile::Content kind;
    const char* content;
    const char* extension;

    psString path(const psString& arg) const { return psSession::genOutPath(arg, extension); }
};
constexpr Output listing{psOutputFile::listing, "console output", ".txt"};
constexpr Output results{psOutputFile::table, "performance result table", ".csv"};
constexpr Output nameLines{psOutputFile::names, "function parameter name lines", "_name.csv"};
constexpr Output summary{psOutputFile::summary, "summary table", "_sum.csv"};

template <const Output& output, bool append = false>
psString infoOutput(const psString& arg) {
    return psString(append ? "add " : "write ") + output.content + " to " + output.path(arg);
}
template <const Output& output, bool append = false>
void applyOutput(const psString& arg, psSettings& settings) {
    settings.files.push_back({output.kind, output.path(arg), append});
}

constexpr int namesIntoTable = 1;
constexpr int namesIntoFile = 2;

psString infoNames(const psString& arg) {
    if (!beginsWith(arg, '+')) return infoOutput<nameLines>(arg);
    if (!isGiven('r') && !isGiven('R'))
        return "ignored because -r or -R options are not present in command line";
    return "add function parameter name lines to csv files defined by -r & -R keys";
}
void applyNames(const psString& arg, psSettings& settings) {
    if (beginsWith(arg, '+')) {
        settings.nameMode |= namesIntoTable;
        return;
    }
    settings.nameMode |= namesIntoFile;
    applyOutput<nameLines>(arg, settings);
}
psString infoNameExit(const psString&) {
    return isGiven('q') ? "exit after function parameter name table creation and don't run tests"
                        : "ignored because -q option is not present in command line";
}
void applyNameExit(const psString&, psSettings& settings) {
    settings.nameExit = isGiven('q');
}

psString signalPath(const psString& arg) {
    return psSession::genOutPath(arg, ".end");
}
psString infoSignal(const psString& arg) {
    return "create file " + signalPath(arg) + " at the end of PS work";
}
void applySignal(const psString& arg, psSettings& settings) {
    settings.signalName = signalPath(arg);
}

psString infoName(const psString& arg) {
    if (arg.empty()) return "ignored: empty default name";
    return "name ini-file and output files as " + arg + ".<proper-ext>";
}
psString infoInDir(const psString& arg) {
    if (arg.empty()) return "ignored: empty directory name";
    return "open test data files & ini-file in " + psSession::genDirName(arg);
}
psString infoOutDir(const psString& arg) {
    if (arg.empty()) return "ignored: empty directory name";
    return "open output files in " + psSession::genDirName(arg);
}

struct LevelLetter {
    char letter;
    OutputLevel bits;
};
constexpr LevelLetter levelLetters[] = {{'E', 1},  {'W', 3},  {'P', 7}, {'I', 15},
                                        {'T', 23}, {'M', 39}, {'D', 71}};

OutputLevel levelBits(const psString& arg) {
    OutputLevel bits = 0;
    for (const LevelLetter& row : levelLetters) {
        if (arg.view().find(row.letter) != std::string_view::npos) bits |= row.bits;
    }
    return bits;
}
psString infoLevel(const psString& arg) {
    constexpr const char* items[] = {"fails",
                                     ",notes",
                                     ",performance results",
                                     ",measurement process",
                                     ",tracing info",
                                     ",memory info",
                                     ",data info"};
    const OutputLevel bits = levelBits(arg);
    if (bits == 0) return "ignored: incorrect level of console output";
    psString text("write ");
    for (int i = 0; i < 7; ++i) {
        if (bits & (1 << i)) text += items[i];
    }
    return text + " to console";
}
void applyLevel(const psString& arg, psSettings& settings) {
    settings.levelMode |= levelBits(arg);
}

// Selection of tests

struct ConditionEcho {
    const char* before[4];  // by psConditionForm
    const char* behind[4];
    const char* empty;
};
constexpr ConditionEcho conditionEchoes[] = {
    {{"test functions containing '", "don't test functions without '",
      "don't test functions containing '", "test function equal to '"},
     {"' in the name", "' in the name", "' in the name", "'"},
     "ignored: empty function pattern"},
    {{"run tests containing '", "don't run tests which doesn't contain '",
      "don't run tests containing '", "run test equal to '"},
     {"'", "'", "'", "'"},
     "ignored: empty test pattern"},
    {{"run tests from file containing '", "don't run tests from file which doesn't contain '",
      "don't run tests from file containing '", "run test equal from file with exact name '"},
     {"' in file name", "' in file name", "' in file name", "' in file name"},
     "ignored: empty file pattern"},
};

template <RunCondition::Target target>
psString infoCondition(const psString& arg) {
    const ConditionEcho& echo = conditionEchoes[target];
    psString pattern = arg;
    const psConditionForm form = getCondition(pattern);
    if (form == psConditionForm::empty) return echo.empty;
    const auto i = static_cast<std::size_t>(form);
    return echo.before[i] + pattern + echo.behind[i];
}
template <RunCondition::Target target>
void applyCondition(const psString& arg, psSettings& settings) {
    settings.patterns.push_back({target, arg});
}

psSettings::Logic logicOf(const psString& arg) {
    return beginsWith(arg, 'o') ? psConditions::logicOr : psConditions::logicAnd;
}
psString infoLogic(const psString& arg) {
    return logicOf(arg) == psConditions::logicOr
               ? "keys composition: -f<conditions> OR -t<conditions> OR -m<conditiosn>"
               : "keys composition: -f<conditions> AND -t<conditions> AND -m<conditions>";
}
void applyLogic(const psString& arg, psSettings& settings) {
    settings.logic = logicOf(arg);
}

psString infoStart(const psString& arg) {
    return "start testing from " + arg + " function";
}
void applyStart(const psString& arg, psSettings& settings) {
    settings.startFunc = arg;
}

psString infoHot(const psString& arg) {
    return beginsWith(arg, 'O') ? "run tests for hot functions only"
                                : "add 'Interest' column to table file";
}
void applyHot(const psString& arg, psSettings& settings) {
    settings.hot = beginsWith(arg, 'O') ? 2 : 1;
}

psString infoCache(const psString&) {
    return "test data size will be in cache and out of cache if that is supported by test";
}

psString infoSort(const psString& arg) {
    return beginsWith(arg, '-') ? "don't sort functions" : "sort functions";
}
// A plain -s does not take back what an earlier -s- has set.
void applySort(const psString& arg, psSettings& settings) {
    if (beginsWith(arg, '-')) settings.noSort = true;
}

// Measurement

struct Count {
    int psSettings::*setting;
    const char* name;
    const char* before;
    const char* behind;
};
constexpr Count externalLoops{&psSettings::numExtLoops, "external loops",
                              "set the number of external measurement loops to (", ")"};
constexpr Count milliseconds{&psSettings::numMilliseconds, "milliseconds",
                             "set measurement loop to (", ") milliseconds"};
constexpr Count leastLoops{&psSettings::minNumLoops, "loops",
                           "set minimun number of measurement loops to (", ")"};

bool readCount(const psString& arg, int& count) {
    int value = 0;
    const bool digits =
        std::ranges::all_of(arg.view(), [](char c) { return c >= '0' && c <= '9'; });
    if (!digits || !psFromText(arg, value) || value < 1) return false;
    count = value;
    return true;
}
template <const Count& what>
psString infoCount(const psString& arg) {
    int count = 0;
    if (!readCount(arg, count)) return psString("ignored: incorrect number of ") + what.name;
    return psString(what.before) + psText(count) + what.behind;
}
template <const Count& what>
void applyCount(const psString& arg, psSettings& settings) {
    readCount(arg, settings.*what.setting);
}

struct Priority {
    char letter;
    int level;
    const char* word;
};
constexpr Priority priorities[] = {{'H', 1, "high"}, {'N', 2, "normal"}, {'L', 3, "low"}};

const Priority* priorityOf(const psString& arg) {
    const auto* found = std::ranges::find_if(
        priorities, [&](const Priority& row) { return beginsWith(arg, row.letter); });
    return found == std::end(priorities) ? nullptr : found;
}
psString infoPriority(const psString& arg) {
    const Priority* priority = priorityOf(arg);
    if (!priority) return "ignored: incorrect process priority value";
    return psString("set ") + priority->word + " process priority";
}
void applyPriority(const psString& arg, psSettings& settings) {
    if (const Priority* priority = priorityOf(arg)) settings.priority = priority->level;
}

psString infoUnmask(const psString&) {
    return "unmask floating-point exceptions";
}

psString infoFeatures(const psString& arg) {
    if (!zmoEnvironment) return "ignored: <zmocore.h> is not included before <pp.h> in test files";
    if (psCpuFeatures::cpuFeatures(arg) == 0) return "ignored: incorrect CPU features";
    return "call zmoSetCpuFeatures ( Zmo64u " + arg + " )";
}
void applyFeatures(const psString& arg, psSettings& settings) {
    if (!zmoEnvironment) return;
    settings.featureText += psCpuFeatures::unknownText(arg);
    const std::uint64_t mask = psCpuFeatures::cpuFeatures(arg);
    if (mask) settings.cpuFeatures = mask;
}

psString infoSetUse(const psString&) {
    return "include to measurement data set & use time";
}

// Keys that end the run

psString infoEnumerate(const psString& arg) {
    if (beginsWith(arg, '+')) return "enumerate applied and not applied library functions and exit";
    if (beginsWith(arg, '-')) return "enumerate not applied library functions and exit";
    return "enumerate tested functions and exit";
}
void applyEnumerate(const psString& arg, psSettings& settings) {
    settings.enumMode = beginsWith(arg, '+') ? 1 : beginsWith(arg, '-') ? -1 : 0;
}

psString infoVersion(const psString&) {
    // Level 0: -v stands in an option file, where it acts, too.
    if (psSession::m_exitLevel == 1 || psSession::m_exitLevel == 2) return psSession::getExitInfo();
    return "type the version number of the Performance System and exit";
}

template <char all>
psString infoHelp(const psString& arg) {
    constexpr bool hidden = all == '?';
    const psString tail = hidden ? " with hidden keys and exit" : " and exit";
    if (arg.empty()) return "type short help" + tail;
    if (arg[0] == all) return "type extended help" + tail;
    return "type extended help for -" + psString(arg[0]) + " key and exit";
}
template <char all>
void applyHelp(const psString& arg, psSettings& settings) {
    settings.helpArg = arg.empty() ? psShortHelp : arg[0];
    settings.hideHidden = all != '?';
}

// Long keys

bool readCore(const psString& value, int& core) {
    return psFromText(value, core) && psCoreAllowed(core);
}
psString infoCpu(const psString& value) {
    int core = 0;
    readCore(value, core);
    return psString("run on core ") + core + " only";
}
psString refuseCpu(const psString& value) {
    int core = 0;
    if (readCore(value, core)) return {};
    const psString allowed = psAllowedCores();
    if (allowed.empty()) return "the system does not tell the cores of this process";
    return "a core is one of " + allowed;
}
void applyCpu(const psString& value, psSettings& settings) {
    readCore(value, settings.core);
}

psString infoFrequency(const psString&) {
    return "measure the frequency in 0.1 s, without rounding";
}
psString refuseFrequency(const psString& value) {
    return value == "exact" ? "" : "the only value is exact";
}

bool readSeconds(const psString& value, double& seconds) {
    double number = 0;
    if (!psFromText(value, number) || !std::isfinite(number) || number <= 0) return false;
    seconds = number;
    return true;
}
psString infoLoop(const psString& value) {
    double seconds = 0;
    readSeconds(value, seconds);
    return "call functions for " + psText(seconds) + " s a set without timing";
}
psString refuseLoop(const psString& value) {
    double seconds = 0;
    return readSeconds(value, seconds) ? "" : "seconds are a number above 0, such as 0.5";
}
void applyLoop(const psString& value, psSettings& settings) {
    readSeconds(value, settings.loopSeconds);
}

psString infoStrict(const psString&) {
    return "end with status 1 when anything went wrong";
}

psString infoList(const psString& value) {
    return value.empty() ? psString("list all keys and exit")
                         : "explain key " + value + " and exit";
}
psString refuseList(const psString& value);
void applyList(const psString& value, psSettings& settings) {
    settings.listKeys = true;
    settings.explainKey = value;
}

psString infoBanner(const psString&) {
    return "type the version and exit";
}

// The table, in the order of the help

struct KeyRow {
    const psKeyText& text;
    Info info;
    psOption::Apply apply;
    // What the argument may be, with '|' between; null: no fixed words.
    const char* words = nullptr;
};

constexpr KeyRow keyRows[] = {
    {psTextOf<"B">, unlessExit<infoBatch>, applyValue<&psSettings::batMode>, ""},
    {psTextOf<"A">, unlessExit<infoAsk>, applyAsk},
    {psTextOf<"d">, unlessExit<infoData>, applyData},
    {psTextOf<"i">, unlessExit<infoIniRead>, applyIni<false>},
    {psTextOf<"I">, unlessExit<infoIniWrite>, applyIni<true>},
    {psTextOf<"P">, unlessExit<infoPressing>, applyValue<&psSettings::pressing>, ""},
    {psTextOf<"o">, unlessExit<infoOutput<listing>>, applyOutput<listing>},
    {psTextOf<"O">, unlessExit<infoOutput<listing, true>>, applyOutput<listing, true>},
    {psTextOf<"L">, unlessExit<infoLevel>, applyLevel},
    {psTextOf<"J">, unlessExit<infoCount<externalLoops>>, applyCount<externalLoops>},
    {psTextOf<"r">, unlessExit<infoOutput<results>>, applyOutput<results>},
    {psTextOf<"R">, unlessExit<infoOutput<results, true>>, applyOutput<results, true>},
    {psTextOf<"q">, unlessExit<infoNames>, applyNames},
    {psTextOf<"Q">, unlessExit<infoNameExit>, applyNameExit, ""},
    {psTextOf<"u">, unlessExit<infoOutput<summary>>, applyOutput<summary>},
    {psTextOf<"U">, unlessExit<infoOutput<summary, true>>, applyOutput<summary, true>},
    {psTextOf<"g">, unlessExit<infoSignal>, applySignal},
    {psTextOf<"n">, unlessExit<onCommandLine<infoName, 'n'>>, applyNothing},
    {psTextOf<"p">, unlessExit<onCommandLine<infoInDir, 'p'>>, applyNothing},
    {psTextOf<"l">, unlessExit<onCommandLine<infoOutDir, 'l'>>, applyNothing},
    {psTextOf<"f">, unlessExit<infoCondition<RunCondition::function>, 2>,
     applyCondition<RunCondition::function>},
    {psTextOf<"t">, unlessExit<infoCondition<RunCondition::testClass>, 2>,
     applyCondition<RunCondition::testClass>},
    {psTextOf<"m">, unlessExit<infoCondition<RunCondition::source>, 2>,
     applyCondition<RunCondition::source>},
    {psTextOf<"k">, unlessExit<infoLogic>, applyLogic, "and|or"},
    {psTextOf<"F">, unlessExit<infoStart>, applyStart},
    {psTextOf<"Y">, unlessExit<infoPriority>, applyPriority},
    {psTextOf<"H">, unlessExit<infoHot>, applyHot, "ONLY"},
    {psTextOf<"W">, unlessExit<infoUnmask>, applyValue<&psSettings::unmask>, "="},
    {psTextOf<"T">, unlessExit<infoFeatures>, applyFeatures},
    {psTextOf<"S">, unlessExit<infoSetUse>, applyValue<&psSettings::setAndUse>, "U"},
    {psTextOf<"C">, unlessExit<infoCache>, applyValue<&psSettings::cache>, ""},
    {psTextOf<"s">, unlessExit<infoSort, 2>, applySort, "-"},
    {psTextOf<"e">, unlessExit<infoEnumerate, 2>, applyEnumerate, "+|-"},
    {psTextOf<"v">, infoVersion, applyValue<&psSettings::version>, ""},
    {psTextOf<"@">, nullptr, nullptr},
    {psTextOf<"h">, infoHelp<'h'>, applyHelp<'h'>},
    {psTextOf<"c">, unlessExit<infoCount<milliseconds>>, applyCount<milliseconds>},
    {psTextOf<"j">, unlessExit<infoCount<leastLoops>>, applyCount<leastLoops>},
    {psTextOf<"?">, infoHelp<'?'>, applyHelp<'?'>},
};

struct NameRow {
    const psKeyText& text;
    Info info;
    psOption::Apply apply;
    psOption::Value value = psOption::Value::none;
    psOption::Refuse refuse = nullptr;
};

constexpr NameRow nameRows[] = {
    {psTextOf<"-cpu">, unlessExit<infoCpu>, applyCpu, psOption::Value::needed, refuseCpu},
    {psTextOf<"-frequency">, unlessExit<infoFrequency>, applyValue<&psSettings::exactFrequency>,
     psOption::Value::needed, refuseFrequency},
    {psTextOf<"-loop">, unlessExit<infoLoop>, applyLoop, psOption::Value::needed, refuseLoop},
    {psTextOf<"-strict">, unlessExit<infoStrict, 2>, applyValue<&psSettings::strict>},
    {psTextOf<"-help">, infoList, applyList, psOption::Value::optional, refuseList},
    {psTextOf<"-version">, infoBanner, applyValue<&psSettings::banner>},
};

psString refuseList(const psString& value) {
    const psString name = psNameInTable(value);
    const auto has = [&](const auto& row) { return name == psString(row.text.name); };
    if (std::ranges::any_of(keyRows, has) || std::ranges::any_of(nameRows, has)) return {};
    psStringList names;
    for (const NameRow& row : nameRows) names.push_back(row.text.name.substr(1));
    return "no such key" + psSuggestedName(name.substr(1), names);
}
static_assert(std::size(keyRows) + std::size(nameRows) == psKeyText::count(),
              "docs/KEYS.md has a key more");

// How many characters the texts begin with alike.
int commonLength(const psString& a, const psString& b) {
    return static_cast<int>(std::ranges::mismatch(a.view(), b.view()).in1 - a.view().begin());
}

}  // namespace

void psRegisterKeys(psSession& session) {
    for (const KeyRow& row : keyRows) {
        const psKeyText& text = row.text;
        const char key = text.name[0];
        if ((key == 'q' || key == 'Q') && !qKeys) continue;
        session.initOption(text.name.data(), text.help, row.info, row.apply, text.description,
                           text.hidden);
    }
    for (const NameRow& row : nameRows) {
        const psKeyText& text = row.text;
        session.initName({'-', text.hidden, text.help, row.info, row.apply, text.description,
                          text.name.substr(1), row.value, row.refuse});
    }
}

psString psSuperfluous(char key, const psString& arg) {
    const std::string_view wanted(&key, 1);
    const auto* row = std::ranges::find(
        keyRows, wanted, [](const KeyRow& candidate) { return candidate.text.name; });
    if (row == std::end(keyRows) || !row->words) return {};
    psStringList words;
    psString(row->words).parse(words, "|");
    int used = 0;
    for (const psString& word : words) used = std::max(used, commonLength(arg, word));
    if (used == arg.length()) return {};
    const psString taken =
        words.empty() ? psString("no argument") : psString("nothing or ") + row->words;
    const psString name = "-" + psString(key);
    return name + arg + ": " + name + " takes " + taken + ", '" + arg.substr(used) +
           "' was ignored";
}

void psRemarkUnmet(const psSession& session, psTestList& tests, bool haveRun) {
    psConditions& conditions = *session.conditions();
    psStringList lines = conditions.unmatched(tests);
    const bool any =
        std::ranges::any_of(tests, [&](psTest* test) { return test->tobeRun(conditions); });
    if (!any && lines.empty()) lines.push_back("no test fits all of -f, -t, -m and -H");
    if (haveRun && any && !tests.started)
        lines.push_back("-F" + psTestList::m_startFunc +
                        ": no selected function has it in its name");
    if (haveRun && any && !psInterrupted()) {
        for (const psString& line : g_istrm.unaskedNames()) lines.push_back(line);
    }
    for (const psString& line : lines) psRemarks::add(line);
    psFaults::count(psFault::input, lines.size());
}

psOption* psFindOption(const psOptionList& options, const psString& name) {
    const auto found = std::ranges::find(options, name, [](const psOption* o) { return o->name; });
    return found == options.end() ? nullptr : *found;
}

psOption* psFindOption(const psOptionList& options, char key) {
    const auto found = std::ranges::find(options, key, [](const psOption* o) { return o->key; });
    return found == options.end() ? nullptr : *found;
}

void psInsertIntoDescription(psOption& option, const psString& list) {
    const int tab = option.description.find("\t");
    if (tab < 0) return;
    option.description =
        option.description.substr(0, tab) + list + option.description.substr(tab + 1);
}
