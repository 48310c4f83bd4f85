#include "psprogress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "psstream.h"

namespace {

constexpr int maxWidth = 79;

psProgress* s_current = nullptr;

}  // namespace

psProgress::psProgress(int total) : m_total(total), m_terminal(isatty(STDERR_FILENO) != 0) {
    if (!m_terminal) return;
    s_current = this;
    // Both streams on one screen: the line makes room for what is written there.
    if (isatty(STDOUT_FILENO) != 0) {
        o_stream::beforeConsole = [] {
            if (s_current) s_current->hide();
        };
    }
}

psProgress::~psProgress() {
    if (s_current != this) return;
    hide();
    o_stream::beforeConsole = nullptr;
    s_current = nullptr;
}

psString psProgress::line(int number, int total, const psString& function, double elapsed) {
    const int done = number - 1;
    const psString remaining =
        done > 0 ? psTimeText(elapsed / done * (total - done)) : psString("unknown");
    const psString before = psFormat("test %d of %d, ", number, total);
    const psString after = ", elapsed " + psTimeText(elapsed) + ", remaining " + remaining;
    const int room = std::max(0, maxWidth - before.length() - after.length());
    return before + function.substr(0, std::min(room, function.length())) + after;
}

void psProgress::startTest(const psString& function) {
    ++m_number;
    m_function = function;
    if (m_terminal) show();
}

void psProgress::refresh() {
    if (!s_current) return;
    const bool old = Clock::now() - s_current->m_written >= std::chrono::seconds(1);
    if (old || !s_current->m_visible) s_current->show();
}

void psProgress::show() {
    c_out.flush();
    m_written = Clock::now();
    const double elapsed = std::chrono::duration<double>(m_written - m_start).count();
    // Carriage return, text, erase to the end of the line.
    std::fprintf(stderr, "\r%s\x1b[K", line(m_number, m_total, m_function, elapsed).c_str());
    std::fflush(stderr);
    m_visible = true;
}

void psProgress::hide() {
    if (!m_visible) return;
    std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
    m_visible = false;
}
