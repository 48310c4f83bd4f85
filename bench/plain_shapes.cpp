#include "plain_shapes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

constexpr int circle[16][2] = {{0, -3}, {1, -3},  {2, -2},  {3, -1}, {3, 0},  {3, 1},
                               {2, 2},  {1, 3},   {0, 3},   {-1, 3}, {-2, 2}, {-3, 1},
                               {-3, 0}, {-3, -1}, {-2, -2}, {-1, -3}};

int scoreOf(const Zmo8u* pixel, int step, int n) {
    int best = 0;
    for (int first = 0; first < 16; ++first) {
        int brighter = 255;
        int darker = 255;
        for (int k = first; k < first + n; ++k) {
            const int change = pixel[circle[k % 16][1] * step + circle[k % 16][0]] - *pixel;
            brighter = std::min(brighter, change);
            darker = std::min(darker, -change);
        }
        best = std::max({best, brighter, darker});
    }
    return best;
}

}  // namespace

void plainFastN(const Zmo8u* src, Zmo8u* dst, ZmoiSize roi, int n, int threshold) {
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            const bool inside = x >= 3 && y >= 3 && x < roi.width - 3 && y < roi.height - 3;
            const int score = inside ? scoreOf(src + y * roi.width + x, roi.width, n) : 0;
            dst[y * roi.width + x] = static_cast<Zmo8u>(score > threshold ? score : 0);
        }
    }
}

void plainLineSuppression(const Zmo8u* src, const Zmo8u* responses, Zmo8u* dst, ZmoiSize roi,
                          int radius, int threshold) {
    const auto at = [&](int x, int y) -> int {
        return src[std::clamp(y, 0, roi.height - 1) * roi.width + std::clamp(x, 0, roi.width - 1)];
    };
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            const int place = y * roi.width + x;
            dst[place] = 0;
            if (responses[place] == 0) continue;
            int64_t a = 0;
            int64_t b = 0;
            int64_t c = 0;
            for (int j = y - radius; j <= y + radius; ++j) {
                for (int i = x - radius; i <= x + radius; ++i) {
                    const int gx = at(i + 1, j) - at(i - 1, j);
                    const int gy = at(i, j + 1) - at(i, j - 1);
                    a += gx * gx;
                    b += gy * gy;
                    c += gx * gy;
                }
            }
            const bool onLine = 1020 * (a * b - c * c) <= threshold * (a + b) * (a + b);
            if (!onLine) dst[place] = responses[place];
        }
    }
}

void plainHoughVotes(const Zmo8u* src, ZmoiSize roi, int angles, double step, int distances,
                     std::vector<int>& votes) {
    const int middle = distances / 2;
    std::ranges::fill(votes, 0);
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            if (src[y * roi.width + x] == 0) continue;
            for (int n = 0; n < angles; ++n) {
                const double rho = x * std::cos(n * step) + y * std::sin(n * step);
                const int r = static_cast<int>(std::floor(rho + middle + 0.5));
                if (r >= 0 && r < distances) ++votes.data()[n * distances + r];
            }
        }
    }
}
