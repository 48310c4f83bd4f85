// The built-in test that describes the processor instead of measuring.
#pragma once

#include "pstest.h"

// The name is part of the listing's format.
class __psMorvaCpuTest : public psTest {  // NOLINT(bugprone-reserved-identifier)
  public:
    __psMorvaCpuTest();

    // Prints the processor's name, features and caches; always PS_OK, and no
    // line of the table.
    psResult run() override;

    static psString featureLine();
    static psString cacheLine();
};
