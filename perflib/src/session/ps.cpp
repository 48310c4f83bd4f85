#include "ps.h"

#include <sys/personality.h>

#include <algorithm>
#include <ctime>
#include <initializer_list>
#include <utility>

#include "pscmdline.h"
#include "pscore.h"
#include "pscputest.h"
#include "psctrl87.h"
#include "psexcept.h"
#include "psfaults.h"
#include "psinterrupt.h"
#include "psistream.h"
#include "pslib.h"
#include "pslongkey.h"
#include "psremarks.h"
#include "psreport.h"
#include "pstool.h"

using enum MessageLevel;

psSession* pSession = nullptr;

bool psSession::m_libraryWanted = false;
bool psSession::m_optionFile = false;

namespace {

void titleWords(std::initializer_list<const char*> words) {
    for (const char* word : words) g_cstrm.setNextColm(word);
}

psString inPath(const psString& name) {
    return psSession::genInPath(name, "");
}
psString outPath(const psString& name) {
    return psSession::genOutPath(name, "");
}

void reportAddressRandomisation() {
    // Back to the default persona; the answer is the one before.
    const int persona = personality(0);
    if (persona == -1)
        g_ostrm << "\nERROR: personality() failed\n";
    else if (persona & ADDR_NO_RANDOMIZE)
        g_ostrm << "\nAddress space layout randomization (ASLR) is disabled.\n";
    else
        g_ostrm << "\nWARNING: Address space layout randomization (ASLR) is enabled. "
                   "Results can be unstable.\n";
}

void registerLibraryVersions() {
    if (!zmoVersionList) return;
    for (const psZmoVersion version : *zmoVersionList) {
        const ZmoLibraryVersion* record = version();
        if (record)
            psRegLibInfo(psString(record->name) + ", " + record->version + ", " +
                         record->buildDate);
    }
    g_ostrm << "Morva ZMO libraries information has been set into PS\n";
}

psSinkList& streamOf(psOutputFile::Content content) {
    switch (content) {
        case psOutputFile::table:
            return g_cstrm;
        case psOutputFile::names:
            return g_qstrm;
        case psOutputFile::summary:
            return g_ustrm;
        default:
            return g_ostrm;
    }
}

// Every file that can be opened is; false when one could not.
bool openFiles() {
    bool opened = true;
    for (const psOutputFile& file : g_settings.files)
        opened = streamOf(file.content).addStream(file.path, file.append) && opened;
    return opened;
}

bool openIniFile() {
    const psString& name = g_settings.iniName;
    const bool write = g_settings.iniWrite;
    if (name.empty() || g_istrm.setIniFile(name, write) || !write) return true;
    g_ostrm << "FATAL FAIL: can't open ini-file for writing\n";
    return false;
}

// While the streams that report a loss are alive. The listing stays open
// for what comes after the session.
void closeFiles() {
    g_istrm.close();
    for (psSinkList* files : std::initializer_list<psSinkList*>{&g_cstrm, &g_qstrm, &g_ustrm})
        files->close();
    g_ostrm.flush();
}

}  // namespace

bool psRegSession(psSession* session) {
    pSession = session;
    return true;
}

psSession::psSession() = default;

psSession::~psSession() {
    for (psOption* option : m_options) delete option;
    for (psOption* option : m_names) delete option;
    if (pCmdList == m_commandList.get()) pCmdList = nullptr;
}

// ---- keys -----------------------------------------------------------------

void psSession::initSession() {
    m_conditions = std::make_unique<psConditions>();
    m_settings = {};
    psRegisterKeys(*this);
}

void psSession::initOption(const char* key, const psString& help, psOption::Info info,
                           psOption::Apply apply, const psString& description, bool hidden) {
    m_options.push_back(new psOption{key[0], hidden, help, info, apply, description});
}

void psSession::initName(const psOption& option) {
    m_names.push_back(new psOption(option));
}

psOption* psSession::getOption(char key) const {
    return psFindOption(m_options, key);
}

void psSession::applyOption(char key, const psString& arg) {
    m_optionsLine += "-" + psString(key) + arg + ": ";
    if (key == '-') return applyName(arg);
    const psOption* option = getOption(key);
    if (!option) return echo("ignored: incorrect option key");
    // -@ from an option file
    if (!option->info) return echo("ignored: option files cannot be nested");
    echo(option->info(arg));
    if (const psString line = psSuperfluous(key, arg); !line.empty())
        m_optionRemarks.push_back(line);
    if (option->apply) option->apply(arg, m_settings);
}

// A misspelt --strict must not pass for one: a run with a long key that cannot be
// used does not begin.
void psSession::applyName(const psString& arg) {
    const psLongKey given(arg);
    const psOption* option = psFindOption(m_names, given.name);
    const psString refusal = given.refusal(option, m_names);
    if (!refusal.empty()) {
        m_optionsLine += "ignored: " + refusal + "\n";
        psFaults::count(psFault::key);
        return;
    }
    m_optionsLine += option->info(given.value) + "\n";
    option->apply(given.value, m_settings);
}

void psSession::echo(const psString& text) {
    m_optionsLine += text + "\n";
    const bool atExit = m_exitLevel > 0 && text == getExitInfo();
    if (text.startsWith("ignored") && !atExit) psFaults::count(psFault::input);
}

psString psSession::getExitInfo() {
    switch (m_exitLevel) {
        case 1:
            return "ignored because of -e option";
        case 2:
            return "ignored because of -h option";
        case 3:
            return "ignored because of -v option";
        default:
            return "ignored";
    }
}

void psSession::setDefaults() {
    psString arg;
    setInDir(m_commandList->getArg('p', arg) ? arg : psString());
    setOutDir(m_commandList->getArg('l', arg) ? arg : psString());
    const bool named = m_commandList->getArg('n', arg) && !arg.empty();
    setDefName(named ? arg : m_exePath.getFileTitle());
}

bool psSession::parseCommandLine(int argc, char** argv) {
    m_settings = {};
    m_settings.exePath = argc > 0 ? argv[0] : "";
    psPublish(m_settings);
    m_optionRemarks.clear();
    psFaults::clear();
    m_commandList = std::make_unique<psCommandList>();
    pCmdList = m_commandList.get();
    m_optionsLine = m_commandList->readKeys(argc, argv);
    // These come from the command line itself: option files cannot change them.
    m_settings.exitLevel = m_commandList->exitLevel();
    psPublish(m_settings);
    setDefaults();
    m_settings = g_settings;

    // What a run shows until its own level takes over.
    g_ostrm.setOutLevel(showResults);
    const bool filesRead = m_commandList->expandFiles();
    m_optionRemarks = m_commandList->remarks();
    applyKeys();
    psPublish(m_settings);
    useSettings();
    const bool usable = psFaults::counted(psFault::key) == 0;
    if (usable && filesRead && listOutput()) return false;
    // What a run that does not begin would overwrite stays as it is.
    const bool filesOpened = !usable || openFiles();
    printOptions();

    if (!usable) g_ostrm << "FATAL FAIL: can't use a key that begins with --\n";
    if (!filesRead) g_ostrm << "FATAL FAIL: can't open option file for reading\n";
    if (!filesOpened) g_ostrm << "FATAL FAIL: can't open output file for writing\n";
    if (!usable || !filesRead || !filesOpened || !openIniFile()) {
        psFaults::count(psFault::start);
        return false;
    }
    updateOptions();
    return true;
}

void psSession::applyKeys() {
    for (const psCommandKey& entry : *m_commandList) {
        if (entry.key() == ' ') continue;
        m_optionFile = entry.fromFile();
        applyOption(entry.key(), entry.arg());
    }
    m_optionFile = false;
}

// What others keep of the settings.
void psSession::useSettings() {
    g_istrm.dataList().clear();
    for (const psGivenValue& given : g_settings.data)
        g_istrm.dataList().set(given.name, given.value);
    for (const psGivenPattern& given : g_settings.patterns) {
        if (auto condition = psMakeCondition(given.target, given.text))
            m_conditions->add(std::move(condition));
    }
    m_conditions->logic = g_settings.logic;
    psGlobalTool().setCallMode(g_settings.setAndUse);
    if (g_settings.unmask) psSetExceptionValues();
}

void psSession::printOptions() {
    g_ostrm << m_optionsLine << ERR;
    m_optionsLine = "";
    for (const psString& line : m_optionRemarks) g_ostrm << "-- " << line << "\n";
    psFaults::count(psFault::input, m_optionRemarks.size());
    g_ostrm << END;
}

void psSession::updateOptions() {
    if (psOption* option = getOption('T'))
        psInsertIntoDescription(*option, psCpuFeatures::optimizedList());
}

bool psSession::startSession() {
    return true;
}

// ---- help -----------------------------------------------------------------

bool psSession::listOutput() {
    if (!g_settings.listKeys && !g_settings.banner) return false;
    m_optionsLine = "";
    updateOptions();
    if (g_settings.banner) g_ostrm << psBanner() << "\n";
    if (!g_settings.explainKey.empty())
        g_ostrm << psExplained(m_options, m_names, g_settings.explainKey);
    else if (g_settings.listKeys)
        g_ostrm << psKeyLines(m_options, m_names);
    return true;
}

bool psSession::hintOutput() {
    if (g_settings.helpArg == '\0' && !g_settings.version) return false;
    g_ostrm << "\n" << psBanner() << "\n";
    if (g_settings.helpArg != '\0') hint(g_settings.helpArg, g_settings.hideHidden);
    return true;
}

void psSession::hint(char arg, bool hideHidden) {
    if (arg == psShortHelp)
        hint_quick(hideHidden);
    else if (arg == (hideHidden ? 'h' : '?'))
        hint_full(hideHidden);
    else
        hint_descr(arg);
}

void psSession::hint_quick(bool hideHidden) {
    g_ostrm << psQuickHelp(m_options, hideHidden);
}

void psSession::hint_full(bool hideHidden) {
    g_ostrm << psFullHelp(m_options, hideHidden);
}

void psSession::hint_descr(char key) {
    g_ostrm << psKeyHelp(m_options, key);
}

// ---- the run --------------------------------------------------------------

int psSession::run(int argc, char** argv) {
    psException::currentName = psTrace::getCurName;
    io_stream::inPathRule = inPath;
    io_stream::outPathRule = outPath;
    psHoldStandardStreams();
    psCatchInterrupts();
    m_libraryWanted = false;
    g_ostrm.setMsgLevel(PERF);
    g_ostrm.push_back(&c_out);
    setZmoEnvironment();
    initSession();
    psRegTest(new __psMorvaCpuTest);
    pTestList->startTime = std::time(nullptr);

    int result = 0;
    if (parseCommandLine(argc, argv) && startSession() && !hintOutput() && bindToCore()) {
        initLibrary();
        registerLibraryVersions();
        result = runSession();
    }
    pTestList->endTime = std::time(nullptr);
    closeFiles();
    psRemarks::print();
    outputSignal();
    if (psFaults::exitStatus() == 1 && !psInterrupted())
        psRemarks::add("Exit status 1 by --strict: " + psFaults::text());
    psRemarks::print();
    delete std::exchange(pTestList, nullptr);
    return result;
}

// Before the frequency is measured and the library looks at the processor.
bool psSession::bindToCore() {
    if (g_settings.core < 0 || psBindToCore(g_settings.core)) return true;
    g_ostrm << ERR << "FATAL FAIL: the system does not let the process run on core "
            << g_settings.core << " only\n"
            << END;
    psFaults::count(psFault::key);
    return false;
}

void psSession::initLibrary() {
    m_libraryWanted = true;
    if (!zmoEnvironment) return psZmoCpuSetup(false, 0);
    reportAddressRandomisation();
    {
        const psOutLevelGuard errorsOnly(static_cast<int>(ERR));
        setZmoEnvironment();
    }
    psZmoCpuSetup(g_settings.cpuFeatures != 0, g_settings.cpuFeatures);
    if (g_settings.featureText.empty()) return;
    if (g_settings.cpuFeatures != 0) psFaults::count(psFault::input);
    g_ostrm << ERR << g_settings.featureText << psCpuFeatures::processorText(0) << END;
}

int psSession::runSession() {
    if (!g_settings.noSort) {
        g_ostrm << "Sorting functions...";
        pTestList->sortFunc();
        g_ostrm << "\n";
    }
    pTestList->startWithCpuTest();
    outputHeader();
    if (g_settings.enumMode <= 1) {
        listTests(g_settings.enumMode);
        return 0;
    }
    return runTests();
}

int psSession::runTests() {
    if (s_parmFunc) s_parmFunc();
    // Finding out which common parameters the chosen tests use asks nothing.
    g_istrm.setIStream(nullptr);
    if (g_pParmList) pTestList->selectCommonParms(*m_conditions, *g_pParmList);

    g_ostrm.setOutLevel(showResults);
    readCommonData();
    g_ostrm.setOutLevel(g_settings.levelMode);
    g_istrm.setIStream((g_settings.asked() & psSettings::askAll) ? &c_in : nullptr);

    if (!g_pHotList) g_pHotList = new psStringList;
    psTest::m_numResultColm = psTest::m_hot ? 6 : 5;
    putTableTitle();
    g_ostrm.flush();
    const bool shown = (g_settings.levelMode & static_cast<int>(PERF)) != 0 || !g_cstrm.empty();
    const int result = pTestList->runTests(*m_conditions);
    pTestList->endTime = std::time(nullptr);
    if (pTestList->sets.measured > 0 && !shown)
        psRemarks::add("No figure was shown: -LP shows them here, -r writes them to a table");
    outputFooter();
    psRemarkUnmet(*this, *pTestList, true);
    return result;
}

// ---- output ---------------------------------------------------------------

void psSession::funcTitleToCStream() {
    titleWords({"function"});
}

void psSession::parmsTitleToCStream() {
    titleWords({"Parm1", "Parm2", "Parm3", "Parm4", "Parm5", "Parm6", "Parm7", "Parm8"});
}

void psSession::resultTitleToCStream() {
    titleWords({"Comment", "Clocks", "per", "Time (usec)", "MFlops"});
    if (psTest::m_hot) titleWords({"Interest"});
}

void psSession::putTableTitleLine() {
    funcTitleToCStream();
    parmsTitleToCStream();
    g_cstrm.setFilledColms(psTest::m_numParmsColm);
    resultTitleToCStream();
    g_cstrm.lineOut(psTest::m_numParmsColm + psTest::m_numResultColm);
}

void psSession::putTableTitle() {
    putTableTitleLine();
    if (m_nameMode & 2) g_cstrm.writeInto(g_qstrm, [this] { putTableTitleLine(); });
}

void psSession::outputHeader() {
    const psReportTitle title(*pTestList);
    g_ostrm << title;
    g_cstrm << title;
    g_qstrm << title;
    g_ustrm << title << psReportTestResult();
}

void psSession::outputFooter() {
    const psReportEnd report(*pTestList);
    g_ostrm << ERR << report << END_FLUSH;
    g_ustrm << report;
}

void psSession::outputSignal() {
    if (g_settings.signalName.empty()) return;
    o_stream file(g_settings.signalName, io_stream::WRITE | io_stream::NAME_AS_GIVEN);
    const double elapsed = std::difftime(pTestList->endTime, pTestList->startTime);
    file.write(psReportFormat::getTimeStr(elapsed) + "\n");
    file.write(psString(std::ctime(&pTestList->endTime)) + "\n");
    file.close();
}

void psSession::listTests(int mode) {
    const psReportTitle title(*pTestList);
    const psReportList list(*pTestList, *m_conditions, mode);
    g_ostrm << title << list;
    g_cstrm << title << list;
    psRemarkUnmet(*this, *pTestList, false);
}
