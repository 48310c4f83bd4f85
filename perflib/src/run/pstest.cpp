#include "pstest.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <exception>

#include "psbase.h"
#include "pscond.h"
#include "pscputick_gcc.h"
#include "psctable.h"
#include "psctrl87.h"
#include "psdata.h"
#include "psdefault.h"
#include "psexcept.h"
#include "psinterrupt.h"
#include "psistream.h"
#include "psiterator.h"
#include "psprogress.h"
#include "psreport.h"

using enum MessageLevel;

psResult psTest::m_currentResult = PS_UNDEFINED;
int psTest::m_numParmsColm = 9;
int psTest::m_numResultColm = 5;
int psTest::m_vectorNum = 0;

// The text is cut at '/' by hand: an empty variant is a part of its own.
psTestInfo::psTestInfo(const psString& text) {
    const int first = text.find("/");
    if (first < 0) {
        className = text;
        return;
    }
    className = text.substr(0, first);
    const int second = text.find("/", first + 1);
    if (second < 0) {
        variant = text.substr(first + 1);
        return;
    }
    variant = text.substr(first + 1, second - first - 1);
    kind = text.substr(second + 1);
}

psTest::psTest(FuncOld funcOld, const psString& funcName, const psString& fileName,
               const psString& info)
    : psTest(nullptr, nullptr, nullptr, nullptr, funcName, fileName, info) {
    m_funcOld = funcOld;
}

psTest::psTest(FuncLoop funcLoop, FuncStat funcStat, const psString& funcName,
               const psString& fileName, const psString& info)
    : psTest(nullptr, nullptr, funcLoop, funcStat, funcName, fileName, info) {}

psTest::psTest(FuncCall funcCall, FuncInit funcInit, FuncLoop funcLoop, FuncStat funcStat,
               const psString& funcName, const psString& fileName, const psString& info)
    : m_startTime(std::time(nullptr)),
      m_endTime(m_startTime),
      m_funcName(funcName),
      m_fileName(fileName.getFileName()),
      m_info(info),
      m_funcLoop(funcLoop),
      m_funcStat(funcStat),
      m_funcCall(funcCall),
      m_funcInit(funcInit) {
    psTest::initSettings();
}

psTest::~psTest() = default;

void psTest::initSettings() {
    m_currentResult = PS_UNDEFINED;
    m_notStarted = true;
    m_sets = {};
    m_setsWanted = 0;
    m_bad87 = false;
    m_badSSX = false;
    m_ctrlTexts = {};
    m_cacheSizeBad = false;
    m_deprecated = false;
    clearParms();
}

void psTest::clearParms() {
    m_parms.clear();
    m_cacheIter.reset();
}

void psTest::raiseResult(psResult result) {
    m_currentResult = std::max(m_currentResult, result);
}

void psTest::raiseShownResult(psResult result) {
    const bool hidden = isWarning(result) && g_ostrm.getOutLevel() < static_cast<int>(WARN);
    raiseResult(hidden ? PS_OK : result);
}

void psTest::resetAllVectors() {
    psResetAllVectors();
}

void psTest::reserveAllVectors() {
    psReserveAllVectors();
}

bool psTest::tobeRun(psConditions& conditions) {
    return conditions.tobeRun(this) &&
           (m_hot != 2 || (g_pHotList && g_pHotList->contains(m_funcName)));
}

int psTest::compareFunc(const psTest* other) const {
    return m_funcName.compare(other->m_funcName);
}

// ---- the run ----------------------------------------------------------------

bool psTest::leftOut() const {
    return m_pressing && g_istrm.hasIniFile() && !g_istrm.iniFile().sectionExist(m_funcName);
}

psResult psTest::run() {
    initSettings();
    if (leftOut()) return PS_UNDEFINED;
    m_result = PS_OK;
    m_tool = psGlobalTool();
    m_tool.setInitBeforeRun(m_info.kind.contains("Ibs"));
    psTrace::flush();
    psFlushDenormals();

    const psOutLevelGuard level;
    try {
        psGuarded([&] {
            openIniSection();
            runPhases();
        });
    } catch (const psException& e) {
        g_ostrm.setOutLevel(level.saved());
        runFailed(e.msg(), e.where());
    } catch (const std::exception& e) {
        g_ostrm.setOutLevel(level.saved());
        runFailed(psString("--ZMO. Exception: ") + e.what(), psTrace::getCurName());
    }

    m_result = m_currentResult;
    m_endTime = std::time(nullptr);
    const psReportTestResult report(*this);
    g_ostrm << ERR << report << END_FLUSH;
    g_ustrm << report;
    g_cstrm.flush();
    g_ustrm.flush();
    endTest();
    for (psParameter* parm : m_parms) parm->restoreDefinition();
    return m_result;
}

void psTest::openIniSection() const {
    if (g_istrm.isIniWritten()) g_istrm.iniFile().write(m_funcName);
    g_istrm.setIniSection(m_funcName);
}

void psTest::runPhases() {
    beginTest();
    m_startTime = std::time(nullptr);
    const psReportTestTitle title(*this);
    g_ostrm << ERR << title << END;
    g_ustrm << title;

    if (!canStart()) {
        g_ostrm << ERR << "-- Can't start timing\n" << END;
    } else if (m_cache && !m_cacheIter) {
        g_ostrm << ERR << "-- Can't run In-Outof-Cache timing: no program support for function "
                << m_funcName << "\n"
                << END;
    } else {
        // A value given for this test is not the default of the next one.
        for (psParameter* parm : m_parms) parm->saveDefinition();
        parmsFromIstrm();
        putTableName();
        if (!g_istrm.isIniWritten() && !psCStream::m_nameExit) {
            outputRegInfo();
            loopData();
        }
    }
    flushStart();
}

// What a fault leaves behind is put right here, before the next test: priority,
// masks, the half-filled line and the data.
void psTest::runFailed(const psString& message, const psString& where) {
    m_currentResult = PS_EXCPTFAIL;
    psResetPriority();
    psMaskExceptions();
    g_cstrm.tableFlush();
    g_cstrm.linePostponeDrop();
    g_cstrm.identicalLinesStop();
    g_ostrm << ERR << message << " in " << where << "\n" << END;
    try {
        psGuarded([this] { flushData(); });
    } catch (const std::exception&) {
        g_ostrm << ERR << "-- The test data of " << m_funcName << " could not be released\n" << END;
    }
}

void psTest::startAndStop() {
    const psOutLevelGuard quiet(static_cast<int>(ERR));
    try {
        psGuarded([this] {
            beginTest();
            canStart();
            flushStart();
            endTest();
        });
    } catch (const std::exception& e) {
        g_ostrm << ERR << e.what() << " in startAndStop of " << m_funcName << " test\n" << END;
    }
}

void psTest::loopData() {
    m_notStarted = true;
    g_cstrm.identicalLinesStart(m_numParmsColm);
    bool first = true;
    while (!psInterrupted()) {
        psProgress::refresh();
        m_vectorNum = 0;
        if (!canContinue()) break;
        m_notStarted = false;
        ++m_sets.tried;
        runOneSet(first);
        flushData();
        if (isFailure(m_currentResult)) break;
    }
    if (psInterrupted() && !isFailure(m_currentResult)) noteInterruption();
    if (m_notStarted && !psInterrupted()) {
        g_ostrm << ERR << "-- One of argument list for timing is empty\n" << END;
        raiseResult(PS_DATAFAIL);
    } else if (m_currentResult == PS_UNDEFINED && !psInterrupted()) {
        g_ostrm << ERR << "-- Fail while initialization of function data\n" << END;
        raiseResult(PS_DATAFAIL);
    }
    finishTable();
}

// How many sets there would have been: the walk is over, the values are free.
void psTest::noteInterruption() {
    long long all = 1;
    for (psParameter* parm : m_parms) {
        long long values = 0;
        for (bool more = parm->firstValue(); more; more = parm->nextValue()) ++values;
        all *= values;
    }
    if (m_sets.tried < all) m_setsWanted = all;
}

void psTest::runOneSet(bool& first) {
    if (!prepareSet()) {
        ++m_sets.unprepared;
        return;
    }
    if (first) outputConst();
    first = false;
    if (callTooLong()) return;
    if (m_cacheIter && !m_cacheIter->validateSize()) {
        m_cacheSizeBad = true;
        return;
    }
    if (callTooLong()) return;  // the size has come out larger than it was to be
    if (g_settings.loopSeconds > 0) return repeatCalls();
    putTextParms();
    if (m_tool.callMode()) reserveAllVectors();
    if (m_hot == 2 && !isHotLine()) {
        g_ostrm << "  measuring is omitted: not hot line\n";
        return;
    }
    const psResult result = measureSet();
    ++m_sets.measured;
    raiseShownResult(result);
    outputResult(result);
    g_ostrm.flush();
    noteCall();
}

psString psTest::valuesBesideSize() const {
    psString text;
    for (const psParameter* parm : m_parms) {
        const psString value = parm->valueString();
        if (parm != m_cacheIter.get() && !value.empty()) text += parm->name() + "=" + value + " ";
    }
    return text.trim();
}

bool psTest::callTooLong() const {
    if (!m_cacheIter) return false;
    const psString values = valuesBesideSize();
    const psString reason = m_cacheIter->tooLong(values);
    if (reason.empty()) return false;
    g_ostrm << ERR << "-- " << m_cacheIter->comment() << (values.empty() ? "" : " " + values)
            << " is not measured: " << reason << "\n"
            << END;
    return true;
}

// By the clock of the system: what the engine reports depends on its method.
void psTest::noteCall() {
    const bool inCache = m_cacheIter && m_cacheIter->value() == psCacheIterator::IN_CACHE;
    if (!inCache || !m_funcCall || isFailure(m_currentResult)) return;
    if (m_funcInit) m_funcInit();
    const auto begin = std::chrono::steady_clock::now();
    m_funcCall();
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - begin;
    m_cacheIter->noteCall(valuesBesideSize(), spent.count());
}

// A set that cannot be prepared has no row; its parameters stand before whatever
// the preparation has to say.
bool psTest::prepareSet() {
    const auto nameSet = [this] {
        putTextParms(ERR);
        g_ostrm << ERR << "\n" << END;
    };
    const psErrorPreface preface(nameSet);
    beginSet();
    if (initData()) return true;
    g_ostrm << ERR << "-- The data of this set could not be prepared\n" << END;
    return false;
}

psResult psTest::measureSet() {
    printAllMemoryBlocks("before function calls");
    psResult timing = PS_UNDEFINED;
    {
        const psOutLevelGuard level;
        psInitCtrlStatus();
        if (level.saved() == showWarnings) g_ostrm.setOutLevel(showResults);
        timing = runTiming();
    }
    if (timing == PS_UNDEFINED) {
        g_ostrm << ERR
                << "-- Internal test problem: runTiming() function returns undefined result\n"
                << END;
        raiseResult(PS_FAIL);
    } else {
        printAllMemoryBlocks("after function calls");
    }
    const psResult status = checkCtrlStatus();
    psMaskExceptions();
    return std::max(timing, status);
}

// With --loop there is no figure; what the user attaches to is printed before.
void psTest::repeatCalls() {
    putTextParms(ERR);
    if (!m_funcCall) {
        g_ostrm << ERR << "has no function that makes one call\n" << END;
        raiseResult(PS_FAIL);
        return;
    }
    g_ostrm << ERR << "called for " << g_settings.loopSeconds << " s by process " << getpid()
            << " at " << psText(callAddress()) << "\n"
            << END_FLUSH;
    psInitCtrlStatus();
    const long long calls = m_tool.repeat(m_funcCall, m_funcInit, g_settings.loopSeconds);
    const psResult status = checkCtrlStatus();
    psMaskExceptions();
    raiseShownResult(std::max(m_tool.result(), status));
    g_ostrm << ERR << "  " << calls << " calls\n" << END_FLUSH;
}

// The check empties the guards, so the report's texts are taken before it.
psResult psTest::checkCtrlStatus() {
    if (!m_bad87 && !m_badSSX) m_ctrlTexts = psCtrlStatusTexts();
    return psCheckCtrlStatus(m_bad87, m_badSSX);
}

void psTest::finishTable() {
    g_cstrm.linePostponeOut(m_numResultColm + m_numParmsColm);
    if (!g_cstrm.identicalLinesStop()) return;
    g_ostrm << WARN << "-- Notice: duplicate lines in performance table (csv-file)\n" << END;
    raiseShownResult(PS_DATAWRN);
}

// An odometer over the parameters: the last one registered turns fastest.
bool psTest::canContinue() {
    if (m_cacheIter && m_cacheSizeBad) {
        m_cacheSizeBad = false;
        if (m_cacheIter->nextValue()) return true;
        g_ostrm << ERR << m_cacheIter->infoString() << "\n-- Fail to allocate "
                << m_cacheIter->comment() << " data\n"
                << END;
        raiseResult(PS_DATAFAIL);
        return false;
    }
    if (m_parms.empty()) return m_notStarted;
    if (m_notStarted)
        return std::ranges::all_of(m_parms, [](psParameter* parm) { return parm->firstValue(); });
    for (auto pos = m_parms.end(); pos != m_parms.begin();) {
        --pos;
        if ((*pos)->nextValue()) return true;
        (*pos)->firstValue();
    }
    return false;
}

const void* psTest::callAddress() const {
    return reinterpret_cast<const void*>(m_funcCall);
}

psResult psTest::runTiming() {
    if (m_funcLoop || m_funcStat || m_funcCall)
        return m_tool.timing(m_funcLoop, m_funcStat, m_funcCall, m_funcInit);
    return m_funcOld ? m_tool.timing(m_funcOld) : PS_UNDEFINED;
}

// ---- hooks with their base behaviour -----------------------------------------

bool psTest::canStart() {
    return true;
}
void psTest::flushStart() {}
void psTest::beginSet() {}
bool psTest::initData() {
    return true;
}
void psTest::flushData() {}
double psTest::getFlops() {
    return 0.0;
}
double psTest::getDivisor() {
    return 1.0;
}
psString psTest::getUnit() {
    return " ";
}
void psTest::beginTest() {}
void psTest::endTest() {}
bool psTest::isFloatFunction() {
    return true;
}
void psTest::constToOstrm() {}
int psTest::printAllMemoryBlocks(const psString&) {
    return 0;
}

bool psTest::isHotLine() {
    return g_pHotList && g_pHotList->contains(m_funcName);
}

void psTest::regParm(psParameter& parm) {
    m_parms.push_back(&parm);
}

void psTest::regCacheParm(std::unique_ptr<psCacheIterator> iterator) {
    if (!m_cache || m_cacheIter) return;
    m_cacheIter = std::move(iterator);
    const psParameter* size = &m_cacheIter->parm();
    const auto pos = std::ranges::find(m_parms, size);
    if (pos != m_parms.end())
        *pos = m_cacheIter.get();
    else
        m_parms.push_back(m_cacheIter.get());
}

void psTest::regCacheParm(psIterator<int>& length, const psObject* owner,
                          std::function<bool(int)> check) {
    const auto makeAnew = [this, check = std::move(check)](int value) {
        beginSet();
        return check(value);
    };
    regCacheParm(std::make_unique<psCacheIteratorInt>(length, owner, makeAnew));
}

void psTest::setTimingResult(double clocks, const psString& comment) {
    m_tool.setFuncTicks(clocks);
    m_timingComment = comment;
}

bool psTest::setDeprecatedFlag(bool on) {
    m_deprecated = on;
    bool marked = false;
    for (psParameter* parm : m_parms) {
        if (!on)
            parm->setDeprecatedFlag(false);
        else if (parm->isDeprecatedParm())
            marked = parm->setDeprecatedFlag(true) || marked;
    }
    return marked;
}

void psTest::parmsFromIstrm() {
    for (psParameter* parm : m_parms) parm->fromIStream();
}

// ---- texts ---------------------------------------------------------------------

psString psTest::getComment() {
    if (m_deprecated) return "deprecated";
    psString comment = m_timingComment;
    if (m_cacheIter) comment = m_cacheIter->comment() + " " + comment;
    return comment.trim();
}

psString psTest::commentOf(psResult result) {
    psString comment = getComment();
    if (comment.empty()) comment = m_tool.perfInfo();
    if (isWarning(result) && !m_tool.message().empty()) comment += " " + m_tool.message();
    return comment;
}

psString psTest::formatClocks(double clocks) {
    if (!(clocks > 0.0)) return "";
    if (clocks < 0.0001 || clocks > 10000000.0) return psFormat("%.3e", clocks);
    constexpr double limits[] = {100.0, 10.0, 1.0, 0.1, 0.01, 0.001};
    const auto* limit = std::ranges::find_if(limits, [=](double l) { return clocks >= l; });
    return psFormat("%.*f", static_cast<int>(limit - limits), clocks);
}

namespace {

// The levels beyond PERF write lines of their own while a set is measured.
bool showsCourse() {
    return g_ostrm.getOutLevel() > showResults;
}

}  // namespace

void psTest::parmsToOstrm() {
    for (psParameter* parm : m_parms) parm->toOStream(g_ostrm);
}

void psTest::putTextParms() {
    putTextParms(PERF);
}

void psTest::putTextParms(MessageLevel level) {
    g_ostrm << level << "  ";
    parmsToOstrm();
    if (showsCourse()) g_ostrm << "\n";
    g_ostrm << END;
}

void psTest::putTextResult(psResult) {
    const psString clocks = formatClocks(m_tool.funcClocks() / getDivisor());
    g_ostrm << PERF << (showsCourse() ? "  " : "") << (clocks.empty() ? psString("no") : clocks)
            << " clocks per " << getUnit() << "\n"
            << END;
}

void psTest::putTextError(psResult result) {
    if (!isWarning(result) && !isFailure(result)) return;
    g_ostrm << (isWarning(result) ? WARN : ERR) << "-- " << psResultText(result) << "\n" << END;
}

void psTest::outputResult(psResult result) {
    putTextResult(result);
    putTextError(result);
    putTableResult(result);
    putTableResult_Deprecated(result);
}

void psTest::outputConst() {
    constToOstrm();
}

void psTest::outputRegInfo() {
    if (!g_ostrm.isShown(INFO)) return;
    g_ostrm << INFO << regInfo() << "\n" << END;
}

psString psTest::timingFunctions() const {
    const std::pair<bool, const char*> available[] = {
        {m_funcLoop != nullptr, "loopMethod"}, {m_funcStat != nullptr, "statMethod"},
        {m_funcOld != nullptr, "oldMethod"},   {m_funcCall != nullptr, "funcCall"},
        {m_funcInit != nullptr, "funcInit"},
    };
    psString text;
    for (const auto& [present, name] : available) {
        if (!present) continue;
        if (!text.empty()) text += ", ";
        text += name;
    }
    return text;
}

psString psTest::timingMethod() const {
    if (m_funcOld) return "oldMethod";
    if (m_funcCall && m_tool.callMode()) return "funcCall with Set&Use";
    if (m_funcCall && !m_funcLoop && !m_funcStat) return "funcCall";
    if (!m_funcStat) return "loopMethod";
    return m_funcLoop && m_tool.method() == psTool::MANUAL ? "loopMethod" : "statMethod";
}

psString psTest::regInfo() {
    psString text = "   Test has been registered";
    if (!m_info.kind.empty()) text += " by " + m_info.kind + " macro";
    const psString functions = timingFunctions();
    if (functions.empty())
        return text + " without any function to call.\n No standard timing method is available";
    return text + " with " + functions + "." + "\n   " + timingMethod() +
           " is called for measuring.";
}

// ---- the table -------------------------------------------------------------------

void psTest::funcToCstrm() {
    g_cstrm.setNextColm(m_funcName);
}

void psTest::parmsToCstrm() {
    for (psParameter* parm : m_parms) parm->toCStream(g_cstrm);
}

void psTest::parmsNameToCstrm() {
    for (psParameter* parm : m_parms) parm->nameToCStream(g_cstrm);
}

void psTest::resultToCstrm(psResult result) {
    const double clocks = m_tool.funcClocks();
    const double mhz = psCpuTicker::exactFreq();
    const double flops = clocks > 0.0 ? mhz * getFlops() / clocks : 0.0;
    g_cstrm.setFilledColms(m_numParmsColm);
    g_cstrm.setNextColm(commentOf(result));
    g_cstrm.setNextColm(formatClocks(clocks / getDivisor()));
    g_cstrm.setNextColm(getUnit());
    g_cstrm.setNextColm(clocks > 0.0 ? psText(clocks / mhz) : psString());
    g_cstrm.setNextColm(formatClocks(flops));
    g_cstrm.setNextColm(isHotLine() ? "Hot" : "");
}

void psTest::putTableName() {
    const psTraceScope trace("putTableName");
    const auto nameLine = [this] {
        {
            const psTraceScope func("funcToCstrm");
            funcToCstrm();
        }
        {
            const psTraceScope names("parmsNameToCstrm");
            parmsNameToCstrm();
        }
        g_cstrm.setFilledColms(m_numParmsColm);
        g_cstrm.setNextColm("parmNames");
        g_cstrm.lineOut(m_numResultColm + m_numParmsColm);
    };
    if (psCStream::m_nameMode & 1) nameLine();
    if (psCStream::m_nameMode & 2) g_cstrm.writeInto(g_qstrm, nameLine);
}

void psTest::putTableParms() {
    {
        const psTraceScope func("funcToCstrm");
        funcToCstrm();
    }
    const psTraceScope parms("parmsToCstrm");
    parmsToCstrm();
}

void psTest::fillTableLine(psResult result) {
    putTableParms();
    const psTraceScope trace("resultToCstrm");
    resultToCstrm(result);
}

void psTest::putTableResult(psResult result) {
    fillTableLine(result);
    g_cstrm.lineOut(m_numResultColm + m_numParmsColm);
}

// A set whose deprecated parameters all hold deprecated values gets a second
// line, under the old names, behind the regular ones.
bool psTest::putTableResult_Deprecated(psResult result) {
    int deprecated = 0;
    int marked = 0;
    for (psParameter* parm : m_parms) {
        if (!parm->isDeprecatedParm()) continue;
        ++deprecated;
        if (parm->setDeprecatedFlag(true)) ++marked;
    }
    const bool postponed = deprecated > 0 && marked == deprecated;
    if (postponed) {
        m_deprecated = true;
        fillTableLine(result);
        g_cstrm.linePostpone();
    }
    setDeprecatedFlag(false);
    return postponed;
}
