#include "psctrl87.h"

#include "fakes.h"
#include "psexcept.h"
#include "pslib.h"
#include "unit.h"

namespace {

class FakeGuards : public testing::Test {
  protected:
    FakeGuards() {
        zmo_FpuSsx4TS = fakeAccess;
        fake = {};
        psInitCtrlStatus();
    }
    ~FakeGuards() override {
        ps87::setExceptionValue(0x3b);
        psSSX::setExceptionValue(0x1f80);
        zmo_FpuSsx4TS = psFpuSsx4TS;
        psClearCtrlStatus();
        psMaskExceptions();
    }
    void measure(unsigned status, unsigned mxcsrFlags) {
        x87.start();
        sse.start();
        fake.status |= status;
        fake.mxcsr |= mxcsrFlags;
        x87.stop();
        sse.stop();
    }
    ps87& x87 = ps87::instance();
    psSSX& sse = psSSX::instance();
};

TEST_F(FakeGuards, TextsOfFlagsAndControlWords) {
    const std::pair<const char*, unsigned> flags[] = {
        {"Ok", 0x00},
        {"_Inexact ", 0x20},
        {"?Underflow _Inexact ", 0x30},
        {"?Invalid ?Denormal ?Zerodivide ?Overflow ?Underflow _Inexact ", 0x3f}};
    for (const auto& [text, set] : flags) {
        psInitCtrlStatus();
        measure(set, set);
        EXPECT_EQ(x87.strSW(), text);
        EXPECT_EQ(sse.strExceptionState(), text);
        const bool bad = text[0] == '?';
        EXPECT_TRUE(x87.badStatus() == bad && sse.badStatus() == bad) << text;
        EXPECT_EQ(psBadCtrlStatus(), bad) << text;
    }
    const std::tuple<unsigned, unsigned, const char*, const char*> words[] = {
        {0x23b, 0x9f80, "Near 53 Invalid Denormal Overflow Underflow Inexact ",
         "Near Invalid Denormal Zerodivide Overflow Underflow Inexact FlushToZero "},
        {0x420, 0x3000, "Down 24 Inexact ", "Down Inexact NoFlushToZero "},
        {0xb00, 0xc000, "Up 64 ", "Up FlushToZero "},
        {0xd04, 0x6200, "Zero Zerodivide ", "Zero Zerodivide NoFlushToZero "}};
    for (const auto& [control, mxcsr, text87, textSSX] : words) {
        psInitCtrlStatus();
        fake.control = control;
        fake.mxcsr = mxcsr;
        measure(0, 0);
        EXPECT_EQ(x87.strCW(), text87);
        EXPECT_EQ(sse.strCW(), textSSX);
    }
}

TEST_F(FakeGuards, AccumulateUntilCleared) {
    measure(0x04, 0);
    measure(0x20, 0x10);
    EXPECT_EQ(x87.strSW() + sse.strExceptionState(), "?Zerodivide _Inexact ?Underflow ");
    x87.clear();
    sse.clear();
    EXPECT_TRUE(x87.badStatus() && !sse.badStatus()) << "the accumulated words of the first stay";
    psClearCtrlStatus();
    EXPECT_FALSE(psBadCtrlStatus());
}

TEST_F(FakeGuards, CheckReportsOnceAndClears) {
    MessageCapture out(showResults);
    bool bad87 = false, badSSX = false;
    const std::tuple<unsigned, unsigned, const char*, int> cases[] = {
        // flags, what is said, and how many of the two have been bad by then
        {0x20, 0x20, "", 0},
        {0x01, 0, "x87 ?Invalid ", 1},
        {0, 0x08, "SSE ?Overflow ", 2},
        {0, 0, "", 2}};
    for (const auto& [status, mxcsr, text, bad] : cases) {
        measure(status, mxcsr);
        EXPECT_EQ(psCheckCtrlStatus(bad87, badSSX), *text ? PS_BADSTSWRN : PS_UNDEFINED);
        const std::string said = out.take();
        EXPECT_TRUE(has(said, text) && said.empty() == !*text) << said;
        EXPECT_TRUE(bad87 == (bad > 0) && badSSX == (bad > 1)) << text;
    }
}

TEST_F(FakeGuards, UnmaskingIsBuiltFromTheFlagsAndLastsUntilMasked) {
    fake.status = 0x05;
    // set() clears the flags after they were read
    x87.base().disableInexactException();
    EXPECT_EQ(fake.control & 0x3f, 0x25u);
    sse.base().enableExceptions();
    EXPECT_EQ(fake.mxcsr & 0x1f80, 0u);
    sse.base().disableInexactException();
    EXPECT_EQ(fake.mxcsr & 0x1f80, 0x1000u);

    ps87::setExceptionValue(0x20);
    psSSX::setExceptionValue(0x1000);
    for (int round = 0; round < 2; ++round) {
        psInitCtrlStatus();
        measure(0, 0);
        EXPECT_EQ(x87.strCW(), "Near 53 Inexact ");
        EXPECT_EQ(fake.mxcsr & 0x1f80, 0x1000u);
        psMaskExceptions();
        EXPECT_EQ(fake.control & 0x3f, 0x3fu);
        EXPECT_EQ(fake.mxcsr & 0x1f80, 0x1f80u);
    }
}

// The guards on the processor's own registers.
class RealGuards : public testing::Test {
  protected:
    ~RealGuards() override {
        ps87::setExceptionValue(0x3b);
        psSSX::setExceptionValue(0x1f80);
    }
    static void divide87() { asm volatile("fld1\n\tfldz\n\tfdivrp\n\tfstp %%st(0)" : : : "st"); }
    static void divideSSE() {
        volatile double zero = 0;
        volatile double quotient = 1 / zero;
        static_cast<void>(quotient);
    }
    const SavedRegisters m_registers{};
};

TEST_F(RealGuards, OwnAccessKeepsReservedBits) {
    EXPECT_EQ(psFpuSsx4TS(1, 0xc00, 0xc00) & 0xc00, 0xc00u);
    EXPECT_EQ(psFpuSsx4TS(2, 0, 0) & 0xc00, 0xc00u);
    EXPECT_EQ(psFpuSsx4TS(1, 0, 0xc00) & 0xc00, 0u);
    EXPECT_EQ(psFpuSsx4TS(5, 0xffffffff, 0xffff8000) & 0xffff8000, 0x8000u);
    divideSSE();
    EXPECT_EQ(psFpuSsx4TS(6, 0, 0) & 0x3f, 4u);
    EXPECT_EQ(psFpuSsx4TS(7, 0, 0) & 0x3f, 0u);
}

TEST_F(RealGuards, ZeroDivideTrapsWhereItIsUnmaskedUntilMasked) {
    for (const bool sse : {false, true}) {
        if (sse) psSSX::setExceptionValue(0x1000);
        const auto trapping = sse ? divideSSE : divide87;
        psInitCtrlStatus();
        if (!sse) psGuarded(divideSSE);
        EXPECT_THROW(psGuarded(trapping), psException);
        EXPECT_EQ(psFpuSsx4TS(6, 0, 0) & 0x1f80, sse ? 0x1000u : 0x1f80u);  // as it was when armed
        psMaskExceptions();
        EXPECT_NO_THROW(psGuarded(trapping));
    }
    ps87::instance().stop();
    psSSX::instance().stop();
    EXPECT_TRUE(psBadCtrlStatus());
    psClearCtrlStatus();
    EXPECT_FALSE(psBadCtrlStatus());
}

}  // namespace
