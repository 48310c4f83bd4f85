#include "pstool.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "pscputick_gcc.h"
#include "psctrl87.h"
#include "psdata.h"
#include "psexcept.h"
#include "psinterrupt.h"
#include "psstream.h"

using enum MessageLevel;

int psTool::m_extLoopIdx = 100000;
int psTool::numIntLoops = 1;
int psTool::tResolution = 4;
psResult (*psTool::m_pCheckStatus)(int) = nullptr;

namespace {

constexpr const char* sourcePath = "perflib/src/pstool.cpp";

constexpr int autoStart = 1;
constexpr int autoStop = 2048;
constexpr long long autoMinClocks = 10000;

int toInt(long long value) {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<long long>(value, Limits::min(), Limits::max()));
}

int times(int value, long long factor) {
    return toInt(value * factor);
}

// 0, which counts as no measurement, when there is nothing to divide by: with -W
// a division by zero would end the process.
double perLoop(double clocks, int loops) {
    return loops > 0 ? clocks / loops : 0;
}

int orDefault(int value, int byDefault) {
    return value == 0 ? byDefault : value;
}

// The loops needed for twice the clocks wanted, rounded up to a power of two so
// that the numbers of loops stay comparable between functions.
long long loopsFactor(long long minClocks, long long clocks) {
    constexpr long long highest = 1LL << 30;
    // No clocks wanted can be distinguished from half of all there are.
    const long long wanted = 2 * std::min(minClocks, std::numeric_limits<long long>::max() / 2);
    const long long factor = wanted / clocks;
    if (factor < 1 || factor > highest) return std::min(factor, 2 * highest);
    long long power = 1;
    while (power < factor) power *= 2;
    return power;
}

// Both guards run while a function is measured, also when a fault ends it.
class GuardScope {
  public:
    GuardScope() { psTool::ctrlStart(); }
    GuardScope(const GuardScope&) = delete;
    GuardScope& operator=(const GuardScope&) = delete;
    ~GuardScope() { psTool::ctrlStop(); }
};

}  // namespace

psTool& psGlobalTool() {
    static psTool tool;
    return tool;
}

psTool::psTool() : m_startTime(std::time(nullptr)), m_lastTime(m_startTime) {}

void psTool::reset() {
    m_result = PS_UNDEFINED;
    m_funcClocks = 0;
    m_numLoops = 0;
    m_clocks = 0;
    m_accuracy = 1.0;
    m_message.free();
    m_perfInfo.free();
    m_collected.free();
    m_funcLoop = nullptr;
    m_funcStat = nullptr;
    m_funcCall = nullptr;
    m_funcInit = nullptr;
    m_lastTime = std::time(nullptr);
}

void psTool::setMethodLoop(int n) {
    m_method = MANUAL;
    m_manualLoops = std::max(n, 1);
}

void psTool::setMethodStat(int calls, long long clocks) {
    m_method = STATISTIC;
    m_statCalls = calls;
    m_statClocks = clocks;
}

void psTool::setMethodBest(int start, int stop, long long minClocks) {
    m_method = ITERATIVE;
    m_iterStartLoops = std::max(start, 1);
    m_iterStopLoops = std::max(times(m_iterStartLoops, 8), stop);
    m_iterMinClocks = minClocks;
}

bool psTool::getMethodLoop(int& n) const {
    if (m_method != MANUAL) return false;
    n = m_manualLoops;
    return true;
}

bool psTool::getMethodStat(int& calls, long long& clocks) const {
    if (m_method != STATISTIC) return false;
    calls = m_statCalls;
    clocks = m_statClocks;
    return true;
}

bool psTool::getMethodBest(int& start, int& stop, long long& minClocks) const {
    if (m_method != ITERATIVE) return false;
    start = m_iterStartLoops;
    stop = m_iterStopLoops;
    minClocks = m_iterMinClocks;
    return true;
}

void psTool::getAutoParameters(int& start, int& stop, long long& minClocks) {
    start = autoStart;
    stop = autoStop;
    minClocks = autoMinClocks;
}

void psTool::setLoopFactor(int k) {
    const unsigned shift = (k < 0 ? 0u - static_cast<unsigned>(k) : static_cast<unsigned>(k)) & 31;
    const auto scaled = [&](unsigned loops) {
        return static_cast<int>(k < 0 ? loops << shift : loops >> shift);
    };
    m_autoStartLoops = k == 0 ? 0 : scaled(autoStart);
    m_autoStopLoops = k == 0 ? 0 : scaled(autoStop);
}

void psTool::ctrlStart() {
    ps87::instance().start();
    psSSX::instance().start();
}

void psTool::ctrlStop() {
    ps87::instance().stop();
    psSSX::instance().stop();
}

psString psTool::getAccuracyStr(double accuracy) {
    char text[18];
    const double percent = accuracy * 100;
    std::snprintf(text, sizeof text, percent < 0.1 ? "%.2f%c" : "%.1f%c", percent, '%');
    return text;
}

psString psTool::clockStr(long long clocks) {
    psString zeros;
    for (; clocks > std::numeric_limits<int>::max(); clocks /= 10) zeros += "0";
    return psText(clocks) + zeros;
}

// Messages

void psTool::note(const char* label, const psString& value) {
    m_collected += psString("        ") + label + value + "\n";
}

// A reader sees each step as it ends; otherwise the texts are kept for a failure.
void psTool::showInfo() {
    if (g_ostrm.isShown(INFO)) writeInfo();
}

void psTool::writeInfo() {
    g_ostrm << INFO << m_collected << END;
    m_collected.free();
}

void psTool::writeError() {
    const bool hidden = g_ostrm.getOutLevel() < static_cast<int>(INFO);
    g_ostrm << (hidden ? ERR : INFO) << m_collected << END;
    m_collected.free();
}

psResult psTool::internalFail(int line) {
    g_ostrm << ERR << "PS internal fail: file " << sourcePath << ", line " << line << "\n" << END;
    return PS_FAIL;
}

// Results

void psTool::updateResult(psResult code) {
    if (code <= m_result) return;
    m_result = code;
    if (code >= PS_ACCURWRN) m_message = psResultWord(code);
}

psResult psTool::checked(int status) const {
    return m_pCheckStatus ? m_pCheckStatus(status) : PS_OK;
}

bool psTool::statusDisturbed() const {
    return m_guardCtrlStatus && psBadCtrlStatus();
}

// Entry

psResult psTool::timing(FuncLoop funcLoop, FuncStat funcStat, FuncCall funcCall,
                        FuncInit funcInit) {
    reset();
    if (!funcLoop && !funcStat && !funcCall) {
        g_ostrm << ERR
                << " Internal test problem: The test cannot execute standard timing.\n"
                   " No one of funcLoop, funcStat or funcCall is registered in the test.\n"
                << END;
        updateResult(PS_FAIL);
        return m_result;
    }
    m_funcLoop = funcLoop;
    m_funcStat = funcStat;
    m_funcCall = funcCall;
    m_funcInit = funcInit;
    if (m_callMode && !m_funcCall) return m_result;
    try {
        if (!methodTiming()) methodTiming();
    } catch (...) {
        // Arithmetic of the system on the way out must not trap.
        psMaskExceptions();
        throw;
    }
    return m_result;
}

// False when the method was replaced by one that the functions allow.
bool psTool::methodTiming() {
    switch (m_method) {
        case AUTO: {
            const psTraceScope trace("autoTiming");
            bestTiming(orDefault(m_autoStartLoops, autoStart), orDefault(m_autoStopLoops, autoStop),
                       autoMinClocks);
            return true;
        }
        case MANUAL: {
            const psTraceScope trace("customLoopTiming");
            if (m_funcLoop || m_funcCall) {
                customLoopTiming();
                return true;
            }
            g_ostrm << WARN
                    << " ATTENTION! The test cannot execute Manual loop timing.\n"
                       " Statistic timing will be run instead.\n"
                    << END;
            setMethodStat(m_statCalls, 0);
            return false;
        }
        case STATISTIC: {
            const psTraceScope trace("statisticTiming");
            if (m_funcStat || m_funcCall) {
                statisticTiming();
                return true;
            }
            g_ostrm << WARN
                    << " ATTENTION! The test cannot execute Statistic timing.\n"
                       " Manual loop timing will be run instead.\n"
                    << END;
            setMethodLoop(m_statCalls);
            return false;
        }
        case ITERATIVE: {
            const psTraceScope trace("iterativeTiming");
            bestTiming(m_iterStartLoops, m_iterStopLoops, m_iterMinClocks);
            return true;
        }
        default:
            updateResult(internalFail(__LINE__));
            return true;
    }
}

namespace {

psTool* oldTool = nullptr;
psTool::FuncOld oldFunc = nullptr;

}  // namespace

psResult psTool::timing(FuncOld func) {
    oldTool = this;
    oldFunc = func;
    return timing(_funcLoop, nullptr, nullptr, nullptr);
}

psResult psTool::_funcLoop(int n, long long* clocks) {
    const psResult result = oldFunc(*oldTool, n);
    *clocks = psCpuTicker::getClockFactor() * oldTool->m_clocks;
    return result;
}

// One run

// A run that shows no clocks is made once more.
psTool::Run psTool::runTimFunc(const Order& order) {
    Run run = callOnce(order);
    if (run.clocks < 1 && m_result < PS_ACCURFAIL) run = callOnce(order);
    m_funcClocks = static_cast<double>(run.clocks);
    return run;
}

// The clocks of one call.
psTool::Run psTool::runTimFuncStat(const Order& order) {
    const Run run = callOnce(order);
    m_funcClocks = perLoop(static_cast<double>(run.clocks), run.loops);
    return run;
}

psTool::Run psTool::callOnce(const Order& order) {
    m_clocks = 0;
    const Run run = m_callMode ? callAlone(order) : callFunctions(order);
    m_clocks = run.clocks;
    m_numLoops = run.loops;
    updateResult(run.code);
    return run;
}

void psTool::initOnce() const {
    if (!m_initBeforeRun || !m_funcInit) return;
    const psTraceScope trace("initFunc call");
    psGuarded([this] { m_funcInit(); });
}

// Set-and-use: the engine's own loops, which reset the vectors.
psTool::Run psTool::callAlone(const Order& order) {
    Run run{order.loops, order.budget};
    run.code = order.use == Use::loop ? timCall_Loop(run.loops, &run.clocks, true)
                                      : timCall_Stat(&run.loops, &run.clocks, true);
    return run;
}

psTool::Run psTool::callFunctions(const Order& order) {
    initOnce();
    const psTraceScope trace("zmoFunctionCalls");
    const GuardScope guards;
    const psPriorityScope priority(m_priority);
    Run run{order.loops, order.budget};
    if (order.use != Use::loop && m_funcStat) {
        psGuarded([&] { run.code = m_funcStat(&run.loops, &run.clocks, numIntLoops); });
    } else if (order.use == Use::statistic) {
        run.code = timCall_Stat(&run.loops, &run.clocks, false);
    } else if (m_funcLoop) {
        psGuarded([&] { run.code = m_funcLoop(run.loops, &run.clocks); });
    } else if (m_funcCall) {
        run.code = timCall_Loop(run.loops, &run.clocks, false);
    } else {
        run.code = internalFail(__LINE__);
    }
    return run;
}

int psTool::warmUp() const {
    int status = 0;
    psGuarded([&] {
        if (m_funcInit) m_funcInit();
        status = m_funcCall();
    });
    return status;
}

// The status of the last call that had one; an error ends the block.
int psTool::callBlock(long long block, long long& calls) const {
    int status = 0;
    psGuarded([&] {
        for (long long i = 0; i < block && status >= 0; ++i) {
            if (m_funcInit) m_funcInit();
            if (m_callMode) psResetAllVectors();
            const int s = m_funcCall();
            if (s != 0) status = s;
            ++calls;
        }
    });
    return status;
}

long long psTool::repeat(FuncCall funcCall, FuncInit funcInit, double seconds) {
    using Clock = std::chrono::steady_clock;
    // Blocks are as long as the reading of the clock needs not to show in a profile.
    constexpr std::chrono::milliseconds shortestBlock(1);
    reset();
    updateResult(PS_OK);
    m_funcCall = funcCall;
    m_funcInit = funcInit;
    const psTraceScope trace("zmoFunctionCalls");
    const GuardScope guards;
    const psPriorityScope priority(m_priority);
    const auto begin = Clock::now();
    std::chrono::duration<double> spent{};
    long long calls = 0;
    int status = 0;
    for (long long block = 1; spent.count() < seconds && !isFailure(m_result);) {
        if (psInterrupted()) break;
        const int last = std::exchange(status, callBlock(block, calls));
        if (status != last) updateResult(checked(status));
        const auto before = std::exchange(spent, Clock::now() - begin);
        if (spent - before < shortestBlock) block *= 2;
    }
    return calls;
}

psResult psTool::timCall_Loop(int n, long long* clocks, bool resetVectors) {
    if (!m_funcCall) return internalFail(__LINE__);
    int status = warmUp();
    if (m_pCheckStatus && status < 0) {
        *clocks = 0;
        return m_pCheckStatus(status);
    }
    psGuarded([&] {
        const long long start = zmo_StartCpuClocks();
        for (int i = 0; i < n; ++i) {
            if (m_funcInit) m_funcInit();
            if (resetVectors) psResetAllVectors();
            const int s = m_funcCall();
            if (s != 0) status = s;
            if (s < 0) break;
        }
        *clocks = psCpuTicker::getClockFactor() * (zmo_StopCpuClocks() - start);
    });
    return checked(status);
}

psResult psTool::timCall_Stat(int* n, long long* clocks, bool resetVectors) {
    if (!m_funcCall) return internalFail(__LINE__);
    int status = warmUp();
    if (m_pCheckStatus && status < 0) {
        *n = 0;
        *clocks = 0;
        return m_pCheckStatus(status);
    }
    psGuarded([&] {
        const long long factor = psCpuTicker::getClockFactor();
        long long calls = 0;
        long long total = 0;
        while (calls < *n || factor * total < *clocks) {
            if (m_funcInit) m_funcInit();
            const long long start = zmo_StartCpuClocks();
            if (resetVectors) psResetAllVectors();
            m_funcCall();
            total += zmo_StopCpuClocks() - start;
            // The status that counts comes from a call that nobody times.
            const int s = m_funcCall();
            ++calls;
            if (s != 0) status = s;
            if (s < 0) break;
        }
        *n = toInt(calls);
        *clocks = factor * total;
    });
    return checked(status);
}

// Manual and Statistic

void psTool::customLoopTiming() {
    m_collected += "    Manual method: \n";
    note("numLoops   = ", psText(m_manualLoops));
    runTimFunc({m_manualLoops, Use::loop});
    m_accuracy = 0;
    m_perfInfo += "nLps=" + psText(m_manualLoops);
    note("funcClocks = ", psText(m_funcClocks));
    noteResult(m_result);
    writeInfo();
}

void psTool::statisticTiming() {
    m_collected += "    Statistical method:\n";
    note("minCalls   = ", psText(m_statCalls));
    note("maxClocks  = ", clockStr(m_statClocks));
    const int calls = runTimFuncStat({m_statCalls, Use::statistic, m_statClocks}).loops;
    m_accuracy = 0;
    m_perfInfo += "nCalls=" + psText(calls);
    note("numCalls   = ", psText(calls));
    note("funcClocks = ", psText(m_funcClocks));
    noteResult(m_result);
    writeInfo();
}

// Auto and Iterative

void psTool::bestTiming(int start, int maxLoops, long long minClocks) {
    m_guardCtrlStatus = m_initBeforeRun;
    m_countCalls = m_countCalls && (m_funcStat || m_funcCall);
    m_collected += "    Auto method: start\n";
    note("minClocks  = ", clockStr(minClocks));
    if (!priorMeasurement(start, maxLoops, minClocks)) return;

    Next next = m_numLoops < maxLoops ? Next::iterate : Next::finish;
    while (next == Next::iterate) next = iterate(times(m_numLoops, 4), maxLoops);
    if (next == Next::failed) return;
    if (next == Next::avoidBadStatus) avoidBadStatus();
    finishBest();
}

const char* psTool::countWord() const {
    return m_countCalls ? "numCalls   = " : "numLoops   = ";
}

// Finds a number of loops that takes the clocks wanted; false ends the method.
bool psTool::priorMeasurement(int n, int& maxLoops, long long minClocks) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        m_collected += "    Prior Measurement: \n";
        note(countWord(), psText(n));
        const psResult code = startIterations(n, minClocks);
        note("numClocks  = ", psText(m_clocks));
        note("funcClocks = ", psText(m_funcClocks));
        noteResult(code);
        showInfo();

        long long factor = 10;
        if (code == PS_ACCURWRN)
            factor = loopsFactor(minClocks, m_clocks);
        else if (code < PS_ACCURFAIL)
            return true;
        else if (code > PS_ACCURFAIL || attempt > 0)
            return failBest(code), false;
        if (attempt == 0) {
            n = times(n, factor);
            maxLoops = times(maxLoops, factor);
        }
    }
    return true;
}

psResult psTool::startIterations(int n, long long minClocks) {
    const Run run = runTimFunc({n, Use::loop});
    m_funcClocks = perLoop(static_cast<double>(run.clocks), n);
    if (m_result > PS_WRN) return m_result;
    if (m_funcClocks <= 0) return PS_ACCURFAIL;
    return m_funcClocks * n < static_cast<double>(minClocks) ? PS_ACCURWRN : PS_OK;
}

psTool::Next psTool::iterate(int startLoops, int maxLoops) {
    m_collected += "    Iteration Measurement: \n";
    note("startLoops = ", psText(startLoops));
    note("maxLoops   = ", psText(maxLoops));
    const psResult code = continueIterations(startLoops, maxLoops);
    note("stopLoops  = ", psText(m_numLoops));
    note("stopClocks = ", psText(m_clocks));
    note("accuracy   = ", getAccuracyStr(m_accuracy));
    note("funcClocks = ", psText(m_funcClocks));
    noteResult(code);
    showInfo();

    if (code == PS_ACCURFAIL) return failBest(PS_ACCURFAIL), Next::failed;
    if (code == PS_BADSTSWRN) {
        psPrintCtrlStatus();
        return Next::avoidBadStatus;
    }
    if (m_accuracy <= 0.01) return Next::finish;
    m_collected += "    Simple Measurements: \n";
    if (repeatTiming(m_numLoops, 3) != PS_ACCURWRN) return Next::finish;
    return m_numLoops < maxLoops ? Next::iterate : Next::finish;
}

psResult psTool::continueIterations(int startLoops, int maxLoops) {
    // The engine's own statistic loop gives totals, as a loop wrapper does.
    return m_funcStat && !m_callMode ? continueCalls() : continueLoops(startLoops, maxLoops);
}

// Doubles the loops until two results in a row agree.
psResult psTool::continueLoops(int startLoops, int maxLoops) {
    double previous = m_funcClocks;
    for (int loops = std::min(startLoops, maxLoops);;) {
        const Run run = runTimFunc({loops});
        m_funcClocks = perLoop(static_cast<double>(run.clocks), run.loops);
        if (m_funcClocks <= 0) return PS_ACCURFAIL;
        m_accuracy = 2 * std::abs(m_funcClocks - previous) / (m_funcClocks + previous);
        if (statusDisturbed()) {
            m_funcClocks = previous;
            m_numLoops /= 2;
            return PS_BADSTSWRN;
        }
        if (m_accuracy <= m_accuracyLimit) return PS_OK;
        if (m_numLoops > maxLoops / 2) return PS_ACCURWRN;
        loops = m_numLoops * 2;
        previous = m_funcClocks;
    }
}

psResult psTool::continueCalls() {
    numIntLoops = tResolution * 100 / m_funcClocks < 2 ? 1 : 100;
    const double budget = psCpuTicker::exactFreq() * 100.0 * m_numMilliseconds;
    runTimFunc({m_minNumLoops, Use::either, static_cast<long long>(budget)});
    if (m_funcClocks <= 0) return PS_ACCURFAIL;
    m_accuracy = 0;
    return statusDisturbed() ? PS_BADSTSWRN : PS_OK;
}

// The best of `count` measurements, and how far they lie apart.
psResult psTool::repeatTiming(int loops, int count) {
    std::vector<double> clocks(static_cast<std::size_t>(std::max(count, 1)));
    std::size_t first = 0;
    if (m_numLoops == loops) clocks[first++] = m_funcClocks;
    for (std::size_t i = first; i < clocks.size(); ++i) {
        if (count < 1) break;
        clocks[i] = static_cast<double>(runTimFunc({m_numLoops}).clocks);
        note(countWord(), psText(m_numLoops));
        note("numClocks  = ", psText(m_clocks));
        note("funcClocks = ", psText(m_funcClocks));
    }
    m_accuracy = 0;
    if (count >= 1) {
        double sum = 0;
        for (const double value : clocks) sum += value;
        const double mean = sum / count;
        double farthest = 0;
        for (const double value : clocks) farthest = std::max(farthest, std::abs(value - mean));
        // Clocks that are all zero agree about nothing.
        m_accuracy = mean > 0 ? farthest / mean : 1.0;
    }
    m_funcClocks = *std::ranges::min_element(clocks);

    const psResult code = statusDisturbed()              ? PS_BADSTSWRN
                          : m_accuracy > m_accuracyLimit ? PS_ACCURWRN
                                                         : PS_OK;
    note("accuracy   = ", getAccuracyStr(m_accuracy));
    note("bestClocks = ", psText(m_funcClocks));
    noteResult(code);
    showInfo();
    if (psBadCtrlStatus()) psPrintCtrlStatus();
    return code;
}

void psTool::avoidBadStatus() {
    const double limit = m_accuracyLimit;
    g_ostrm << WARN << "-- Attempting to avoid bad control status\n" << END;
    m_collected += "    Reduce loops to avoid bad ctrl status.\n    Simple Measurements: \n";
    psClearCtrlStatus();
    const psResult code = repeatTiming(m_numLoops, 6);
    if (code != PS_BADSTSWRN && m_accuracy <= 2 * limit) {
        g_ostrm << WARN << "-- Attempt is successful\n" << END;
        return;
    }
    m_collected += "    Cannot avoid bad ctrl status\n";
    g_ostrm << WARN << "-- Attempt fails: "
            << (code == PS_BADSTSWRN ? "Bad control status repeats.\n"
                                     : "Accuracy is unsatisfactory.\n")
            << END;
}

void psTool::finishBest() {
    m_perfInfo += (m_countCalls ? "nCalls=" : "nLps=") + psText(m_numLoops);
    if (m_accuracy > m_accuracyLimit) {
        const psString accuracy = getAccuracyStr(m_accuracy);
        m_perfInfo += " acc=" + accuracy;
        if (m_result < PS_ACCURWRN) {
            m_result = PS_ACCURWRN;
            m_message += "actual accuracy = " + accuracy;
        }
    }
    m_collected += "    Auto method: stop\n";
    writeInfo();
}

void psTool::failBest(psResult code) {
    updateResult(code);
    m_collected += "    Auto method: exit\n";
    writeError();
}
