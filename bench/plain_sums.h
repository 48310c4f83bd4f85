// Differences, accumulation, reductions and tables of sums as loops of one pixel after the other,
// for packed planes.
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

void plainAbsDiff(const Zmo8u* src, const Zmo8u* src2, Zmo8u* dst, size_t pixels);
void plainAdd(const Zmo8u* src, Zmo32f* sums, size_t pixels);
// The tables are packed too, and have a row and a column more than src.
void plainIntegral(const Zmo8u* src, Zmo32s* table, ZmoiSize size);
void plainIntegral(const Zmo8u* src, Zmo32f* table, ZmoiSize size);
void plainIntegral(const Zmo32f* src, Zmo32f* table, ZmoiSize size);
void plainSqrIntegral(const Zmo8u* src, Zmo32s* table, Zmo32s* squares, ZmoiSize size);

}  // namespace bench
