// The reproducible patterns that test data is filled with.
//
// Each fills n elements of the type at p, which may lie on any byte; false for
// an unknown type. The results are the same bits on every processor, but for the
// last one of a sine. Values are converted as by ppConvert: integers truncate
// and keep their low bits. Real types ignore an imaginary part.
#pragma once

#include "pptype.h"

bool ppFillConst(ppType type, void* p, int n, double re, double im);
// The same with integer arithmetic, for values that a double cannot carry.
bool ppFillConst64(ppType type, void* p, int n, long long re, long long im);

// Uniform values of [lo, hi), which is limited to the type's range; a complex
// element takes two draws. Of the generator's state only the seed goes on from
// one fill to the next, and a fill of nothing leaves it alone.
bool ppFillRandom(ppType type, void* p, int n, double lo, double hi, unsigned& seed);

// start, start + step, ... by repeated addition; a value above hi becomes start
// (wrap) or hi. Both limits are brought into the type's range. A complex element
// has the same value twice.
bool ppFillSequence(ppType type, void* p, int n, double start, double hi, double step, bool wrap);

// A chirp: sin(pi/2 * i^2 / n) * magnitude + offset, where the offset is the
// middle of an unsigned type's range and 0 for others. A complex element has the
// same value twice. A negative magnitude is refused.
bool ppFillJaehne(ppType type, void* p, int n, double magnitude);

// The round chirp of a picture: (sin(pi/2 * r^2 / height) + 1) * magnitude +
// offset about its centre. The pixel stride counts components, the row step
// bytes. With an offset the values of unsigned types run past the type's range
// and wrap.
bool ppFillPlaneJaehne(ppType type, void* p, int width, int height, int pixelStride, int rowStep,
                       double magnitude);

// Limits a magnitude to half the type's range and gives the offset that goes
// with it; false for a negative one.
bool ppJaehneMagnitude(ppType type, double& magnitude, double& offset);
