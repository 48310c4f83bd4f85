// Fixed masks, in single precision, which is exact for pixels of 8 bits.
#pragma once

#include "border.h"

namespace oracle {

enum class Along { smooth, first, second, scharr };
enum class Mask { vert, horiz, cross, laplacian, lowpass, scharrVert, scharrHoriz };

// Weights along x and along y.
struct Pair {
    Along x;
    Along y;
};
inline Pair pairOf(Mask mask) {
    static constexpr Pair pairs[] = {{Along::first, Along::smooth},  {Along::smooth, Along::first},
                                     {Along::first, Along::first},   {Along::second, Along::smooth},
                                     {Along::smooth, Along::smooth}, {Along::first, Along::scharr},
                                     {Along::scharr, Along::first}};
    return pairs[static_cast<size_t>(mask)];
}

// v[0] to v[2 radius] in the order of the header.
inline float weigh(Along along, const float* v, int radius) {
    const float ends = v[0] + v[2 * radius];
    const float centre = v[radius];
    switch (along) {
        case Along::first:
            if (radius == 1) return v[2] - v[0];
            return (v[4] - v[0]) + 2 * (v[3] - v[1]);
        case Along::second:
            return ends - 2 * centre;
        case Along::scharr:
            return 3 * ends + 10 * centre;
        default:
            if (radius == 1) return ends + 2 * centre;
            return (ends + 4 * (v[1] + v[3])) + 6 * centre;
    }
}

inline float columnsThenRow(const Extended& a, int x, int y, int radius, Pair pair) {
    float along[5] = {};
    for (int i = -radius; i <= radius; ++i) {
        float column[5] = {};
        for (int j = -radius; j <= radius; ++j) {
            column[j + radius] = static_cast<float>(a(x + i, y + j));
        }
        along[i + radius] = weigh(pair.y, column, radius);
    }
    return weigh(pair.x, along, radius);
}

inline float mask(const Extended& a, int x, int y, int radius, Mask mask) {
    const Pair pair = pairOf(mask);
    const float sum = columnsThenRow(a, x, y, radius, pair);
    if (mask == Mask::lowpass) return sum / (radius == 1 ? 16.0F : 256.0F);
    return mask == Mask::laplacian ? sum + columnsThenRow(a, x, y, radius, {pair.y, pair.x}) : sum;
}

}  // namespace oracle
