// One line on standard error that tells how far a long run has come. It shows
// only when standard error is a terminal, and is never part of the output.
#pragma once

#include <ctime>

#include "psstring.h"

class psProgress {
  public:
    // `total`: the number of tests that will be run.
    explicit psProgress(int total);
    psProgress(const psProgress&) = delete;
    psProgress& operator=(const psProgress&) = delete;
    ~psProgress();

    // The next test begins.
    void nextTest(const psString& function);

    // Writes the line again when at least a second has passed; to be called
    // between two parameter sets, never inside a measurement.
    static void refresh();
    // Takes the line away; whoever writes to the terminal calls it before.
    static void clear();

    // "test 3 of 438  zmoiCanny_16s8u_C1R  elapsed 00:00:12  remaining 00:29:05"
    static psString line(int number, int total, const psString& function, double elapsed);

  private:
    void show();

    int m_total;
    int m_number = 0;
    psString m_function;
    std::time_t m_start;
    std::time_t m_shown = 0;
    bool m_visible = false;
    bool m_terminal;
};
