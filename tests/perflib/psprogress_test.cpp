#include "psprogress.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "psstream.h"
#include "unit.h"

namespace {

TEST(ProgressLine, SaysPositionTimesAndFunction) {
    const std::tuple<int, int, double, const char*> cases[] = {
        {1, 438, 0.9, "test 1 of 438, f, elapsed 00:00:00, remaining unknown"},
        {2, 3, 10.0, "test 2 of 3, f, elapsed 00:00:10, remaining 00:00:20"},
        {3, 3, 3725.5, "test 3 of 3, f, elapsed 01:02:05, remaining 00:31:02"}};
    for (const auto& [number, total, elapsed, line] : cases)
        EXPECT_EQ(psProgress::line(number, total, "f", elapsed), line);
}

// Stands in for standard error: what is written there can be read back.
struct Terminal {
    Terminal() {
        grantpt(master);
        unlockpt(master);
        const int slave = open(ptsname(master), O_RDWR | O_NOCTTY);
        dup2(slave, STDERR_FILENO);
        close(slave);
        fcntl(master, F_SETFL, O_NONBLOCK);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() {
        dup2(saved, STDERR_FILENO);
        close(saved);
        close(master);
    }
    // What came since the last call; empty when nothing did.
    std::string text() const {
        char buffer[1024];
        return {buffer, static_cast<std::size_t>(
                            std::max<ssize_t>(read(master, buffer, sizeof buffer), 0))};
    }

    const int master = posix_openpt(O_RDWR | O_NOCTTY), saved = dup(STDERR_FILENO);
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
