// The exception of the system, and the trap that turns hardware faults into it.
#pragma once

#include <csetjmp>
#include <csignal>
#include <exception>
#include <memory>

#include "psstring.h"

// Carries internal faults (built from a psString) and hardware signals (built
// from a C string by psGuarded; nothing else uses that form).
class psException : public std::exception {
  public:
    explicit psException(const psString& text);
    explicit psException(const char* signalText);

    // The line to print, without a line end.
    const psString& msg() const { return m_msg; }
    // The bare text; at most 255 characters of an internal fault's.
    const psString& info() const { return m_info; }
    // The innermost traced operation when the exception was made.
    const psString& where() const { return m_where; }
    const char* what() const noexcept override { return m_msg.c_str(); }

    // Names the innermost traced operation. This floor lies below the tracer, so
    // the session sets it; unset means no name.
    static psString (*currentName)();

  private:
    psString m_info;
    psString m_msg;
    psString m_where;
};

// SIGFPE, SIGILL, SIGSEGV and SIGBUS inside an armed region jump back to the
// frame that armed it; outside of any they end the process as they would without
// the trap. Single-threaded: the armed region is process-wide.
class tsSignal {
  public:
    // Installs the handlers and an alternate stack, without which a stack
    // overflow cannot be handled. Arming does it on first use.
    static void install();

    static volatile std::sig_atomic_t m_code;  // the last signal
    static const char* getInfo() { return getInfo(m_code); }
    static const char* getInfo(int code);
    static bool isArmed() { return m_jmpbuf != nullptr; }

  private:
    friend int psGuardedCall(void (*)(void*), void*);
    static void sig_fpe(int code);

    static sigjmp_buf* m_jmpbuf;  // of the innermost armed region
};

// Runs thunk(context) with the trap armed and returns 0, or the number of the
// signal that ended it. After a signal the x87 control word and MXCSR are those
// of the moment of arming, with their exception flags clear. What lies on the
// stack between here and the fault is dropped without destructors.
[[gnu::noinline]] int psGuardedCall(void (*thunk)(void*), void* context);

// Runs f with the trap armed; a signal leaves as psException, thrown when the
// armed frame is gone. Nests. Results of f must go to memory outside of f.
template <class F>
void psGuarded(F&& f) {
    auto* body = std::addressof(f);
    const int signal = psGuardedCall([](void* p) { (**static_cast<decltype(body)*>(p))(); }, &body);
    if (signal != 0) throw psException(tsSignal::getInfo(signal));
}
