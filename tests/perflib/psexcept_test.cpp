#include "psexcept.h"

#include <stdexcept>

#include "fakes.h"
#include "psctrl87.h"
#include "unit.h"

namespace {

// The faults, written so that neither compiler nor sanitizer can see them.
[[gnu::noinline]] void readNull() {
    asm volatile("movl 0, %%eax" : : : "eax", "memory");
}
[[gnu::noinline]] void divideByZero() {
    int dividend = 1;
    int divisor = 0;
    asm volatile("xorl %%edx, %%edx\n\tidivl %1" : "+a"(dividend) : "r"(divisor) : "edx", "cc");
}
[[gnu::noinline]] void divideByZero87() {
    // The fault comes with the fwait that ends the guarded region.
    asm volatile("fld1\n\tfldz\n\tfdivrp");
}
[[gnu::noinline]] void illegalInstruction() {
    asm volatile("ud2");
}
[[gnu::noinline]] int overflowStack(const volatile char* previous) {
    volatile char block[4096];
    block[0] = previous[0];
    return block[0] == 'x' ? 0 : overflowStack(block) + block[0];
}

const char* const storage = "Illegal storage access.";
const char* const arithmetic = "FP fail, such as overflow, division by zero, invalid operation.";

const std::pair<void (*)(), const char*> faults[] = {
    {readNull, storage},
    {divideByZero, arithmetic},
    {divideByZero87, arithmetic},
    {illegalInstruction, "Illegal instruction."},
    {[] { raise(SIGBUS); }, storage},
#if !defined(__SANITIZE_ADDRESS__)  // which ends the process at a stack overflow
    {[] { overflowStack(""); }, storage},
#endif
};

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
                  readNull();
              }),
              storage);
}

TEST_F(PsExcept, UnarmedSignalsEndTheProcess) {
    for (const int signal : {SIGFPE, SIGILL, SIGSEGV, SIGBUS}) {
        const auto raiseIt = [=] {
            tsSignal::install();
            return raise(signal) == 0;
        };
        EXPECT_EQ(inChild(raiseIt), signal);
    }
    const auto afterARegion = [] {
        psGuarded([] {});
        illegalInstruction();
        return true;
    };
    EXPECT_EQ(inChild(afterARegion), SIGILL);
}

}  // namespace
