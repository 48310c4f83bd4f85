#include "psbase.h"

#include <algorithm>
#include <memory>

#include "pscond.h"
#include "psfaults.h"
#include "psinterrupt.h"
#include "psiterator.h"
#include "psprogress.h"
#include "psremarks.h"
#include "pstest.h"

psTestList* pTestList = nullptr;
psList<psParameter*>* g_pParmList = nullptr;
void (*s_parmFunc)() = nullptr;
psStringList* g_pHotList = nullptr;
psStringList* g_pLibInfoList = nullptr;
psStringList* g_pLibFuncList = nullptr;
psString* pCmdLine = nullptr;
void (*initTimingMethod)(psTool&) = nullptr;
bool qKeys = false;

psTest* psTestList::m_pCurrentTest = nullptr;

namespace {

// Registration runs before main: a list comes into being with its first entry.
template <class List>
List& made(List*& list) {
    if (!list) list = new List;
    return *list;
}

bool isInternal(const psTest* test) {
    return test->funcName().startsWith("_");
}

psString counted(int count, const char* one, const char* many) {
    return psText(count) + " " + (count == 1 ? one : many);
}

// The common parameter that an entry of a test's record stands for.
const psParameter* commonOf(psParameter* parm) {
    const auto* cache = dynamic_cast<const psCacheIterator*>(parm);
    return cache ? &cache->parm() : parm;
}

}  // namespace

bool psRegTest(psTest* test) {
    made(pTestList).push_back(test);
    return true;
}

bool psRegParm(psParameter& parm) {
    made(g_pParmList).push_back(&parm);
    return true;
}

bool psRegParmFunc(void (*func)()) {
    s_parmFunc = func;
    return true;
}

bool psRegCmdLine(const psString& text) {
    made(pCmdLine) += " " + text;
    return true;
}

bool psRegTimingMethod(void (*func)(psTool&)) {
    initTimingMethod = func;
    return true;
}

bool psRegLibInfo(const psString& text) {
    if (made(g_pLibInfoList).contains(text)) return false;
    g_pLibInfoList->push_back(text);
    return true;
}

bool psRegLibFunc(const psString& name) {
    if (name.empty()) return false;
    made(g_pLibFuncList).push_back(name);
    return true;
}

bool psRegHotFunction(const psString& name) {
    made(g_pHotList).push_back(name);
    return true;
}

bool psRegQKeys() {
    qKeys = true;
    return true;
}

psTestList::~psTestList() {
    for (psTest* test : *this) delete test;
}

bool aless(psTest*& a, psTest*& b) {
    return a && b && a->compareFunc(b) < 0;
}

void psTestList::sortFunc() {
    sort(aless);
}

void psTestList::startWithCpuTest() {
    if (empty()) return;
    const iterator front = begin();
    if (isInternal(*front)) return;
    for (iterator pos = std::next(front); pos != end();) {
        if (isInternal(*pos)) {
            insert(front, *pos);
            pos = erase(pos);
        } else {
            ++pos;
        }
    }
}

void psTestList::selectCommonParms(psConditions& conditions, psList<psParameter*>& commonParms) {
    psList<const psParameter*> used;
    for (psTest* test : *this) {
        if (used.size() == commonParms.size()) break;
        if (!test->tobeRun(conditions)) continue;
        test->startAndStop();
        for (psParameter* parm : test->parms()) {
            const psParameter* common = commonOf(parm);
            if (std::ranges::find(commonParms, common) != commonParms.end() &&
                std::ranges::find(used, common) == used.end())
                used.push_back(common);
        }
        test->clearParms();
    }
    for (auto pos = commonParms.begin(); pos != commonParms.end();)
        pos = std::ranges::find(used, *pos) == used.end() ? commonParms.erase(pos) : std::next(pos);
}

void psTestList::plus(psResult result) {
    ++numRun;
    ++countByResult[static_cast<std::size_t>(result)];
    if (result >= PS_ACCURWRN && result < PS_WRN) ++countByResult[PS_WRN];
    if (result >= PS_ACCURFAIL && result < PS_FAIL) ++countByResult[PS_FAIL];
}

// A function that -P leaves out is not run; its test has nothing to count.
psList<psTest*> psTestList::selectTests(psConditions& conditions) {
    psList<psTest*> selected;
    for (psTest* test : *this) {
        if (!test->tobeRun(conditions)) continue;
        started = started || test->funcName().contains(m_startFunc);
        if (!started) continue;
        if (!test->leftOut()) selected.push_back(test);
    }
    return selected;
}

int psTestList::runTests(psConditions& conditions) {
    const psList<psTest*> selected = selectTests(conditions);
    int testsUnprepared = 0;
    int notRun = selected.size();
    psProgress progress(notRun);
    for (psTest* test : selected) {
        if (psInterrupted()) break;
        --notRun;
        progress.startTest(test->funcName());
        m_pCurrentTest = test;
        plus(test->run());
        m_pCurrentTest = nullptr;
        sets += test->sets();
        if (test->sets().unprepared > 0) ++testsUnprepared;
    }
    psFaults::count(psFault::test, countByResult[PS_FAIL]);
    psFaults::count(psFault::set, sets.unprepared);
    if (psInterrupted())
        psRemarks::add(psString("Interrupted by ") + psInterruptName() + ": " +
                       counted(notRun, "test was", "tests were") + " not run");
    if (testsUnprepared > 0)
        psRemarks::add(psText(sets.unprepared) + " of " + counted(sets.tried, "set", "sets") +
                       " could not be prepared, in " + psText(testsUnprepared) + " of " +
                       counted(numRun, "test", "tests"));
    return countByResult[PS_FAIL] != 0 ? 1 : 0;
}
