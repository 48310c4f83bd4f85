// Optical flow as its definition reads, each pixel of a window interpolated on its own.
#pragma once

#include "zmotypes.h"

// Layers of one channel; `to` holds where to start and becomes where the point is found.
void plainFlow(const ZmoiPyramidLevels& first, const ZmoiPyramidLevels& second, ZmoiPoint32f from,
               ZmoiPoint32f& to, int window, int maxLevel, int maxIterations, Zmo32f epsilon);
