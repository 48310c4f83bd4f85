#include "plain_corners.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace bench {

namespace {

// The element of a plane at a place that may lie outside.
template <class T>
int at(const T* plane, ZmoiSize size, int x, int y) {
    return plane[std::clamp(y, 0, size.height - 1) * size.width + std::clamp(x, 0, size.width - 1)];
}

struct Gradients {
    const Zmo16s* dx;
    const Zmo16s* dy;
    ZmoiSize size;

    double squared(int x, int y) const {
        if (x < 0 || y < 0 || x >= size.width || y >= size.height) return 0;
        const double a = dx[y * size.width + x];
        const double b = dy[y * size.width + x];
        return a * a + b * b;
    }

    bool isMaximum(int x, int y) const {
        const int a = dx[y * size.width + x];
        const int b = dy[y * size.width + x];
        int i = 1;
        int j = 1;
        if (32768 * std::abs(b) <= 13573 * std::abs(a)) {
            j = 0;
        } else if (32768 * std::abs(a) <= 13573 * std::abs(b)) {
            i = 0;
        } else if ((a < 0) != (b < 0)) {
            i = -1;
        }
        const double here = squared(x, y);
        return here > squared(x - i, y - j) && here >= squared(x + i, y + j);
    }
};

}  // namespace

void plainDerivatives(const Zmo8u* src, Zmo16s* dx, Zmo16s* dy, ZmoiSize size) {
    static constexpr int smooth[] = {1, 2, 1};
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            int alongX = 0;
            int alongY = 0;
            for (int j = -1; j <= 1; ++j) {
                for (int i = -1; i <= 1; ++i) {
                    const int value = at(src, size, x + i, y + j);
                    alongX += smooth[j + 1] * i * value;
                    alongY += smooth[i + 1] * j * value;
                }
            }
            dx[y * size.width + x] = static_cast<Zmo16s>(alongX);
            dy[y * size.width + x] = static_cast<Zmo16s>(alongY);
        }
    }
}

void plainCanny(const Zmo16s* dx, const Zmo16s* dy, Zmo8u* edges, ZmoiSize size, float low,
                float high) {
    const Gradients gradients{dx, dy, size};
    std::vector<ZmoiPoint> found;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const double squared = gradients.squared(x, y);
            const bool candidate = squared > low * low && gradients.isMaximum(x, y);
            edges[y * size.width + x] = candidate ? 1 : 0;
            if (candidate && squared > high * high) found.push_back({x, y});
        }
    }
    while (!found.empty()) {
        const ZmoiPoint point = found.back();
        found.pop_back();
        edges[point.y * size.width + point.x] = 255;
        for (int y = std::max(point.y - 1, 0); y <= std::min(point.y + 1, size.height - 1); ++y) {
            for (int x = std::max(point.x - 1, 0); x <= std::min(point.x + 1, size.width - 1);
                 ++x) {
                if (edges[y * size.width + x] == 1) found.push_back({x, y});
            }
        }
    }
    for (int i = 0; i < size.width * size.height; ++i) edges[i] = edges[i] == 255 ? 255 : 0;
}

void plainHarris(const Zmo16s* dx, const Zmo16s* dy, Zmo32f* dst, ZmoiSize size, int window,
                 float k) {
    const int radius = window / 2;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            double a = 0;
            double b = 0;
            double c = 0;
            for (int j = -radius; j <= radius; ++j) {
                for (int i = -radius; i <= radius; ++i) {
                    const int p = at(dx, size, x + i, y + j);
                    const int q = at(dy, size, x + i, y + j);
                    a += p * p;
                    b += p * q;
                    c += q * q;
                }
            }
            const double trace = a + c;
            dst[y * size.width + x] = static_cast<Zmo32f>((a * c - b * b) - k * (trace * trace));
        }
    }
}

}  // namespace bench
