#include "pptest.h"

#include <utility>

#include "ppbind.h"
#include "psbase.h"
#include "pscputick_gcc.h"
#include "psctable.h"
#include "psdata.h"
#include "pslib.h"

using enum MessageLevel;

bool ppTest::m_checkErrorsOnly = false;

namespace {

// The engine's own loops over the call function report through the running test.
psResult checkCurrentStatus(int status) {
    const psTest* test = psTestList::m_pCurrentTest;
    return ppTest::checkStatus(status, test ? test->funcName() : psString());
}

}  // namespace

ppTest::ppTest(FuncCall funcCall, FuncInit funcInit, FuncLoop funcLoop, FuncStat funcStat,
               const psString& funcName, const psString& fileName, const psString& info)
    : psTest(funcCall, funcInit, funcLoop, funcStat, funcName, fileName, info), m_func(funcName) {}

psResult ppTest::run() {
    m_checkErrorsOnly = false;
    m_dataComment.free();
    beginSet();
    psTool::m_pCheckStatus = checkCurrentStatus;
    return psTest::run();
}

bool ppTest::tobeRun(psConditions& conditions) {
    return psTest::tobeRun(conditions);
}

int ppTest::compareFunc(const psTest* other) const {
    return m_func.compare(ppFunc(other->funcName()));
}

psResult ppTest::checkStatus(int status, const psString& name) {
    if (status == zmoStsNoErr || (status > 0 && m_checkErrorsOnly)) return PS_OK;
    const bool failed = status < 0;
    g_ostrm << (failed ? ERR : WARN) << (failed ? "--ZMO FAIL. " : "--ZMO NOTE. ")
            << "status = " << status;
    if (!name.empty()) g_ostrm << " in " << name;
    g_ostrm << ": " << zmo_GetStatusString(status) << "\n" << END;
    const psResult result = failed ? PS_FUNCFAIL : PS_FUNCWRN;
    raiseShownResult(result);
    return result;
}

// A function that the library does not have fails its test, not the run.
void ppTest::loopData() {
    if (!ppEntryBase::isBound(funcName())) {
        g_ostrm << ERR << "-- No zmo shared object has the function " << funcName() << "\n" << END;
        raiseResult(PS_FUNCFAIL);
        return;
    }
    psTest::loopData();
}

// The same random data in every run, whatever was measured before: a set of a list sees the bytes
// that it sees alone.
void ppTest::beginSet() {
    ppVector::m_seed = 7;
}

psResult ppTest::runTiming() {
    const psResult result = psTest::runTiming();
    if (g_ostrm.isShown(INFO)) {
        const psString figure = dataFigure();
        if (!figure.empty()) g_ostrm << INFO << "    Data: " << figure << "\n" << END;
    }
    return result;
}

void ppTest::outputResult(psResult result) {
    psTest::outputResult(result);
    if (g_ostrm.isShown(INFO)) showRates();
}

void ppTest::showRates() {
    const double seconds = tool().funcClocks() / (psCpuTicker::exactFreq() * 1e6);
    if (!(seconds > 0)) return;
    double bytes = 0;
    for (const ppArgument& argument : arguments()) bytes += argument.trafficBytes();
    g_ostrm << INFO << psFormat("    items_per_second = %.4g", getDivisor() / seconds);
    if (bytes > 0) g_ostrm << psFormat(", bytes_per_second = %.4g", bytes / seconds);
    g_ostrm << "\n" << END;
}

const std::vector<ppArgument>& ppTest::arguments() {
    m_arguments.clear();
    regArguments();
    return m_arguments;
}

void ppTest::regArgument(const ppArgument& argument) {
    if (argument.rows() > 0 && argument.rowLength() > 0) m_arguments.push_back(argument);
}

const void* ppTest::callAddress() const {
    return ppEntryBase::addressOf(funcName());
}

psString ppTest::dataFigure() {
    return {};
}

void ppTest::funcToCstrm() {
    g_cstrm.setNextColm(m_func.prefix() + m_func.baseName());
    g_cstrm.setNextColm(m_func.typeName());
    g_cstrm.setNextColm(m_func.descrName());
}

bool ppTest::isFloatFunction() {
    return psTest::isFloatFunction() && (funcName().contains("32f") || funcName().contains("64f"));
}

psString ppTest::getComment() {
    psString comment = psTest::getComment();
    if (m_dataComment.empty()) return comment;
    return comment.empty() ? m_dataComment : comment + " " + m_dataComment;
}

psString ppTest::regInfo() {
    psString text = psTest::regInfo();
    const int pos = text.find("PS_");
    if (pos >= 0) text[pos + 1] = 'P';
    return text;
}

void ppTest::regCacheParm(psIterator<ZmoiSize>& size, const ppImage& image, CheckSize check) {
    regCacheSize(size, &image, std::move(check));
}

void ppTest::regCacheParm(psIterator<ZmoiSize>& size, CheckSize check) {
    regCacheSize(size, nullptr, std::move(check));
}

void ppTest::regCacheSize(psIterator<ZmoiSize>& size, const ppImage* image, CheckSize check) {
    const auto makeAnew = [this, check = std::move(check)](const ZmoiSize& value) {
        if (!check) flushData();
        beginSet();
        return check ? check(value) : initData();
    };
    regCacheParm(std::make_unique<psCacheIteratorSize>(size, image, makeAnew));
}

// ---- dump of the test data -----------------------------------------------------

int ppTest::printAllMemoryBlocks(const psString& title) {
    if (!g_ostrm.isShown(DATA)) return 0;
    const psTraceScope trace("printAllMemoryBlocks");
    g_ostrm << DATA;
    printFirstDebugLine(title);
    int number = 0;
    int size = 0;
    void* owner = nullptr;
    for (void* block = psMallocFirst(&size, &owner); block; block = psMallocNext(&size, &owner)) {
        if (!owner || psIsSubObject(owner)) continue;
        const bool plain = psIsBuffer(owner);
        auto* object = static_cast<psObject*>(psUntaggedOwner(owner));
        printFirstBlockLine(++number, plain ? nullptr : object, size);
        if (plain) {
            printByteBlock(block, size);
        } else {
            printVectorBlock(dynamic_cast<ppVector*>(object));
            ++m_vectorNum;
        }
        printLastBlockLine(number, object);
    }
    printLastDebugLine(title);
    g_ostrm << END;
    return number;
}

void ppTest::printFirstDebugLine(const psString& title) {
    g_ostrm << "======== OBJECTS OUTPUT START === " << title
            << " === OBJECTS OUTPUT START ========\n";
}

void ppTest::printLastDebugLine(const psString& title) {
    g_ostrm << "======== OBJECTS OUTPUT END === " << title << " === OBJECTS OUTPUT END ========\n";
}

void ppTest::printFirstBlockLine(int number, psObject* object, int size) {
    g_ostrm << "======== Object " << number << ": "
            << (object ? object->objectInfo() : "MemoryBlock size=" + psText(size)) << "\n";
}

void ppTest::printLastBlockLine(int, psObject*) {
    g_ostrm << "\n";
}

void ppTest::printVectorBlock(ppVector* vector) {
    if (vector) g_ostrm << vector->getString();
    g_ostrm << "\n";
}

void ppTest::printByteBlock(void* block, int size) {
    g_ostrm << ppVector::getByteString(block, size) << "\n";
}
