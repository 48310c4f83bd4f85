// What the processor can do.
#pragma once

#include "zmotypes.h"

namespace zmo {

// ZMO_CPU_ bits. Asks the processor anew each time.
Zmo64u processorFeatures();

}  // namespace zmo
