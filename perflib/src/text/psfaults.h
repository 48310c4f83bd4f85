// What went wrong in a run, by kind: --strict makes its exit status of it.
#pragma once

#include "psstring.h"

enum class psFault {
    key,     // a long key that cannot be used: nothing is run
    start,   // what a run needs is missing: it did not begin
    test,    // a test that failed
    set,     // a set of values whose data could not be prepared
    input,   // a value, word or name that was refused, or that nothing asked for
    output,  // an output that is incomplete
};

// Counts for the process. Whatever finds a fault tells the user by itself.
class psFaults {
  public:
    static void count(psFault fault, int times = 1);
    // The same fault, by its text, counts once however often it is met.
    static void countOnce(psFault fault, const psString& text);
    static int counted(psFault fault);
    static void clear();

    // 2 when the run could not begin, 1 when something went wrong in it; without
    // --strict only a key of the kind above has an effect, everything else is 0.
    static int exitStatus();
    // What makes a status of 1, "2 tests failed, ..."; empty when nothing does.
    static psString text();
};
