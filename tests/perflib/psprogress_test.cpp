#include "psprogress.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "psstream.h"

namespace {

TEST(ProgressLine, TellsPositionTimesAndFunction) {
    const struct {
        int number, total;
        double elapsed;
        const char* line;
    } cases[] = {
        {1, 438, 0.9, "test 1 of 438, f, elapsed 00:00:00, remaining unknown"},
        {2, 3, 10.0, "test 2 of 3, f, elapsed 00:00:10, remaining 00:00:20"},
        {3, 3, 3725.5, "test 3 of 3, f, elapsed 01:02:05, remaining 00:31:02"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(psProgress::line(c.number, c.total, "f", c.elapsed), psString(c.line));
}

// Stands in for standard error: what is written there can be read back.
class Terminal {
  public:
    Terminal() : m_master(posix_openpt(O_RDWR | O_NOCTTY)), m_saved(dup(STDERR_FILENO)) {
        grantpt(m_master);
        unlockpt(m_master);
        const int slave = open(ptsname(m_master), O_RDWR | O_NOCTTY);
        dup2(slave, STDERR_FILENO);
        close(slave);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        dup2(m_saved, STDERR_FILENO);
        close(m_saved);
        close(m_master);
    }

    // What came since the last call; empty when nothing did.
    std::string text() const {
        fcntl(m_master, F_SETFL, O_NONBLOCK);
        char buffer[1024];
        const ssize_t size = read(m_master, buffer, sizeof buffer);
        return size > 0 ? std::string(buffer, static_cast<std::size_t>(size)) : std::string();
    }

  private:
    int m_master;
    int m_saved;
};

TEST(Progress, ShowsOneLineOnATerminalAndTakesItAwayAtTheEnd) {
    const Terminal terminal;
    const std::string erase = "\x1b[K";
    {
        psProgress progress(2);
        EXPECT_EQ(terminal.text(), "");
        progress.startTest("f");
        EXPECT_EQ(terminal.text(), "\rtest 1 of 2, f, elapsed 00:00:00, remaining unknown" + erase);
        psProgress::refresh();  // too early
        EXPECT_EQ(terminal.text(), "");
    }
    EXPECT_EQ(terminal.text(), "\r" + erase);
    psProgress::refresh();
    EXPECT_EQ(terminal.text(), "");
}

}  // namespace
