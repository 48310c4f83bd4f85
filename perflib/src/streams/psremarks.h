// What a run has to say at its very end, behind the closing box: outputs that
// are incomplete, tests that were not run, names that nothing asked for.
#pragma once

#include "psstring.h"

// One list of lines for the process, in the order in which they were added.
class psRemarks {
  public:
    // `line` without its line feed; one that is on the list already is not added
    // again. To be called at any time from the reading of the keys on.
    static void add(const psString& line);

    // Writes the lines whatever the output level is, and forgets them; the session
    // calls it when all other output has been written.
    static void print();
};
