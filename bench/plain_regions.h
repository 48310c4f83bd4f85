// Distances and labels as their definitions read.
#pragma once

#include <vector>

#include "zmotypes.h"

// Packed images of one channel. Of each pixel, the nearest zero pixel: up and down each column,
// then along the row as far as a nearer one may lie. columns has a place for each pixel.
void plainTrueDistance(const Zmo8u* src, Zmo32f* dst, ZmoiSize roi, std::vector<int>& columns);
// Each component is filled from its first pixel; stack grows as it has to. Returns their number.
int plainLabels(const Zmo8u* src, Zmo32s* dst, ZmoiSize roi, int connectivity,
                std::vector<int>& stack);
