// One line on standard error that shows how far a long run has come. It shows
// only when standard error is a terminal, and is never part of the output.
#pragma once

#include <chrono>

#include "psstring.h"

class psProgress {
  public:
    // `total`: the number of tests that will be run. One object at a time.
    explicit psProgress(int total);
    psProgress(const psProgress&) = delete;
    psProgress& operator=(const psProgress&) = delete;
    ~psProgress();

    // The next test begins.
    void startTest(const psString& function);

    // Brings the line up to date once a second, and puts it back after output
    // has taken it away; to be called between two parameter sets.
    static void refresh();

    // "test 3 of 438, zmoiCanny_16s8u_C1R, elapsed 00:00:12, remaining 00:29:00",
    // at most 79 characters. The tests before this one give the remaining time;
    // before the second test it is unknown.
    static psString line(int number, int total, const psString& function, double elapsed);

  private:
    using Clock = std::chrono::steady_clock;

    void show();
    void hide();

    int m_total;
    int m_number = 0;
    psString m_function;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_written{};
    bool m_visible = false;
    bool m_terminal;
};
