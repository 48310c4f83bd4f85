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
    if (radius == 1) {
        if (along == Along::first) return v[2] - v[0];
        if (along == Along::scharr) {
            const float ends = 3 * (v[0] + v[2]);
            return ends + 10 * v[1];
        }
        const float outer = v[0] + v[2];
        const float inner = 2 * v[1];
        return along == Along::smooth ? outer + inner : outer - inner;
    }
    if (along == Along::second) {
        const float outer = v[0] + v[4];
        return outer - 2 * v[2];
    }
    if (along == Along::first) {
        const float outer = v[4] - v[0];
        const float middle = 2 * (v[3] - v[1]);
        return outer + middle;
    }
    const float outer = v[0] + v[4];
    const float middle = 4 * (v[1] + v[3]);
    const float both = outer + middle;
    return both + 6 * v[2];
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
