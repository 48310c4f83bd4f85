// The timing engine: how many clocks one call of a tested function takes.
#pragma once

#include <ctime>

#include "psresult.h"
#include "pssettings.h"
#include "psstring.h"

class psTool {
  public:
    using FuncLoop = psResult (*)(int n, long long* clocks);
    using FuncStat = psResult (*)(int* n, long long* clocks, int innerLoops);
    using FuncCall = int (*)();
    using FuncInit = int (*)();
    using FuncOld = psResult (*)(psTool&, int);

    enum Method { AUTO = 0, MANUAL = 1, STATISTIC = 2, ITERATIVE = 3 };

    // Constructed before main as part of every test: touches no other object.
    psTool();
    // Forgets the last measurement; the method and its values stay.
    void reset();

    // Settings. Values are brought into range as they are set.
    void setMethodAuto() { m_method = AUTO; }
    void setMethodLoop(int n);
    void setMethodStat(int calls, long long clocks);
    void setMethodBest(int start, int stop, long long minClocks);
    bool getMethodAuto() const { return m_method == AUTO; }
    // Each fills its arguments and returns true when its method is set.
    bool getMethodLoop(int& n) const;
    bool getMethodStat(int& calls, long long& clocks) const;
    bool getMethodBest(int& start, int& stop, long long& minClocks) const;
    static void getAutoParameters(int& start, int& stop, long long& minClocks);
    // Scales the loops of the Auto method by a power of two: down for k above 0.
    void setLoopFactor(int k);
    int method() const { return m_method; }
    void setMethod(int method) { m_method = method; }
    double accuracyLimit() const { return m_accuracyLimit; }
    void setAccuracyLimit(double limit) { m_accuracyLimit = limit; }
    // Results count calls instead of loops.
    bool countCalls() const { return m_countCalls; }
    void setCountCalls(bool on) { m_countCalls = on; }
    // Set-and-use: the engine's own loops around funcCall, all vectors reset
    // before each call.
    bool callMode() const { return m_callMode; }
    void setCallMode(bool on) { m_callMode = on; }
    // funcInit once before each measurement, and retries on a bad control status.
    bool initBeforeRun() const { return m_initBeforeRun; }
    void setInitBeforeRun(bool on) { m_initBeforeRun = on; }

    // Measures with what is there of the four functions. A signal in one of them
    // leaves as psException, with guards stopped and priority restored.
    psResult timing(FuncLoop funcLoop, FuncStat funcStat, FuncCall funcCall, FuncInit funcInit);
    // For tests that drive the tool themselves and leave their clocks in it.
    psResult timing(FuncOld func);
    // Calls the function for so many seconds, or until it fails or the run is
    // interrupted, and takes no time: for a profiler or a debugger. Returns the number
    // of calls; the result is the worst of their statuses.
    long long repeat(FuncCall funcCall, FuncInit funcInit, double seconds);

    // The outcome.
    psResult result() const { return m_result; }
    double funcClocks() const { return m_funcClocks; }
    void setFuncTicks(double clocks) { m_funcClocks = clocks; }
    int numLoops() const { return m_numLoops; }
    double accuracy() const { return m_accuracy; }
    long long clocks() const { return m_clocks; }
    void setClocks(long long clocks) { m_clocks = clocks; }
    const psString& message() const { return m_message; }
    const psString& perfInfo() const { return m_perfInfo; }
    std::time_t startTime() const { return m_startTime; }
    std::time_t lastTime() const { return m_lastTime; }

    // Start and stop both floating-point guards.
    static void ctrlStart();
    static void ctrlStop();

    // The engine's loops over funcCall. Init and vector reset lie inside the
    // timed interval of the first and the reset inside that of the second.
    psResult timCall_Loop(int n, long long* clocks, bool resetVectors);
    psResult timCall_Stat(int* n, long long* clocks, bool resetVectors);

    static psString getAccuracyStr(double accuracy);
    // Values above 2^31 - 1 lose their last digits to zeros.
    static psString clockStr(long long clocks);

    static constexpr const int& m_numMilliseconds = g_settings.numMilliseconds;
    static constexpr const int& m_minNumLoops = g_settings.minNumLoops;
    static constexpr const int& m_numExtLoops = g_settings.numExtLoops;
    static constexpr const int& m_priority = g_settings.priority;
    static int m_extLoopIdx;
    static int numIntLoops;
    static int tResolution;
    static psResult (*m_pCheckStatus)(int);  // makes a result of a function's status

  private:
    enum class Next { iterate, finish, avoidBadStatus, failed };

    // Which function a run goes through: the loop; the statistic one where there
    // is one, else the loop; the statistic one or the engine's own in its place.
    enum class Use { loop, either, statistic };

    // What is asked of one run: loops, or calls at least, and the clocks that a
    // statistic function is to spend.
    struct Order {
        int loops = 0;
        Use use = Use::either;
        long long budget = 0;
    };
    // What it made, and the raw clocks that it took.
    struct Run {
        int loops = 0;
        long long clocks = 0;
        psResult code = PS_UNDEFINED;
    };

    Run runTimFunc(const Order& order);
    Run runTimFuncStat(const Order& order);
    Run callOnce(const Order& order);
    Run callAlone(const Order& order);
    Run callFunctions(const Order& order);
    int callBlock(long long block, long long& calls) const;
    void initOnce() const;
    int warmUp() const;
    void customLoopTiming();
    void statisticTiming();
    void bestTiming(int start, int maxLoops, long long minClocks);
    bool priorMeasurement(int n, int& maxLoops, long long minClocks);
    psResult startIterations(int n, long long minClocks);
    Next iterate(int startLoops, int maxLoops);
    psResult continueIterations(int startLoops, int maxLoops);
    psResult continueLoops(int startLoops, int maxLoops);
    psResult continueCalls();
    psResult repeatTiming(int loops, int count);
    void avoidBadStatus();
    void finishBest();
    void failBest(psResult code);
    bool statusDisturbed() const;
    const char* countWord() const;
    bool methodTiming();

    void updateResult(psResult code);
    psResult checked(int status) const;
    psResult internalFail(int line);
    void note(const char* label, const psString& value);
    void noteResult(psResult code) { note("result     = ", psResultWord(code)); }
    void showInfo();
    void writeInfo();
    void writeError();

    static psResult _funcLoop(int n, long long* clocks);

    psResult m_result = PS_UNDEFINED;
    double m_funcClocks = 0;
    int m_numLoops = 0;
    double m_accuracyLimit = 0.05;
    int m_method = AUTO;
    int m_manualLoops = 10;
    int m_iterStartLoops = 1;
    int m_iterStopLoops = 2048;
    bool m_countCalls = false;
    bool m_callMode = false;
    long long m_iterMinClocks = 100;
    int m_statCalls = 12;
    long long m_statClocks = 10000;
    bool m_initBeforeRun = false;
    bool m_guardCtrlStatus = false;
    psString m_message;
    psString m_perfInfo;
    long long m_clocks = 0;
    double m_accuracy = 1.0;
    int m_autoStartLoops = 0;
    int m_autoStopLoops = 0;
    std::time_t m_startTime;
    std::time_t m_lastTime;
    FuncLoop m_funcLoop = nullptr;
    FuncStat m_funcStat = nullptr;
    FuncCall m_funcCall = nullptr;
    FuncInit m_funcInit = nullptr;
    psString m_collected;  // messages on their way to the stream
};

// The settings that every test takes over before its run.
psTool& psGlobalTool();
