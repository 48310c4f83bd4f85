// Erosion as its definition reads: for every pixel, each pixel under the mask.
#pragma once

#include "zmotypes.h"

// Packed images of one channel; the border replicates. The mask is a full square around the pixel.
void plainErode8u(const Zmo8u* src, Zmo8u* dst, ZmoiSize roi, int side);
