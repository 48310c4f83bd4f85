#include "ps.h"

#include <sys/personality.h>

#include <algorithm>
#include <ctime>
#include <initializer_list>

#include "pscmdline.h"
#include "pscputest.h"
#include "psexcept.h"
#include "psinterrupt.h"
#include "psistream.h"
#include "pslib.h"
#include "psremarks.h"
#include "psreport.h"

using enum MessageLevel;

psSession* pSession = nullptr;

psString& psSession::m_exePath = psCStream::m_exePath;
int& psSession::m_nameMode = psCStream::m_nameMode;
bool& psSession::m_nameExit = psCStream::m_nameExit;
int psSession::m_exitLevel = 0;
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

}  // namespace

bool psRegSession(psSession* session) {
    pSession = session;
    return true;
}

psSession::psSession() = default;

psSession::~psSession() {
    for (psOption* option : m_options) delete option;
    if (pCmdList == m_commandList.get()) pCmdList = nullptr;
}

// ---- keys -----------------------------------------------------------------

void psSession::initSession() {
    m_conditions = std::make_unique<psConditions>();
    m_batMode = false;
    m_askMode = 0;
    m_noSort = false;
    m_enumMode = runMode;
    m_levelMode = static_cast<int>(ERR);
    psRegisterKeys(*this);
}

void psSession::initOption(const char* key, const psString& help, psOption::Info info,
                           psOption::Apply apply, const psString& description, bool hidden) {
    m_options.push_back(new psOption{key[0], hidden, help, info, apply, description});
}

psOption* psSession::getOption(char key) const {
    return psFindOption(m_options, key);
}

void psSession::applyOption(char key, const psString& arg) {
    m_optionsLine += "-" + psString(key) + arg + ": ";
    const psOption* option = getOption(key);
    if (!option) {
        m_optionsLine += "ignored: incorrect option key\n";
        return;
    }
    if (!option->info) {  // -@ from an option file
        m_optionsLine += "ignored: option files cannot be nested\n";
        return;
    }
    m_optionsLine += option->info(arg) + "\n";
    if (const psString line = psSuperfluous(key, arg); !line.empty()) remarkOption(line);
    if (option->apply) option->apply(arg, this);
}

void psSession::setIniMode(const psString& path, bool write) {
    m_iniName = path;
    m_iniWrite = write;
}

void psSession::addCondition(RunCondition* condition) {
    if (condition) m_conditions->add(std::unique_ptr<RunCondition>(condition));
}

void psSession::logicCondition(int logic) {
    m_conditions->logic = logic;
}

void psSession::setHelp(char arg, bool hideHidden) {
    m_helpArg = arg;
    m_hideHidden = hideHidden;
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

void psSession::resetKeys() {
    m_askMode = 0;
    m_batMode = false;
    m_noSort = false;
    m_enumMode = runMode;
    m_nameMode = 0;
    m_nameExit = false;
    m_unopened = false;
    m_iniName = "";
    m_optionsLine = "Command line options: ";
    m_optionRemarks.clear();
}

bool psSession::readCfgFile(psString& line, psString& path) {
    constexpr std::size_t maxLength = 1023;
    constexpr const char* cfgRule =
        "only the first line is read, up to 1023 characters and no NUL byte";
    const psString name = m_exePath.getFileTitle() + ".cfg";
    for (const psString& candidate : {name, genDirName("") + name}) {
        i_stream file(candidate, io_stream::READ | io_stream::NAME_AS_GIVEN, false);
        if (!file.isOpen()) continue;
        file.getline(line);
        if (file.readError()) continue;  // a directory
        line = psWithoutByteOrderMark(line.view());
        const auto end = std::min(line.view().find('\0'), maxLength);
        psString rest = line.view().substr(std::min(end, line.view().size()));
        line = line.view().substr(0, end);
        for (psString more; file.getline(more);) rest += more.trim();
        if (!rest.empty()) remarkOption(candidate + ": " + cfgRule);
        path = candidate;
        return true;
    }
    return false;
}

// Arguments win over the configuration file, and that over the command line
// that is compiled in.
void psSession::readKeys(int argc, char** argv) {
    psString line;
    psString path;
    if (argc > 1) {
        m_commandList->setArgs(argc - 1, argv + 1);
        m_optionsLine += "\n";
    } else if (readCfgFile(line, path)) {
        m_commandList->setArgs(line.c_str());
        m_optionsLine += "read from " + path + " file\n";
    } else if (pCmdLine) {
        m_commandList->setArgs(pCmdLine->c_str());
        m_optionsLine += "set by _FORCE_CMDLINE preprocessor definition\n";
    } else {
        m_optionsLine = "";
    }
}

void psSession::setExitLevel() {
    const psCommandList& keys = *m_commandList;
    m_exitLevel = keys.isKey('?') || keys.isKey('h') ? 2
                  : keys.isKey('e')                  ? 1
                  : keys.isKey('v')                  ? 3
                                                     : 0;
}

void psSession::setDefaults() {
    psString arg;
    setInDir(m_commandList->getArg('p', arg) ? arg : psString());
    setOutDir(m_commandList->getArg('l', arg) ? arg : psString());
    const bool named = m_commandList->getArg('n', arg) && !arg.empty();
    setDefName(named ? arg : m_exePath.getFileTitle());
}

bool psSession::openIniFile() {
    if (m_iniName.empty() || g_istrm.setIniFile(m_iniName, m_iniWrite) || !m_iniWrite) return true;
    g_ostrm << "FATAL FAIL: can't open ini-file for writing\n";
    return false;
}

bool psSession::parseCommandLine(int argc, char** argv) {
    m_exePath = argc > 0 ? argv[0] : "";
    resetKeys();
    m_commandList = std::make_unique<psCommandList>();
    pCmdList = m_commandList.get();
    readKeys(argc, argv);
    // These come from the command line itself: option files cannot change them.
    setExitLevel();
    setDefaults();

    // What a run shows until its own level takes over.
    g_ostrm.setOutLevel(showResults);
    const bool filesRead = m_commandList->expandFiles();
    for (const psString& line : m_commandList->remarks()) remarkOption(line);
    applyKeys();
    printOptions();

    if (!filesRead) g_ostrm << "FATAL FAIL: can't open option file for reading\n";
    if (m_unopened) g_ostrm << "FATAL FAIL: can't open output file for writing\n";
    if (!filesRead || m_unopened || !openIniFile()) return false;
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

void psSession::printOptions() {
    g_ostrm << m_optionsLine << ERR;
    m_optionsLine = "";
    for (const psString& line : m_optionRemarks) g_ostrm << "-- " << line << "\n";
    g_ostrm << END;
}

void psSession::updateOptions() {
    if (psOption* option = getOption('T'))
        psInsertIntoDescription(*option, psCpuFeatures::optimizedList());
    if (m_batMode)
        m_askMode = 0;
    else if (m_askMode == 0)
        m_askMode = askTiming | askParams;
}

bool psSession::startSession() {
    return true;
}

// ---- help -----------------------------------------------------------------

psString psSession::banner() {
    return psString("Morva ZMO Performance System 2.0, ") + __DATE__;
}

bool psSession::hintOutput() {
    if (m_helpArg == '\0' && !m_version) return false;
    g_ostrm << "\n" << banner() << "\n";
    if (m_helpArg != '\0') hint(m_helpArg, m_hideHidden);
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
    addCpuTest();
    pTestList->startTime = std::time(nullptr);

    int result = 0;
    if (parseCommandLine(argc, argv) && startSession() && !hintOutput()) {
        initLibrary();
        registerLibraryVersions();
        result = runSession();
    }
    pTestList->endTime = std::time(nullptr);
    closeFiles();
    psRemarks::print();
    outputSignal();
    psRemarks::print();
    destroyTests();
    return result;
}

void psSession::addCpuTest() {
    psRegTest(new __psMorvaCpuTest);
}

void psSession::initLibrary() {
    m_libraryWanted = true;
    if (!zmoEnvironment) return psZmoCpuSetup(false, 0);
    reportAddressRandomisation();
    {
        const psOutLevelGuard errorsOnly(static_cast<int>(ERR));
        setZmoEnvironment();
    }
    psZmoCpuSetup(m_cpuFeatures != 0, m_cpuFeatures);
    if (!m_featureText.empty())
        g_ostrm << ERR << m_featureText << psCpuFeatures::processorText(0) << END;
}

int psSession::runSession() {
    if (!m_noSort) {
        g_ostrm << "Sorting functions...";
        pTestList->sortFunc();
        g_ostrm << "\n";
    }
    pTestList->startWithCpuTest();
    outputHeader();
    if (m_enumMode <= 1) {
        listTests(m_enumMode);
        return 0;
    }
    return runTests();
}

int psSession::runTests() {
    if (s_parmFunc) s_parmFunc();
    selectCommonParms();

    g_ostrm.setOutLevel(showResults);
    readCommonData();
    g_ostrm.setOutLevel(m_levelMode);
    g_istrm.setIStream((m_askMode & askAll) ? &c_in : nullptr);

    if (!g_pHotList) g_pHotList = new psStringList;
    psTest::m_numResultColm = psTest::m_hot ? 6 : 5;
    putTableTitle();
    g_ostrm.flush();
    const bool shown = (m_levelMode & static_cast<int>(PERF)) != 0 || !g_cstrm.empty();
    const int result = pTestList->runTests(*m_conditions);
    pTestList->endTime = std::time(nullptr);
    if (pTestList->sets.measured > 0 && !shown)
        psRemarks::add("No figure was shown: -LP shows them here, -r writes them to a table");
    outputFooter();
    psRemarkUnmet(*this, *pTestList, true);
    return result;
}

// Finding out which common parameters the chosen tests use asks nothing.
void psSession::selectCommonParms() {
    if (!g_pParmList) return;
    const int ask = m_askMode;
    const bool bat = m_batMode;
    m_askMode = 0;
    m_batMode = true;
    pTestList->selectCommonParms(*m_conditions, *g_pParmList);
    m_askMode = ask;
    m_batMode = bat;
}

// While the streams that a loss is told through are alive. The listing stays open
// for what comes after the session.
void psSession::closeFiles() {
    g_istrm.close();
    for (psSinkList* files : std::initializer_list<psSinkList*>{&g_cstrm, &g_qstrm, &g_ustrm})
        files->close();
    g_ostrm.flush();
}

void psSession::destroyTests() {
    delete pTestList;
    pTestList = nullptr;
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
    if (m_signalName.empty()) return;
    o_stream file(m_signalName, io_stream::WRITE | io_stream::NAME_AS_GIVEN);
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
