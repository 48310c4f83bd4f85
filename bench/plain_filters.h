// Filters as their definitions read: for every pixel, each weight of the mask times its pixel.
#pragma once

#include "zmotypes.h"

// Packed images of one channel; the border replicates. Weights are taps x taps, or the kernel
// 1 4 6 4 1 over 16 in both directions for the layer.
void plainFilter8u(const Zmo8u* src, Zmo8u* dst, ZmoiSize roi, const float* weights, int taps);
void plainFilter32f(const Zmo32f* src, Zmo32f* dst, ZmoiSize roi, const float* weights, int taps);
void plainFilter16s(const Zmo16s* src, Zmo16s* dst, ZmoiSize roi, const int* weights, int taps,
                    int divisor);
void plainLayerDown8u(const Zmo8u* src, Zmo8u* dst, ZmoiSize roi);
