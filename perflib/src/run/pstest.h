// One registered test: a tested function, its timing wrappers and parameters,
// and the run over all combinations of their values.
#pragma once

#include <ctime>
#include <functional>
#include <memory>

#include "psctrl87.h"
#include "pslist.h"
#include "psresult.h"
#include "pssettings.h"
#include "psstream.h"
#include "psstring.h"
#include "pstool.h"

class psCacheIterator;
class psConditions;
class psParameter;
template <class T>
class psIterator;

// How a test was registered: "class/variant/kind", for example "TimcCanny//PP_REG".
struct psTestInfo {
    explicit psTestInfo(const psString& text);

    psString className;
    psString variant;
    psString kind;
};

class psTest {
  public:
    using FuncLoop = psResult (*)(int, long long*);
    using FuncStat = psResult (*)(int*, long long*, int);
    using FuncCall = int (*)();
    using FuncInit = int (*)();
    using FuncOld = psResult (*)(psTool&, int);

    // `fileName` is the path of the registering source; its directories are cut
    // off. Constructors run before main: they only store.
    psTest(FuncOld funcOld, const psString& funcName, const psString& fileName,
           const psString& info);
    psTest(FuncLoop funcLoop, FuncStat funcStat, const psString& funcName, const psString& fileName,
           const psString& info);
    psTest(FuncCall funcCall, FuncInit funcInit, FuncLoop funcLoop, FuncStat funcStat,
           const psString& funcName, const psString& fileName, const psString& info);
    psTest(const psTest&) = delete;
    psTest& operator=(const psTest&) = delete;
    virtual ~psTest();

    virtual bool tobeRun(psConditions& conditions);
    virtual psResult run();
    virtual int compareFunc(const psTest* other) const;

    // The dry start: lets the test name its parameters without measuring.
    void startAndStop();
    void clearParms();

    const psString& funcName() const { return m_funcName; }
    const psString& fileName() const { return m_fileName; }
    const psTestInfo& info() const { return m_info; }
    psResult result() const { return m_result; }
    std::time_t startTime() const { return m_startTime; }
    std::time_t endTime() const { return m_endTime; }
    // Of the first set that disturbed the floating-point state, else of the last.
    const psCtrlTexts& ctrlTexts() const { return m_ctrlTexts; }
    // The sets of the last run; `tried` are those that came up.
    const psSetCounts& sets() const { return m_sets; }
    // Where the last run was interrupted before its last set: the number of all
    // of them, else 0.
    long long setsWanted() const { return m_setsWanted; }
    // With -P only functions that have a section in the ini-file run.
    bool leftOut() const;
    bool badControl87() const { return m_bad87; }
    bool badControlSSX() const { return m_badSSX; }
    const psList<psParameter*>& parms() const { return m_parms; }
    psCacheIterator* cacheIter() const { return m_cacheIter.get(); }

    static psResult m_currentResult;  // worst result over the sets of the running test
    static constexpr const int& m_hot = g_settings.hot;
    static constexpr const bool& m_cache = g_settings.cache;
    static constexpr const bool& m_pressing = g_settings.pressing;
    static int m_numParmsColm;   // function and parameter columns of the table
    static int m_numResultColm;  // result columns of the table
    static int m_vectorNum;      // vectors printed in the current set

    // A result is folded into the running test's; it never gets better.
    static void raiseResult(psResult result);
    // The same, but a warning that the output level hides counts as OK.
    static void raiseShownResult(psResult result);

    static void resetAllVectors();
    static void reserveAllVectors();

  protected:
    virtual bool putTableResult_Deprecated(psResult result);
    virtual bool canStart();
    virtual void flushStart();
    virtual bool canContinue();
    // What every set starts from, before its data are made.
    virtual void beginSet();
    virtual bool initData();
    virtual void flushData();
    virtual psResult runTiming();
    virtual const void* callAddress() const;  // of the measured function
    virtual double getFlops();    // floating-point operations of one call; 0: not counted
    virtual double getDivisor();  // units (pixels, elements) of one call
    virtual psString getUnit();
    virtual void funcToCstrm();
    virtual void parmsFromIstrm();
    virtual void parmsToOstrm();
    virtual void parmsToCstrm();
    virtual void parmsNameToCstrm();
    virtual void resultToCstrm(psResult result);
    virtual void constToOstrm();
    virtual void beginTest();
    virtual void endTest();
    virtual psString getComment();
    virtual bool isFloatFunction();
    virtual bool isHotLine();
    virtual void initSettings();
    virtual int printAllMemoryBlocks(const psString& title);
    virtual psString formatClocks(double clocks);
    virtual psString regInfo();
    virtual void putTableParms();
    virtual void putTableResult(psResult result);
    virtual void putTextParms();
    virtual void putTextParms(MessageLevel level);
    virtual void loopData();
    virtual void outputResult(psResult result);
    virtual void outputConst();
    virtual void outputRegInfo();
    virtual void putTextResult(psResult result);

    // For test classes: names a parameter of the test; the last one registered
    // varies fastest.
    void regParm(psParameter& parm);
    // Takes the in-cache/out-of-cache iterator of the size parameter over; a
    // second one is ignored.
    void regCacheParm(std::unique_ptr<psCacheIterator> iterator);
    // With -C the length is varied until the owner's data (without an owner all data
    // together) fit into the cache, and then until they do not. `check` makes the
    // data of a new length and returns whether it could.
    void regCacheParm(psIterator<int>& length, const psObject* owner,
                      std::function<bool(int)> check);
    bool setDeprecatedFlag(bool on);
    void setTimingResult(double clocks, const psString& comment);

    // One call of the tested function with its arguments as they are.
    int callOnce() const { return m_funcCall(); }

    psTool& tool() { return m_tool; }
    const psTool& tool() const { return m_tool; }

  private:
    void runPhases();
    void runOneSet(bool& first);
    bool prepareSet();
    psResult measureSet();
    void repeatCalls();
    psResult checkCtrlStatus();
    // With -C: whether a call out of the cache would take too long, by what one has
    // taken in the cache; a message says so.
    bool callTooLong() const;
    void noteCall();
    psString valuesBesideSize() const;
    void finishTable();
    void runFailed(const psString& message, const psString& where);
    void openIniSection() const;
    void noteInterruption();
    void putTableName();
    void fillTableLine(psResult result);
    void putTextError(psResult result);
    psString commentOf(psResult result);
    psString timingFunctions() const;
    psString timingMethod() const;

    bool m_deprecated = false;
    std::time_t m_startTime;
    std::time_t m_endTime;
    psString m_funcName;
    psString m_fileName;
    psTestInfo m_info;
    psTool m_tool;
    psResult m_result = PS_UNDEFINED;
    FuncLoop m_funcLoop = nullptr;
    FuncStat m_funcStat = nullptr;
    FuncCall m_funcCall = nullptr;
    FuncInit m_funcInit = nullptr;
    FuncOld m_funcOld = nullptr;
    bool m_notStarted = true;
    psSetCounts m_sets;
    long long m_setsWanted = 0;
    bool m_bad87 = false;
    bool m_badSSX = false;
    psCtrlTexts m_ctrlTexts;
    psList<psParameter*> m_parms;  // not owned
    std::unique_ptr<psCacheIterator> m_cacheIter;
    bool m_cacheSizeBad = false;
    psString m_timingComment;
};
