#include "pscputick_gcc.h"

#include <sys/resource.h>

#include <cstdlib>

#include "fakes.h"
#include "pslib.h"
#include "unit.h"

namespace {

class Clock : public testing::Test {
  protected:
    ~Clock() override { zmo_GetCpuFeatures = m_features; }
    const SavedReaders m_readers{};
    const decltype(zmo_GetCpuFeatures) m_features = zmo_GetCpuFeatures;
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
    for (const bool rdtscp : {false, true}) {
        zmo_GetCpuFeatures = rdtscp ? features<true> : features<false>;
        psSelectCpuClocks(counter<1>, counter<2>, counter<3>, counter<4>);
        EXPECT_EQ(zmo_StartCpuClocks(), rdtscp ? 3 : 1);
        EXPECT_EQ(zmo_StopCpuClocks(), rdtscp ? 4 : 2);
    }
}

TEST_F(Clock, OwnReadersCount) {
    for (const bool tscp : {false, psHasRdtscp()}) {
        zmo_GetCpuFeatures = tscp ? features<true> : features<false>;
        psSelectCpuClocks(nullptr, nullptr, nullptr, nullptr);
        const long long first = zmo_StartCpuClocks();
        usleep(1000);
        EXPECT_GT(zmo_StopCpuClocks() - first, 100'000);  // 1 ms at 100 MHz
    }
}

TEST(CpuTicker, NominalFrequency) {
    const std::pair<int, int> cases[] = {{2594, 2600}, {3500, 3500}, {2600, 2600}, {3154, 3060},
                                         {3155, 3155}, {1443, 1400}, {1444, 1444}, {0, 0}};
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

TEST_F(Clock, FrequencyFromTheEnvironment) {
    const std::pair<const char*, bool> cases[] = {
        {" 2345 ", true}, {"0", false}, {"2600MHz", false}, {"100001", false}, {"", false}};
    for (const auto& [value, taken] : cases) {
        const std::string refusal =
            std::string("-- PSCV_FREQ_MHZ=\"") + value +
            "\" is ignored: it must be a whole number of MHz from 1 to 100000\n";
        const auto isReadOnce = [&, value = value, taken = taken] {
            MessageCapture out(showErrors);
            setenv("PSCV_FREQ_MHZ", value, 1);
            psCpuTicker::m_freqMHz = 0;
            psCpuTicker::given();  // what is refused is reported once
            if (psCpuTicker::given() != taken) return false;
            return taken ? psCpuTicker::getFreq() == 2345 : out.text() == refusal;
        };
        EXPECT_EQ(inChild(isReadOnce), 0) << value;
    }
}

TEST(Priority, SuperuserIsRaisedAndRestored) {
    const auto niceValue = [] { return getpriority(PRIO_PROCESS, 0); };
    const auto raised = [] { return setpriority(PRIO_PROCESS, 0, -20) == 0; };
    if (inChild(raised) != 0) GTEST_SKIP() << "this machine lets nobody here raise a priority";
    const std::pair<int, int> cases[] = {{3, 10}, {2, 0}, {1, -20}, {0, 3}, {7, 3}};
    for (const auto& [level, nice] : cases) {
        const auto isSetAndPutBack = [&, level = level, nice = nice] {
            setpriority(PRIO_PROCESS, 0, 3);
            psSetPriority(level);
            if (niceValue() != nice) return false;
            psResetPriority();
            psResetPriority();  // finds nothing to do
            return niceValue() == 3;
        };
        EXPECT_EQ(inChild(isSetAndPutBack), 0) << level;
    }
}

}  // namespace
