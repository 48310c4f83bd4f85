#include "plain_morph.h"

#include <algorithm>

void plainErode8u(const Zmo8u* src, Zmo8u* dst, ZmoiSize roi, int side) {
    const int radius = side / 2;
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            Zmo8u least = 255;
            for (int j = -radius; j <= radius; ++j) {
                const Zmo8u* const row = src + std::clamp(y + j, 0, roi.height - 1) * roi.width;
                for (int i = -radius; i <= radius; ++i) {
                    least = std::min(least, row[std::clamp(x + i, 0, roi.width - 1)]);
                }
            }
            dst[y * roi.width + x] = least;
        }
    }
}
