// The processor core that a run is bound to.
#pragma once

#include "psstring.h"

// Whether this process may run on the core.
bool psCoreAllowed(int core);
// All that it may run on, "0-3,8"; empty when the system does not tell.
psString psAllowedCores();
// Lets the process run on this core only; false when the system refuses.
bool psBindToCore(int core);
