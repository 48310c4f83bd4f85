#include "psctrl87.h"

#include <xmmintrin.h>

#include <array>

#include "pslib.h"
#include "psstream.h"

using enum MessageLevel;

decltype(&zmoFpuSsx4TS) zmo_FpuSsx4TS = psFpuSsx4TS;

namespace {

// Operations of the register access.
enum FpuOp : int {
    setControl87 = 1,
    getControl87 = 2,
    getStatus87 = 3,
    clearFlags87 = 4,
    setMxcsr = 5,
    getMxcsr = 6,
    resetSSX = 7,
};

constexpr unsigned control87Fields = 0xf3f;  // masks, precision, rounding
constexpr unsigned mxcsrFields = 0xffbf;     // all but denormals-are-zero; clears the flags too
constexpr unsigned mxcsrMasks = 0x1f80;
constexpr int mxcsrMaskShift = 7;
constexpr Zmo64u featureSSE = 0x2;

unsigned fpuAccess(FpuOp op, unsigned value = 0, unsigned mask = 0) {
    return zmo_FpuSsx4TS(op, value, mask);
}

}  // namespace

unsigned psFpuSsx4TS(int op, unsigned value, unsigned mask) {
    // A reserved bit of MXCSR that is set faults.
    constexpr unsigned mxcsrBits = 0xffff;
    unsigned short word = 0;
    unsigned mxcsr = 0;
    asm volatile("fnstcw %0\n\tstmxcsr %1" : "=m"(word), "=m"(mxcsr));
    switch (op) {
        case setControl87:
            word = static_cast<unsigned short>((word & ~mask) | (value & mask));
            asm volatile("fldcw %0" : : "m"(word));
            return word;
        case getControl87:
            return word;
        case clearFlags87:
            asm volatile("fnclex");
            [[fallthrough]];
        case getStatus87:
            asm volatile("fnstsw %0" : "=m"(word));
            return word;
        case setMxcsr:
            mxcsr = (mxcsr & ~mask) | (value & mask & mxcsrBits);
            asm volatile("ldmxcsr %0" : : "m"(mxcsr));
            return mxcsr;
        case resetSSX:
            mxcsr &= ~static_cast<unsigned>(PS_FP_ALL);
            asm volatile("ldmxcsr %0" : : "m"(mxcsr));
            return mxcsr;
        case getMxcsr:
            return mxcsr;
        default:
            return 0;
    }
}

// Zero-divide traps in x87 code, everything is masked in SSE code.
unsigned ts87Base::Exception = PS_FP_ALL & ~PS_FP_ZERODIVIDE;
unsigned ts87Base::Precision = 0x200;  // 53 bits
unsigned ts87Base::Rounding = 0;       // to nearest

void ts87Base::setDefault() {
    set(Exception | Precision | Rounding, control87Fields);
}

unsigned ts87Base::getCW() const {
    return fpuAccess(getControl87);
}

unsigned ts87Base::getSW() const {
    return fpuAccess(getStatus87);
}

// Flags go first: a set flag whose mask is taken away traps at once.
void ts87Base::set(unsigned value, unsigned mask) {
    clear();
    fpuAccess(setControl87, value, mask);
}

void ts87Base::clear() {
    fpuAccess(clearFlags87);
}

void ts87Base::enableExceptions() {
    set(0, PS_FP_ALL);
}

void ts87Base::disableExceptions() {
    set(PS_FP_ALL, PS_FP_ALL);
}

void ts87Base::disableInexactException() {
    constexpr unsigned flagsButInexact = 0x1f;
    set((getSW() & flagsButInexact) + PS_FP_INEXACT, PS_FP_ALL);
}

unsigned tsSSXBase::Exception = mxcsrMasks;
unsigned tsSSXBase::FlushZero = 0x8000;
unsigned tsSSXBase::Rounding = 0;

tsSSXBase::tsSSXBase() : m_present((psProcessorFeatures() & featureSSE) != 0) {
    setDefault();
}

void tsSSXBase::setDefault() {
    set(Rounding | Exception | FlushZero, mxcsrFields);
}

unsigned tsSSXBase::get() const {
    return m_present ? fpuAccess(getMxcsr) : 0;
}

void tsSSXBase::set(unsigned value, unsigned mask) {
    if (m_present) fpuAccess(setMxcsr, value, mask);
}

void tsSSXBase::reset() {
    if (m_present) fpuAccess(resetSSX);
}

void tsSSXBase::clear() {
    set(0, PS_FP_ALL);
}

void tsSSXBase::enableExceptions() {
    set(0, mxcsrMasks);
}

void tsSSXBase::disableExceptions() {
    set(mxcsrMasks, mxcsrMasks);
}

void tsSSXBase::disableInexactException() {
    constexpr unsigned masksButInexact = 0xf80;
    set((get() & masksButInexact) + 0x1000, mxcsrMasks);
}

void tsSSXBase::destroy() {
    disableExceptions();
}

namespace {

constexpr std::array<const char*, 6> exceptionNames{"Invalid ",  "Denormal ",  "Zerodivide ",
                                                    "Overflow ", "Underflow ", "Inexact "};
constexpr std::array<const char*, 4> roundingNames{"Near ", "Down ", "Up ", "Zero "};
constexpr std::array<const char*, 4> precisionNames{"24 ", "", "53 ", "64 "};
constexpr const char* noSSX = "cpu has not SSX extension";

// "?" marks an exception that counts as bad; inexact never does.
psString flagsText(unsigned flags) {
    psString text;
    for (std::size_t i = 0; i < exceptionNames.size(); ++i) {
        const unsigned flag = 1u << i;
        if (flags & flag) text += psString(flag == PS_FP_INEXACT ? "_" : "?") + exceptionNames[i];
    }
    return text.empty() ? psString("Ok") : text;
}

psString masksText(unsigned masks) {
    psString text;
    for (std::size_t i = 0; i < exceptionNames.size(); ++i)
        if (masks & (1u << i)) text += exceptionNames[i];
    return text;
}

}  // namespace

ps87& ps87::instance() {
    static ps87 guard;
    return guard;
}

void ps87::init() {
    m_controlWord = m_statusWord = 0;
    m_base->setDefault();
}

void ps87::start() {
    m_base->clear();
}

void ps87::stop() {
    m_statusWord |= m_base->getSW();
    m_controlWord |= m_base->getCW();
}

void ps87::clear() {
    m_base->clear();
}

psString ps87::strCW() const {
    return psString(roundingNames[(m_controlWord >> 10) & 3]) +
           precisionNames[(m_controlWord >> 8) & 3] + masksText(m_controlWord);
}

psString ps87::strSW() const {
    return flagsText(m_statusWord);
}

bool ps87::badStatus() const {
    return strSW().contains("?");
}

psSSX& psSSX::instance() {
    static psSSX guard;
    return guard;
}

void psSSX::init() {
    m_mxcsr = 0;
    m_base->reset();
    m_base->setDefault();
}

void psSSX::start() {
    m_base->reset();
}

void psSSX::stop() {
    m_mxcsr |= m_base->get();
}

void psSSX::clear() {
    m_mxcsr = 0;
    m_base->reset();
    m_base->clear();
}

psString psSSX::strCW() const {
    if (!m_base->isPresent()) return noSSX;
    return psString(roundingNames[(m_mxcsr >> 13) & 3]) + masksText(m_mxcsr >> mxcsrMaskShift) +
           ((m_mxcsr & 0x8000) ? "FlushToZero " : "NoFlushToZero ");
}

psString psSSX::strExceptionState() const {
    return m_base->isPresent() ? flagsText(m_mxcsr) : psString(noSSX);
}

bool psSSX::badStatus() const {
    return strExceptionState().contains("?");
}

namespace {

bool unmaskAsked = false;  // -W

}  // namespace

void psSetExceptionValues() {
    unmaskAsked = true;
    ps87::setExceptionValue(PS_FP_INEXACT);
    psSSX::setExceptionValue(PS_FP_INEXACT << mxcsrMaskShift);
}

void psInitCtrlStatus() {
    if (unmaskAsked) psSetExceptionValues();
    ps87::instance().init();
    psSSX::instance().init();
}

void psClearCtrlStatus() {
    ps87::instance().init();
    psSSX::instance().clear();
}

bool psBadCtrlStatus() {
    return ps87::instance().badStatus() || psSSX::instance().badStatus();
}

void psPrintCtrlStatus() {
    const ps87& x87 = ps87::instance();
    const psSSX& sse = psSSX::instance();
    g_ostrm << WARN << "-- Control status: x87 " << x87.strSW() << " (control word " << x87.strCW()
            << "), SSE " << sse.strExceptionState() << " (control word " << sse.strCW() << ")\n"
            << END;
}

psCtrlTexts psCtrlStatusTexts() {
    const ps87& x87 = ps87::instance();
    const psSSX& sse = psSSX::instance();
    return {x87.strCW(), x87.strSW(), sse.strCW(), sse.strExceptionState()};
}

psResult psCheckCtrlStatus(bool& bad87, bool& badSSX) {
    const bool x87 = ps87::instance().badStatus();
    const bool sse = psSSX::instance().badStatus();
    bad87 = bad87 || x87;
    badSSX = badSSX || sse;
    const bool bad = x87 || sse;
    if (bad) psPrintCtrlStatus();
    psClearCtrlStatus();
    return bad ? PS_BADSTSWRN : PS_UNDEFINED;
}

void psMaskExceptions() {
    ps87::instance().base().disableExceptions();
    psSSX::instance().base().disableExceptions();
}

void psFlushDenormals() {
    constexpr unsigned flushToZero = 0x8000;
    constexpr unsigned denormalsAreZero = 0x0040;
    _mm_setcsr(_mm_getcsr() | flushToZero | denormalsAreZero);
}
