// The definitions of some functions as loops of one pixel after the other, for packed planes.
// plain_loops.cpp is compiled without vectors at any build type: the measure of what the library's
// own loops gain.
#pragma once

#include <cstddef>

#include "zmotypes.h"

namespace bench {

double plainNormL2(const Zmo8u* src, const Zmo8u* mask, size_t pixels);
double plainNormL2(const Zmo16u* src, const Zmo8u* mask, size_t pixels);
double plainNormL2(const Zmo32f* src, const Zmo8u* mask, size_t pixels);

double plainMean(const Zmo8u* src, const Zmo8u* mask, size_t pixels);
double plainMean(const Zmo16u* src, const Zmo8u* mask, size_t pixels);
double plainMean(const Zmo32f* src, const Zmo8u* mask, size_t pixels);

}  // namespace bench
