#include "psbase.h"

#include <algorithm>
#include <memory>

#include "pscond.h"
#include "psinterrupt.h"
#include "psiterator.h"
#include "psprogress.h"
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

psString& psTestList::m_startFunc() {
    static psString name;
    return name;
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

int psTestList::runTests(psConditions& conditions) {
    psList<psTest*> selected;
    for (psTest* test : *this) {
        if (!test->tobeRun(conditions)) continue;
        if (!m_startFunc().empty()) {
            if (!test->funcName().contains(m_startFunc())) continue;
            m_startFunc().free();
        }
        selected.push_back(test);
    }

    psProgress progress(selected.size());
    for (psTest* test : selected) {
        if (psInterrupted()) break;
        progress.startTest(test->funcName());
        m_pCurrentTest = test;
        const psResult result = test->run();
        m_pCurrentTest = nullptr;
        // A function left out by -P has no result to count.
        if (result != PS_UNDEFINED || test->result() != PS_OK) plus(result);
    }
    return countByResult[PS_FAIL] != 0 ? 1 : 0;
}
