#pragma once

#include "border.h"

namespace oracle {

enum class Along { smooth, first, second, scharr };
enum class Mask { vert, horiz, cross, laplacian, lowpass, scharrVert, scharrHoriz };

inline int64_t weight(Along along, int i, int radius) {
    static constexpr int64_t three[][3] = {{1, 2, 1}, {-1, 0, 1}, {1, -2, 1}, {3, 10, 3}};
    static constexpr int64_t five[][5] = {{1, 4, 6, 4, 1}, {-1, -2, 0, 2, 1}, {1, 0, -2, 0, 1}};
    const auto row = static_cast<size_t>(along);
    return radius == 1 ? three[row][i + 1] : five[row][i + 2];
}

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

// floor((2 s + d) / 2d), one less where that met a half and is odd.
inline int64_t roundedQuotient(int64_t sum, int64_t divisor) {
    const int64_t twice = 2 * sum + divisor;
    const int64_t whole = twice / (2 * divisor) - (twice % (2 * divisor) < 0 ? 1 : 0);
    return twice % (2 * divisor) == 0 && whole % 2 != 0 ? whole - 1 : whole;
}

// The mask as a whole, in 64-bit integers.
inline int64_t mask(const Extended<Zmo8u>& a, int x, int y, int radius, Mask mask) {
    const Pair pair = pairOf(mask);
    int64_t sum = 0;
    for (int j = -radius; j <= radius; ++j) {
        for (int i = -radius; i <= radius; ++i) {
            int64_t w = weight(pair.y, j, radius) * weight(pair.x, i, radius);
            if (mask == Mask::laplacian) w += weight(pair.y, i, radius) * weight(pair.x, j, radius);
            sum += w * a(x + i, y + j);
        }
    }
    return mask == Mask::lowpass ? roundedQuotient(sum, radius == 1 ? 16 : 256) : sum;
}

// v[0] to v[2 radius] in single precision, in the order that the header tells.
inline float weigh32f(Along along, const float* v, int radius) {
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

inline float columnsThenRow(const Extended<Zmo32f>& a, int x, int y, int radius, Pair pair) {
    float along[5] = {};
    for (int i = -radius; i <= radius; ++i) {
        float column[5] = {};
        for (int j = -radius; j <= radius; ++j) column[j + radius] = a(x + i, y + j);
        along[i + radius] = weigh32f(pair.y, column, radius);
    }
    return weigh32f(pair.x, along, radius);
}

inline float mask(const Extended<Zmo32f>& a, int x, int y, int radius, Mask mask) {
    const Pair pair = pairOf(mask);
    const float sum = columnsThenRow(a, x, y, radius, pair);
    if (mask == Mask::lowpass) return sum / (radius == 1 ? 16.0F : 256.0F);
    return mask == Mask::laplacian ? sum + columnsThenRow(a, x, y, radius, {pair.y, pair.x}) : sum;
}

}  // namespace oracle
