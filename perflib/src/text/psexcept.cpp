#include "psexcept.h"

#include <array>

psString (*psException::currentName)() = nullptr;

namespace {

psString innermostName() {
    return psException::currentName ? psException::currentName() : psString();
}

}  // namespace

psException::psException(const psString& text)
    : m_info(text.substr(0, 255)), m_msg("--ZMO. Exception: " + m_info), m_where(innermostName()) {}

psException::psException(const char* signalText)
    : m_info(signalText), m_msg("--ZMO. Signal: " + m_info), m_where(innermostName()) {}

volatile std::sig_atomic_t tsSignal::m_code = 0;
sigjmp_buf* tsSignal::m_jmpbuf = nullptr;

const char* tsSignal::getInfo(int code) {
    switch (code) {
        case SIGSEGV:
        case SIGBUS:
            return "Illegal storage access.";
        case SIGFPE:
            return "FP fail, such as overflow, division by zero, invalid operation.";
        case SIGILL:
            return "Illegal instruction.";
        default:
            return "Unknown exception";
    }
}

namespace {

constexpr std::array trappedSignals{SIGFPE, SIGILL, SIGSEGV, SIGBUS};

// The frame that the kernel lays for a handler holds all vector registers, tile
// registers included: MINSIGSTKSZ is too small for it.
constexpr std::size_t alternateStackSize = 65536;

void provideAlternateStack() {
    stack_t current{};
    // A sanitizer brings its own stack and frees it at the end: keep that one.
    if (sigaltstack(nullptr, &current) == 0 && !(current.ss_flags & SS_DISABLE)) return;
    alignas(64) static std::array<char, alternateStackSize> memory;
    stack_t stack{};
    stack.ss_sp = memory.data();
    stack.ss_size = memory.size();
    sigaltstack(&stack, nullptr);
}

// Control words of the moment of arming. The kernel enters a handler with fresh
// registers, and the jump keeps those: without putting these back the first
// caught signal would switch off flush-to-zero and denormals-are-zero.
class ControlWords {
  public:
    ControlWords() { asm volatile("fnstcw %0\n\tstmxcsr %1" : "=m"(m_x87), "=m"(m_mxcsr)); }
    void restore() const {
        const unsigned mxcsr = m_mxcsr & ~exceptionFlags;
        asm volatile("fnclex\n\tfldcw %0\n\tldmxcsr %1" : : "m"(m_x87), "m"(mxcsr));
    }

  private:
    static constexpr unsigned exceptionFlags = 0x3f;
    unsigned short m_x87 = 0;
    unsigned m_mxcsr = 0;
};

}  // namespace

void tsSignal::install() {
    provideAlternateStack();
    struct sigaction action {};
    action.sa_handler = sig_fpe;
    sigemptyset(&action.sa_mask);
    // SA_NODEFER: the jump out of the handler leaves the signal unblocked, else
    // the second fault would kill the process.
    action.sa_flags = SA_ONSTACK | SA_NODEFER;
    for (const int signal : trappedSignals) sigaction(signal, &action, nullptr);
}

void tsSignal::sig_fpe(int code) {
    m_code = code;
    if (m_jmpbuf) siglongjmp(*m_jmpbuf, 1);
    std::signal(code, SIG_DFL);
    std::raise(code);
}

int psGuardedCall(void (*thunk)(void*), void* context) {
    static const bool installed = (tsSignal::install(), true);
    static_cast<void>(installed);

    // Restores the outer region on every way out, an exception of the thunk
    // included. Nothing in this frame changes after the jump point is set.
    struct Armed {
        explicit Armed(sigjmp_buf* buffer) : outer(tsSignal::m_jmpbuf) {
            tsSignal::m_jmpbuf = buffer;
        }
        Armed(const Armed&) = delete;
        Armed& operator=(const Armed&) = delete;
        ~Armed() { tsSignal::m_jmpbuf = outer; }
        sigjmp_buf* outer;
    };
    const ControlWords before;
    sigjmp_buf buffer;
    const Armed armed(&buffer);
    if (sigsetjmp(buffer, 0) == 0) {
        thunk(context);
        // An x87 fault arrives at the next waiting instruction.
        asm volatile("fwait");
        return 0;
    }
    before.restore();
    return tsSignal::m_code;
}
