// Guards of the floating-point state: a known x87 control word and MXCSR before
// each measurement, and what the measured code left behind.
#pragma once

#include <memory>

#include "psresult.h"
#include "psstring.h"
#include "zmocore.h"

// All register access goes through this pointer; zmocore.h lists the operations.
// It is preset to the system's own implementation and may be set to the library's.
extern decltype(&zmoFpuSsx4TS) zmo_FpuSsx4TS;
unsigned psFpuSsx4TS(int op, unsigned value, unsigned mask);

// Exception flags and masks: the same order in the status words, in the x87
// control word (from bit 0) and in the masks of MXCSR (from bit 7).
enum psFpException : unsigned {
    PS_FP_INVALID = 0x01,
    PS_FP_DENORMAL = 0x02,
    PS_FP_ZERODIVIDE = 0x04,
    PS_FP_OVERFLOW = 0x08,
    PS_FP_UNDERFLOW = 0x10,
    PS_FP_INEXACT = 0x20,
    PS_FP_ALL = 0x3f,
};

// Operations on the x87 registers.
class ts87Base {
  public:
    ts87Base() { setDefault(); }

    void setDefault();
    unsigned getCW() const;
    unsigned getSW() const;
    void set(unsigned value, unsigned mask);
    void clear();
    void enableExceptions();
    void disableExceptions();
    // The mask is built from the status flags, not from the control word.
    void disableInexactException();

    static unsigned Exception;  // mask bits 0..5; a clear bit traps
    static unsigned Precision;
    static unsigned Rounding;
};

// Operations on MXCSR; without SSE they do nothing.
class tsSSXBase {
  public:
    tsSSXBase();

    bool isPresent() const { return m_present; }
    void setDefault();
    unsigned get() const;
    void set(unsigned value, unsigned mask);
    void reset();  // done before every start
    void clear();
    void enableExceptions();
    void disableExceptions();
    void disableInexactException();
    void destroy();

    static unsigned Exception;  // mask bits 7..12
    static unsigned FlushZero;
    static unsigned Rounding;

  private:
    bool m_present;
};

// The x87 guard. Words accumulate by OR from stop to stop until init.
class ps87 {
  public:
    static ps87& instance();

    void init();   // accumulated words 0, registers at the defaults
    void start();  // clears the flags
    void stop();   // accumulates
    void clear();  // clears the flags; the accumulated words stay
    unsigned getCW() const { return m_controlWord; }
    unsigned getSW() const { return m_statusWord; }
    psString strCW() const;
    psString strSW() const;
    bool badStatus() const;
    static void setExceptionValue(unsigned value) { ts87Base::Exception = value; }
    ts87Base& base() { return *m_base; }

  private:
    ps87() : m_base(std::make_unique<ts87Base>()) {}

    std::unique_ptr<ts87Base> m_base;
    unsigned m_controlWord = 0;
    unsigned m_statusWord = 0;
};

// The SSE guard. `clear` empties the accumulated word as well.
class psSSX {
  public:
    static psSSX& instance();

    void init();
    void start();
    void stop();
    void clear();
    unsigned get() const { return m_mxcsr; }
    psString strCW() const;
    psString strExceptionState() const;
    bool badStatus() const;
    static void setExceptionValue(unsigned value) { tsSSXBase::Exception = value; }
    tsSSXBase& base() { return *m_base; }

  private:
    psSSX() : m_base(std::make_unique<tsSSXBase>()) {}

    std::unique_ptr<tsSSXBase> m_base;
    unsigned m_mxcsr = 0;
};

// The guards' texts: control words and accumulated status of both.
struct psCtrlTexts {
    psString control87;
    psString status87;
    psString controlSSX;
    psString statusSSX;
};
psCtrlTexts psCtrlStatusTexts();

// What a test does around the measurement of one parameter set.
void psInitCtrlStatus();   // before: both guards start anew, -W applied
void psClearCtrlStatus();  // forgets what was accumulated
bool psBadCtrlStatus();
void psPrintCtrlStatus();  // both guards' texts, at level WARN
// PS_BADSTSWRN when a guard is bad, else PS_UNDEFINED. A bad guard sets its flag
// (a good one leaves it alone) and the status is printed; both are cleared.
psResult psCheckCtrlStatus(bool& bad87, bool& badSSX);
// After the measured calls the system's own arithmetic must not trap.
void psMaskExceptions();
// Flush-to-zero and denormals-are-zero on, as all measured code runs. The guards
// leave the latter alone, so a function that clears it would change every later
// measurement.
void psFlushDenormals();
// Key -W: from the next psInitCtrlStatus on everything but inexact traps.
void psSetExceptionValues();
