// Whole runs of a session over small tests: what is measured, in which order,
// and what the files of a run hold.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "psiterator.h"
#include "session_fixture.h"

namespace {

// "Measures" 1000 clocks for each of three sizes.
class SmallTest : public psTest {
  public:
    SmallTest(const char* function, const char* testClass)
        : psTest(static_cast<FuncOld>(nullptr), function, "perf/p_small", testClass) {}

  protected:
    void beginTest() override { regParm(m_size); }
    psResult runTiming() override {
        setTimingResult(1000.0, "");
        return outcome();
    }
    virtual psResult outcome() { return PS_OK; }
    int size() const { return m_size.value(); }

  private:
    psStepIterator<int> m_size{"size", "", {1, 2, 3}};
};

class FailingTest : public SmallTest {
  public:
    using SmallTest::SmallTest;

  protected:
    psResult outcome() override { return size() == 2 ? PS_FUNCFAIL : PS_OK; }
};

// The first two cells of every row behind the title line: "function size ...".
std::string rowsOf(const std::string& table) {
    std::string rows;
    std::size_t begin = table.find("function,Parm1");
    begin = table.find('\n', begin) + 1;
    while (begin < table.size()) {
        const std::size_t first = table.find(',', begin);
        const std::size_t second = table.find(',', first + 1);
        rows += table.substr(begin, first - begin) + table.substr(first + 1, second - first - 1);
        const std::size_t end = table.find('\n', begin);
        EXPECT_EQ(std::count(table.begin() + static_cast<std::ptrdiff_t>(begin),
                             table.begin() + static_cast<std::ptrdiff_t>(end), ','),
                  13)
            << table.substr(begin, end - begin);
        begin = end + 1;
        rows += ' ';
    }
    return rows;
}

class RunTest : public SessionTest {
  protected:
    std::string runSmall(const Words& keys) {
        psSession session;
        Words all{"-B", "-rt"};
        all.insert(all.end(), keys.begin(), keys.end());
        std::string console = run(session, all);
        release(g_ostrm);
        release(g_ustrm);
        release(g_cstrm);
        return console;
    }
    std::string rows() const { return rowsOf(readFile(m_dir + "/bin/t.csv")); }
};

TEST_F(RunTest, KeysChooseTheTestsAndTheirOrder) {
    const struct {
        Words keys;
        const char* rows;
    } cases[] = {
        {{}, "a1 a2 a3 b1 b2 b3 c1 c2 c3 "},
        {{"-s-"}, "c1 c2 c3 a1 a2 a3 b1 b2 b3 "},
        {{"-fa", "-fc"}, "a1 a2 a3 c1 c2 c3 "},
        {{"-f=b", "-d", "size=7"}, "b7 "},
        {{"-dsize=2;8;*2", "-tOne"}, "a2 a4 a8 "},
        {{"-Fb"}, "b1 b2 b3 c1 c2 c3 "},
        {{"-Fb", "-f-b"}, ""},
        {{"-fa", "-tTwo"}, ""},
        {{"-fa", "-tTwo", "-kor"}, "a1 a2 a3 b1 b2 b3 "},
        {{"-m=p_small", "-f-a"}, "b1 b2 b3 c1 c2 c3 "},
    };
    for (const auto& c : cases) {
        psRegTest(new SmallTest("c", "Three"));
        psRegTest(new SmallTest("a", "One"));
        psRegTest(new SmallTest("b", "Two"));
        const std::string console = runSmall(c.keys);
        EXPECT_EQ(rows(), c.rows) << console;
        EXPECT_EQ(m_result, 0);
    }
}

TEST_F(RunTest, AFailureEndsItsTestAndIsCounted) {
    psRegTest(new FailingTest("a", "One"));
    psRegTest(new SmallTest("b", "Two"));
    const std::string console = runSmall({"-u", "-f-__"});
    EXPECT_EQ(m_result, 1);
    EXPECT_EQ(rows(), "a1 a2 b1 b2 b3 ");
    EXPECT_NE(console.find("-- lib function fail\n"), std::string::npos) << console;
    const std::string summary = readFile(m_dir + "/bin/pscv_sum.csv");
    EXPECT_NE(summary.find("FUNCFAIL"), std::string::npos) << summary;
    EXPECT_NE(summary.find("END_DATA\n.Number of tests,2\n"), std::string::npos) << summary;
}

}  // namespace
