// Corners, lines and their suppression as their definitions read, one pixel after the other.
#pragma once

#include <vector>

#include "zmotypes.h"

// Packed images of one channel.
void plainFastN(const Zmo8u* src, Zmo8u* dst, ZmoiSize roi, int n, int threshold);
void plainLineSuppression(const Zmo8u* src, const Zmo8u* responses, Zmo8u* dst, ZmoiSize roi,
                          int radius, int threshold);
// Votes of lines with rho from -distances / 2 on, a pixel apart, and theta from 0 on: of each angle
// all distances.
void plainHoughVotes(const Zmo8u* src, ZmoiSize roi, int angles, double step, int distances,
                     std::vector<int>& votes);
