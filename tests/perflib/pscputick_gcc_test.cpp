#include "pscputick_gcc.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

#include "message_capture.h"
#include "pslib.h"

namespace {

class Clock : public testing::Test {
  protected:
    void TearDown() override {
        zmo_StartCpuClocks = m_start;
        zmo_StopCpuClocks = m_stop;
        zmo_GetCpuFeatures = m_features;
    }
    psCpuClocks m_start = zmo_StartCpuClocks;
    psCpuClocks m_stop = zmo_StopCpuClocks;
    decltype(zmo_GetCpuFeatures) m_features = zmo_GetCpuFeatures;
};

template <int value>
long long counter() {
    return value;
}

template <bool rdtscp>
ZmoStatus features(Zmo64u* mask, Zmo32u leaf, Zmo32u* regs) {
    *mask = 7;
    if (regs) regs[3] = leaf == 0x80000001 && rdtscp ? 1u << 27 : 0;
    return 0;
}

TEST_F(Clock, SelectsReadersByTheProcessor) {
    zmo_GetCpuFeatures = features<true>;
    psSelectCpuClocks(counter<1>, counter<2>, counter<3>, counter<4>);
    EXPECT_EQ(zmo_StartCpuClocks(), 3);
    EXPECT_EQ(zmo_StopCpuClocks(), 4);
    zmo_GetCpuFeatures = features<false>;
    psSelectCpuClocks(counter<1>, counter<2>, counter<3>, counter<4>);
    EXPECT_EQ(zmo_StartCpuClocks(), 1);
    EXPECT_EQ(zmo_StopCpuClocks(), 2);
}

TEST_F(Clock, OwnReadersCount) {
    for (const bool tscp : {false, psHasRdtscp()}) {
        zmo_GetCpuFeatures = tscp ? features<true> : features<false>;
        psSelectCpuClocks(nullptr, nullptr, nullptr, nullptr);
        const long long first = zmo_StartCpuClocks();
        usleep(1000);
        const long long last = zmo_StopCpuClocks();
        EXPECT_GT(last - first, 100'000);  // 1 ms at 100 MHz
        EXPECT_LT(last - first, 10'000'000'000);
    }
    const long long overhead = psTimerOverhead();
    EXPECT_GE(overhead, 0);
    EXPECT_LT(overhead, 100);
}

TEST(CpuTicker, NominalFrequency) {
    const std::pair<int, int> cases[] = {{2594, 2600}, {3500, 3500}, {2600, 2600}, {3154, 3060},
                                         {3155, 3155}, {1443, 1400}, {1444, 1444}, {1850, 1800},
                                         {61, 60},     {5000, 5000}, {0, 0}};
    for (const auto& [measured, nominal] : cases)
        EXPECT_EQ(psCpuTicker::nominal(measured), nominal);
}

// A second passes with every 1000 questions; the counter runs at 2594 MHz then.
TEST_F(Clock, MeasuresTwoSeconds) {
    static long long asked;
    asked = 0;
    zmo_StartCpuClocks = [] { return asked * 2'594'000; };
    const auto now = [](std::time_t*) { return static_cast<std::time_t>(asked++ / 1000); };
    const double mhz = psCpuTicker::measure(now);
    EXPECT_NEAR(mhz, 2594.0, 6);  // the first question of a second may be late by one
    EXPECT_EQ(psCpuTicker::nominal(static_cast<int>(mhz)), 2600);
}

// The environment is read once a process, so each case gets its own.
int exitCode(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Time in which no second passes slowly: the measurement ends at once.
TEST_F(Clock, FrequencyFromTheEnvironment) {
    EXPECT_EQ(exitCode([] {
                  setenv("PSCV_FREQ_MHZ", " 2345 ", 1);
                  psCpuTicker::m_freqMHz = 0;
                  return psCpuTicker::given() && psCpuTicker::getFreq() == 2345 &&
                                 psCpuTicker::m_freqMHz == 2345
                             ? 0
                             : 1;
              }),
              0);
    for (const std::string unusable : {"fast", "0", "-5", "2600MHz", "100001", "2.6", ""}) {
        const std::string line =
            "-- PSCV_FREQ_MHZ=\"" + unusable +
            "\" is ignored: it must be a whole number of MHz from 1 to 100000\n";
        EXPECT_EQ(exitCode([&] {
                      MessageCapture out(1);
                      setenv("PSCV_FREQ_MHZ", unusable.c_str(), 1);
                      const bool given = psCpuTicker::given() || psCpuTicker::given();
                      return !given && out.text() == line ? 0 : 1;  // told once
                  }),
                  0)
            << unusable;
    }
}

int niceValue() {
    return getpriority(PRIO_PROCESS, 0);
}

TEST(Priority, SuperuserIsRaisedAndRestored) {
    if (getuid() != 0) GTEST_SKIP() << "needs the superuser";
    const std::pair<int, int> cases[] = {{3, 10}, {2, 0}, {1, -20}, {0, 3}, {7, 3}};
    for (const auto& [level, nice] : cases) {
        EXPECT_EQ(exitCode([level = level, nice = nice] {
                      setpriority(PRIO_PROCESS, 0, 3);
                      // containers may refuse to lower the value again
                      if (setpriority(PRIO_PROCESS, 0, -20) != 0) return 77;
                      setpriority(PRIO_PROCESS, 0, 3);
                      psSetPriority(level);
                      if (niceValue() != nice) return 1;
                      for (int i : {2, 3}) {  // the second reset finds nothing to do
                          psResetPriority();
                          if (niceValue() != 3) return i;
                      }
                      return 0;
                  }),
                  0)
            << level << " (77: this machine does not let the superuser raise a priority)";
    }
}

}  // namespace
