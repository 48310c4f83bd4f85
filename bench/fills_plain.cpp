#include "fills_plain.h"

#include <cmath>
#include <type_traits>

namespace {

template <class T>
T store(double value) {
    if constexpr (std::is_floating_point_v<T>) return static_cast<T>(value);
    return static_cast<T>(static_cast<long long>(value));
}

}  // namespace

template <class T>
void plainRandom(T* p, int n, double lo, double hi, unsigned& seed) {
    const double scale = (hi - lo) * 2.3283064365386963e-10;
    const double centre = (hi + lo) * 0.5;
    unsigned w0 = seed;
    unsigned w1 = seed * 69069U + 1013904243U;
    unsigned w2 = seed * 475559465U + 924302730U;
    unsigned c = 0xFFFFFFFFU, g = 1131199209U;
    for (int i = 0; i < n; ++i) {
        const unsigned t = c - w2 + w1;
        const bool b = t >> 31;
        const unsigned x = t - (b ? 18U : 0U);
        g = g * 69069U + 1013904243U;
        p[i] = store<T>(static_cast<int>(x + g) * scale + centre);
        w2 = w1;
        w1 = w0;
        w0 = x;
        c = b ? 0xFFFFFFFFU : 0U;
    }
    seed = w0;
}

template <class T>
void plainSequence(T* p, int n, double start, double hi, double step) {
    double x = start;
    for (int i = 0; i < n; ++i) {
        p[i] = store<T>(x);
        x += step;
        if (x > hi) x = start;
    }
}

template <class T>
void plainJaehne(T* p, int n, double magnitude, double offset) {
    for (int k = 0; k < n; ++k) {
        const double i = k;
        p[k] = store<T>(std::sin(i * i * 1.5707963267948966 * (1.0 / n)) * magnitude + offset);
    }
}

template <class T>
void plainPlaneJaehne(T* p, int width, int height, double magnitude, double offset) {
    const double cx = (width - 1) * 0.5, cy = (height - 1) * 0.5;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double r2 = (x - cx) * (x - cx) + (y - cy) * (y - cy);
            const double wave = std::sin(r2 * 1.5707963267948966 * (1.0 / height)) + 1.0;
            p[y * width + x] = store<T>(wave * magnitude + offset);
        }
    }
}

#define PLAIN_FILLS(T)                                                \
    template void plainRandom<T>(T*, int, double, double, unsigned&); \
    template void plainSequence<T>(T*, int, double, double, double);  \
    template void plainJaehne<T>(T*, int, double, double);            \
    template void plainPlaneJaehne<T>(T*, int, int, double, double);

PLAIN_FILLS(unsigned char)
PLAIN_FILLS(short)
PLAIN_FILLS(int)
PLAIN_FILLS(float)
PLAIN_FILLS(double)
