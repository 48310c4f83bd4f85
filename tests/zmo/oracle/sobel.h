#pragma once

#include "border.h"

namespace oracle {

inline int64_t smoothWeight(int i, int radius) {
    static constexpr int64_t three[] = {1, 2, 1};
    static constexpr int64_t five[] = {1, 4, 6, 4, 1};
    return radius == 1 ? three[i + 1] : five[i + 2];
}

inline int64_t deriveWeight(int i, int radius) {
    static constexpr int64_t three[] = {-1, 0, 1};
    static constexpr int64_t five[] = {-1, -2, 0, 2, 1};
    return radius == 1 ? three[i + 1] : five[i + 2];
}

// The mask as a whole, in 64-bit integers.
inline int64_t sobel(const Extended<Zmo8u>& a, int x, int y, int radius, bool vert) {
    int64_t sum = 0;
    for (int j = -radius; j <= radius; ++j) {
        for (int i = -radius; i <= radius; ++i) {
            const int64_t weight = vert ? smoothWeight(j, radius) * deriveWeight(i, radius)
                                        : deriveWeight(j, radius) * smoothWeight(i, radius);
            sum += weight * a(x + i, y + j);
        }
    }
    return sum;
}

// v[0] to v[2 radius] in single precision, in the order that the header tells.
inline float smooth32f(const float* v, int radius) {
    if (radius == 1) {
        const float outer = v[0] + v[2];
        const float inner = 2 * v[1];
        return outer + inner;
    }
    const float outer = v[0] + v[4];
    const float middle = 4 * (v[1] + v[3]);
    const float both = outer + middle;
    return both + 6 * v[2];
}

inline float derive32f(const float* v, int radius) {
    if (radius == 1) return v[2] - v[0];
    const float outer = v[4] - v[0];
    const float middle = 2 * (v[3] - v[1]);
    return outer + middle;
}

inline float sobel(const Extended<Zmo32f>& a, int x, int y, int radius, bool vert) {
    float along[5];
    for (int i = -radius; i <= radius; ++i) {
        float column[5];
        for (int j = -radius; j <= radius; ++j) column[j + radius] = a(x + i, y + j);
        along[i + radius] = vert ? smooth32f(column, radius) : derive32f(column, radius);
    }
    return vert ? derive32f(along, radius) : smooth32f(along, radius);
}

}  // namespace oracle
