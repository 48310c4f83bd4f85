// Small tests of known behaviour: each shows one thing that a run has to cope
// with. Their functions need no library.
#include <cstdint>
#include <stdexcept>

#include "psbase.h"
#include "psdata.h"
#include "psiterator.h"
#include "pstest.h"
#include "pstiming.h"

namespace {

psResult check(int status) {
    return status == 0 ? PS_OK : status > 0 ? PS_FUNCWRN : PS_FUNCFAIL;
}

// Registers a test of class Test for a function of this file under its name.
#define HOST_TEST(Test, fn)                                    \
    psResult loop_##fn(int n, long long* clocks) {             \
        return psLoopTiming<fn, check>(n, clocks);             \
    }                                                          \
    psResult stat_##fn(int* n, long long* clocks, int inner) { \
        return psStatTiming<fn, check>(n, clocks, inner);      \
    }                                                          \
    const bool registered_##fn = psRegTest(                    \
        new Test(fn, nullptr, loop_##fn, stat_##fn, #fn, "tests/host/modules", #Test "//HOST"));

const bool withNameTables = psRegQKeys();

volatile int work = 0;

int spin(int rounds) {
    for (int i = 0; i < rounds; ++i) work = work + 1;
    return 0;
}

// ---- what is measured --------------------------------------------------------

psIterator<int> Rounds("Rounds", "", {100, 200});
psMapIterator<int> Mode("Mode", "", {{0, "plain"}, {1, "twice"}}, {0, 1});

// A test of the parameters, without data.
template <auto&... parameters>
class HostOf : public psTest {
  public:
    using psTest::psTest;

  protected:
    bool canStart() override {
        (regParm(parameters), ...);
        return true;
    }
    psString getUnit() override { return "call"; }
};
using HostPlain = HostOf<>;
using HostSets = HostOf<Rounds, Mode>;

int hostFast() {
    return spin(Rounds.value() * (1 + Mode.value()));
}
HOST_TEST(HostSets, hostFast)

int hostSlow() {
    return spin(300000);
}
HOST_TEST(HostPlain, hostSlow)

// The test's own timing function gives its clocks.
psResult ownTiming(psTool& tool, int n) {
    tool.setClocks(20000LL * n);
    return PS_DATAWRN;
}
const bool registeredOwn =
    psRegTest(new HostPlain(ownTiming, "hostOwnTiming", "tests/host/modules", "HostPlain//HOST"));

const bool registeredNone = psRegTest(
    new HostPlain(nullptr, nullptr, "hostNothing", "tests/host/modules", "HostPlain//HOST"));

// ---- failures of the function --------------------------------------------------

int hostThrow() {
    throw std::runtime_error("thrown by the function");
}
HOST_TEST(HostPlain, hostThrow)

// Leaves the invalid flag of the SSE state behind.
int hostFpState() {
    volatile double zero = 0.0;
    volatile double quotient = zero / zero;
    return quotient > 0 ? 1 : 0;
}
HOST_TEST(HostPlain, hostFpState)

// Rounds towards zero from then on and leaves flush-to-zero off.
int hostControl() {
    const std::uint32_t mxcsr = 0x7f80;
    asm volatile("ldmxcsr %0" : : "m"(mxcsr));
    return 0;
}
HOST_TEST(HostPlain, hostControl)

// ---- parameters and data -------------------------------------------------------

psIterator<int> Nothing("Nothing");
using HostEmpty = HostOf<Nothing>;
int hostEmpty() {
    return 0;
}
HOST_TEST(HostEmpty, hostEmpty)

psIterator<int> Same("Same", "", {8, 8});
using HostTwice = HostOf<Same>;
int hostTwice() {
    return spin(100);
}
HOST_TEST(HostTwice, hostTwice)

// Among its values is an old one.
struct OldValues : psIterator<int> {
    OldValues() : psIterator<int>("Level", "", {1, 2, 3}) { addDeprecated(2, "two"); }
} Level;
using HostDeprecated = HostOf<Level>;
int hostOldValues() {
    return spin(100);
}
HOST_TEST(HostDeprecated, hostOldValues)

class HostCannot : public HostPlain {
  public:
    using HostPlain::HostPlain;

  protected:
    bool canStart() override { return false; }
};
int hostCannot() {
    return 0;
}
HOST_TEST(HostCannot, hostCannot)

psIterator<int> Bytes("Bytes", "", {1000, -1000, 2000});

// The second set cannot be prepared: its size is no size.
class HostMemory : public HostOf<Bytes> {
  public:
    using HostOf::HostOf;

  protected:
    bool initData() override { return psMalloc(m_data, Bytes.value(), 0, 0) != nullptr; }
    void flushData() override {
        psFree(m_data);
        m_data = nullptr;
    }

  private:
    void* m_data = nullptr;
};
int hostMemory() {
    return spin(100);
}
HOST_TEST(HostMemory, hostMemory)

class HostUnprepared : public HostPlain {
  public:
    using HostPlain::HostPlain;

  protected:
    bool initData() override { return false; }
};
int hostUnprepared() {
    return 0;
}
HOST_TEST(HostUnprepared, hostUnprepared)

}  // namespace
