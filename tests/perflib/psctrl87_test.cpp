#include "psctrl87.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

#include "fake_registers.h"
#include "message_capture.h"
#include "psexcept.h"
#include "pslib.h"

namespace {

class FakeGuards : public testing::Test {
  protected:
    void SetUp() override {
        ps87::instance();
        psSSX::instance();
        zmo_FpuSsx4TS = fakeAccess;
        fake = {};
        psInitCtrlStatus();
    }
    void TearDown() override {
        ps87::setExceptionValue(0x3b);
        psSSX::setExceptionValue(0x1f80);
        zmo_FpuSsx4TS = psFpuSsx4TS;
        psClearCtrlStatus();
        psMaskExceptions();
    }
    static void measure(unsigned status, unsigned mxcsrFlags) {
        ps87::instance().start();
        psSSX::instance().start();
        fake.status |= status;
        fake.mxcsr |= mxcsrFlags;
        ps87::instance().stop();
        psSSX::instance().stop();
    }
};

TEST_F(FakeGuards, FlagTexts) {
    const std::pair<const char*, unsigned> cases[] = {
        {"Ok", 0x00},
        {"?Invalid ", 0x01},
        {"?Denormal ", 0x02},
        {"?Zerodivide ", 0x04},
        {"?Overflow ", 0x08},
        {"?Underflow ", 0x10},
        {"_Inexact ", 0x20},
        {"?Invalid ?Denormal ?Zerodivide ?Overflow ?Underflow _Inexact ", 0x3f}};
    for (const auto& [text, flags] : cases) {
        psInitCtrlStatus();
        measure(flags, flags);
        EXPECT_STREQ(ps87::instance().strSW().c_str(), text);
        EXPECT_STREQ(psSSX::instance().strExceptionState().c_str(), text);
        const bool bad = text[0] == '?';
        EXPECT_TRUE(ps87::instance().badStatus() == bad && psSSX::instance().badStatus() == bad);
        EXPECT_EQ(psBadCtrlStatus(), bad) << text;
    }
}

TEST_F(FakeGuards, ControlTexts) {
    const std::tuple<unsigned, unsigned, const char*, const char*> cases[] = {
        {0x23b, 0x9f80, "Near 53 Invalid Denormal Overflow Underflow Inexact ",
         "Near Invalid Denormal Zerodivide Overflow Underflow Inexact FlushToZero "},
        {0x420, 0x3000, "Down 24 Inexact ", "Down Inexact NoFlushToZero "},
        {0xb00, 0xc000, "Up 64 ", "Up FlushToZero "},
        {0xd04, 0x6200, "Zero Zerodivide ", "Zero Zerodivide NoFlushToZero "},
    };
    for (const auto& [control, mxcsr, text87, textSSX] : cases) {
        psInitCtrlStatus();
        fake.control = control;
        fake.mxcsr = mxcsr;
        measure(0, 0);
        EXPECT_STREQ(ps87::instance().strCW().c_str(), text87);
        EXPECT_STREQ(psSSX::instance().strCW().c_str(), textSSX);
    }
}

TEST_F(FakeGuards, AccumulateUntilCleared) {
    measure(0x04, 0);
    measure(0x20, 0x10);
    EXPECT_STREQ(ps87::instance().strSW().c_str(), "?Zerodivide _Inexact ");
    EXPECT_STREQ(psSSX::instance().strExceptionState().c_str(), "?Underflow ");
    ps87::instance().clear();
    EXPECT_TRUE(ps87::instance().badStatus());  // the accumulated words stay
    psSSX::instance().clear();
    EXPECT_FALSE(psSSX::instance().badStatus());
    psClearCtrlStatus();
    EXPECT_FALSE(psBadCtrlStatus());
}

TEST_F(FakeGuards, CheckReportsOnceAndClears) {
    MessageCapture out(7);
    bool bad87 = false;
    bool badSSX = false;
    const struct {
        unsigned status, mxcsr;
        const char* text;
    } cases[] = {
        {0x20, 0x20, ""}, {0x01, 0, "x87 ?Invalid "}, {0, 0x08, "SSE ?Overflow "}, {0, 0, ""}};
    for (const auto& c : cases) {
        measure(c.status, c.mxcsr);
        EXPECT_EQ(psCheckCtrlStatus(bad87, badSSX), c.text[0] ? PS_BADSTSWRN : PS_UNDEFINED);
        const std::string text = out.take();
        EXPECT_EQ(text.empty(), !c.text[0]) << text;
        EXPECT_NE(text.find(c.text), std::string::npos) << text;
        EXPECT_TRUE(bad87 == (&c > cases) && badSSX == (&c > cases + 1)) << c.text;
    }
}

TEST_F(FakeGuards, UnmaskingIsBuiltFromTheFlagsAndLastsUntilMasked) {
    fake.status = 0x05;
    // set() clears the flags after they were read
    ps87::instance().base().disableInexactException();
    EXPECT_EQ(fake.control & 0x3f, 0x25u);
    psSSX::instance().base().enableExceptions();
    EXPECT_EQ(fake.mxcsr & 0x1f80, 0u);
    psSSX::instance().base().disableInexactException();
    EXPECT_EQ(fake.mxcsr & 0x1f80, 0x1000u);

    ps87::setExceptionValue(0x20);
    psSSX::setExceptionValue(0x1000);
    for (int round = 0; round < 2; ++round) {
        psInitCtrlStatus();
        measure(0, 0);
        EXPECT_STREQ(ps87::instance().strCW().c_str(), "Near 53 Inexact ");
        EXPECT_EQ(fake.mxcsr & 0x1f80, 0x1000u);
        psMaskExceptions();
        EXPECT_EQ(fake.control & 0x3f, 0x3fu);
        EXPECT_EQ(fake.mxcsr & 0x1f80, 0x1f80u);
    }
}

// The processor's registers.
class RealGuards : public testing::Test {
  protected:
    void SetUp() override {
        m_control = psFpuSsx4TS(2, 0, 0);
        m_mxcsr = psFpuSsx4TS(6, 0, 0);
    }
    void TearDown() override {
        ps87::setExceptionValue(0x3b);
        psSSX::setExceptionValue(0x1f80);
        psFpuSsx4TS(4, 0, 0);
        psFpuSsx4TS(1, m_control, 0xf3f);
        psFpuSsx4TS(5, m_mxcsr, 0xffff);
    }
    static void divide87() { asm volatile("fld1\n\tfldz\n\tfdivrp\n\tfstp %%st(0)" : : : "st"); }
    static void divideSSE() {
        volatile double zero = 0;
        volatile double quotient = 1 / zero;
        static_cast<void>(quotient);
    }

  private:
    unsigned m_control = 0;
    unsigned m_mxcsr = 0;
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

TEST_F(RealGuards, ZeroDivideTrapsInX87OnlyByDefault) {
    psInitCtrlStatus();
    EXPECT_NO_THROW(psGuarded(divideSSE));
    EXPECT_THROW(psGuarded(divide87), psException);
    psMaskExceptions();
    EXPECT_NO_THROW(psGuarded(divide87));
    ps87::instance().stop();
    psSSX::instance().stop();
    EXPECT_STREQ(ps87::instance().strSW().c_str(), "?Zerodivide ");
    psClearCtrlStatus();
    EXPECT_FALSE(psBadCtrlStatus());
}

TEST_F(RealGuards, UnmaskedSseTrapsAndIsMaskedAgain) {
    psSSX::setExceptionValue(0x1000);
    psInitCtrlStatus();
    EXPECT_THROW(psGuarded(divideSSE), psException);
    EXPECT_EQ(psFpuSsx4TS(6, 0, 0) & 0x1f80, 0x1000u);  // as it was when armed
    psMaskExceptions();
    EXPECT_NO_THROW(psGuarded(divideSSE));
}

}  // namespace
