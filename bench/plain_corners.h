// Edges and corners by their definition, one pixel after the other, for packed planes and a
// replicated border.
#pragma once

#include "zmotypes.h"

namespace bench {

// Sobel derivatives of 3x3.
void plainDerivatives(const Zmo8u* src, Zmo16s* dx, Zmo16s* dy, ZmoiSize size);
// Edges by the L2 norm.
void plainCanny(const Zmo16s* dx, const Zmo16s* dy, Zmo8u* edges, ZmoiSize size, float low,
                float high);
// The window's sum is taken anew for every pixel.
void plainHarris(const Zmo16s* dx, const Zmo16s* dy, Zmo32f* dst, ZmoiSize size, int window,
                 float k);

}  // namespace bench
