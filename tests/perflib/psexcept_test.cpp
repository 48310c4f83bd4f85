#include "psexcept.h"

#include <stdexcept>

#include "fakes.h"
#include "psctrl87.h"
#include "unit.h"

namespace {

const char* const storage = "Illegal storage access.";
const char* const arithmetic = "FP fail, such as overflow, division by zero, invalid operation.";

// Whole runs show the faults themselves.
template <int signal>
void raised() {
    raise(signal);
}
// The fault comes with the fwait that ends the guarded region.
[[gnu::noinline]] void divideByZero87() {
    asm volatile("fld1\n\tfldz\n\tfdivrp");
}
const std::pair<void (*)(), const char*> faults[] = {{divideByZero87, arithmetic},
                                                     {raised<SIGFPE>, arithmetic},
                                                     {raised<SIGILL>, "Illegal instruction."},
                                                     {raised<SIGSEGV>, storage},
                                                     {raised<SIGBUS>, storage}};

std::string infoOf(const std::function<void()>& body) {
    try {
        psGuarded(body);
    } catch (const psException& fault) {
        return fault.info().c_str();
    }
    return "";
}

// Main runs with flush-to-zero and denormals-are-zero; every test here too.
class PsExcept : public testing::Test {
  protected:
    PsExcept() { psFpuSsx4TS(5, 0x8040, 0x8040); }
    const SavedRegisters m_registers;
};

TEST_F(PsExcept, EveryFaultComesBackAsExceptionAndKeepsTheControlWords) {
    psFpuSsx4TS(1, 0x63b, 0xf3f);  // 53 bits, rounding down, zero-divide traps
    for (int round = 0; round < 100; ++round) {
        for (const auto& [fault, info] : faults) {
            ASSERT_EQ(infoOf(fault), info);
            ASSERT_EQ(psFpuSsx4TS(6, 0, 0) & 0xffc0, 0x8040u | 0x1f80u) << info;
            ASSERT_EQ(psFpuSsx4TS(2, 0, 0) & 0xf3f, 0x63bu) << info;
            ASSERT_EQ(psFpuSsx4TS(3, 0, 0) & 0x3f, 0u) << info;
        }
    }
    // The x87 register stack is usable: eight values fit.
    asm volatile("fldz\n\tfldz\n\tfldz\n\tfldz\n\tfldz\n\tfldz\n\tfldz\n\tfldz");
    const unsigned invalid = psFpuSsx4TS(3, 0, 0) & 1;
    asm volatile("fninit");
    EXPECT_EQ(invalid, 0u);
}

TEST_F(PsExcept, OtherExceptionsPassAndDisarm) {
    EXPECT_THROW(psGuarded([] { throw std::runtime_error("mine"); }), std::runtime_error);
    EXPECT_FALSE(tsSignal::isArmed());
    EXPECT_EQ(infoOf([] {
                  try {
                      psGuarded([] { throw 1; });
                  } catch (int) {
                  }
                  raise(SIGSEGV);
              }),
              storage);
}

TEST_F(PsExcept, UnarmedSignalsEndTheProcess) {
    for (const int signal : {SIGFPE, SIGILL, SIGSEGV, SIGBUS}) {
        const auto afterARegion = [=] {
            psGuarded([] {});
            return raise(signal) == 0;
        };
        EXPECT_EQ(inChild(afterARegion), signal);
    }
}

}  // namespace
