#include "plain_filters.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// sum of weight(i, j) * src(x + i, y + j) for i and j from -radius to radius
template <class Sum, class T, class W>
Sum weighted(const T* src, ZmoiSize size, int x, int y, const W* weights, int taps) {
    const int radius = taps / 2;
    Sum sum = 0;
    for (int j = -radius; j <= radius; ++j) {
        const T* const row = src + std::clamp(y + j, 0, size.height - 1) * size.width;
        for (int i = -radius; i <= radius; ++i) {
            sum += static_cast<Sum>(row[std::clamp(x + i, 0, size.width - 1)]) *
                   static_cast<Sum>(*weights++);
        }
    }
    return sum;
}

template <class D>
D rounded(double value) {
    const double low = std::numeric_limits<D>::min();
    const double high = std::numeric_limits<D>::max();
    return static_cast<D>(std::clamp(std::nearbyint(value), low, high));
}

}  // namespace

void plainFilter8u(const Zmo8u* src, Zmo8u* dst, ZmoiSize roi, const float* weights, int taps) {
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            const float sum = weighted<float>(src, roi, x, y, weights, taps);
            dst[y * roi.width + x] = rounded<Zmo8u>(static_cast<double>(sum));
        }
    }
}

void plainFilter32f(const Zmo32f* src, Zmo32f* dst, ZmoiSize roi, const float* weights, int taps) {
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            dst[y * roi.width + x] = weighted<float>(src, roi, x, y, weights, taps);
        }
    }
}

void plainFilter16s(const Zmo16s* src, Zmo16s* dst, ZmoiSize roi, const int* weights, int taps,
                    int divisor) {
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            const int sum = weighted<int>(src, roi, x, y, weights, taps);
            dst[y * roi.width + x] = rounded<Zmo16s>(static_cast<double>(sum) / divisor);
        }
    }
}

void plainLayerDown8u(const Zmo8u* src, Zmo8u* dst, ZmoiSize roi) {
    static constexpr int weights[] = {1,  4, 6, 4,  1,  4,  16, 24, 16, 4, 6, 24, 36,
                                      24, 6, 4, 16, 24, 16, 4,  1,  4,  6, 4, 1};
    const ZmoiSize half{(roi.width + 1) / 2, (roi.height + 1) / 2};
    for (int y = 0; y < half.height; ++y) {
        for (int x = 0; x < half.width; ++x) {
            const int sum = weighted<int>(src, roi, 2 * x, 2 * y, weights, 5);
            dst[y * half.width + x] = rounded<Zmo8u>(sum / 256.0);
        }
    }
}
