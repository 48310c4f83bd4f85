// What is announced before main (tests, common parameters, hot functions, hooks)
// and the list that runs the tests.
#pragma once

#include <array>
#include <ctime>

#include "pslist.h"
#include "psresult.h"
#include "pssettings.h"
#include "psstring.h"

class psConditions;
class psParameter;
class psTest;
class psTool;

// All tests of the process, in registration order until they are sorted; owns them.
class psTestList : public psList<psTest*> {
  public:
    psTestList() = default;
    psTestList(const psTestList&) = delete;
    psTestList& operator=(const psTestList&) = delete;
    ~psTestList() override;

    void sortFunc();
    // Internal tests (names that begin with '_') go to the front, in their order.
    void startWithCpuTest();
    // Leaves in `commonParms` those that a test to be run uses.
    void selectCommonParms(psConditions& conditions, psList<psParameter*>& commonParms);
    // 1 when a test failed, else 0.
    int runTests(psConditions& conditions);
    void plus(psResult result);

    std::time_t startTime = 0;
    std::time_t endTime = 0;
    bool started = false;  // some selected test has the function of -F
    int numRun = 0;
    psSetCounts sets;  // of all tests
    // By result; warnings are also counted at WRN and failures at FAIL.
    std::array<int, 12> countByResult{};

    static constexpr const psString& m_startFunc = g_settings.startFunc;
    static psTest* m_pCurrentTest;

  private:
    psList<psTest*> selectTests(psConditions& conditions);
};

// True when the first test's function sorts before the second's.
bool aless(psTest*& a, psTest*& b);

// Each list is created by the first registration; absent means nobody registered.
extern psTestList* pTestList;
extern psList<psParameter*>* g_pParmList;
extern void (*s_parmFunc)();
extern psStringList* g_pHotList;
extern psStringList* g_pLibInfoList;
extern psStringList* g_pLibFuncList;
// The real paths of the shared objects that were opened.
inline psStringList* g_pLibPathList = nullptr;
extern psString* pCmdLine;
extern void (*initTimingMethod)(psTool&);
extern bool qKeys;

// All return bool so that they can initialise a file-scope variable before main.
bool psRegTest(psTest* test);             // the list owns it
bool psRegParm(psParameter& parm);        // not owned
bool psRegParmFunc(void (*func)());       // the last call wins
bool psRegCmdLine(const psString& text);  // calls accumulate
bool psRegTimingMethod(void (*func)(psTool&));
bool psRegLibInfo(const psString& text);  // false for a text that is there already
bool psRegLibFunc(const psString& name);  // false for an empty name
bool psRegHotFunction(const psString& name);
bool psRegQKeys();
