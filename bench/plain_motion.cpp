#include "plain_motion.h"

#include <algorithm>
#include <cmath>

namespace {

struct Layer {
    const Zmo8u* data;
    int step;
    ZmoiSize roi;

    float pixel(int x, int y) const {
        return data[std::clamp(y, 0, roi.height - 1) * step + std::clamp(x, 0, roi.width - 1)];
    }
    float at(float x, float y) const {
        const int left = static_cast<int>(std::floor(x));
        const int top = static_cast<int>(std::floor(y));
        const float fx = x - static_cast<float>(left);
        const float fy = y - static_cast<float>(top);
        return (1 - fy) * ((1 - fx) * pixel(left, top) + fx * pixel(left + 1, top)) +
               fy * ((1 - fx) * pixel(left, top + 1) + fx * pixel(left + 1, top + 1));
    }
};

Layer layerOf(const ZmoiPyramidLevels& levels, int k) {
    return {static_cast<const Zmo8u*>(levels.pImage[k]), levels.step[k], levels.roi[k]};
}

void trackInLayer(const Layer& a, const Layer& b, ZmoiPoint32f p, ZmoiPoint32f& q, int window,
                  int maxIterations, Zmo32f epsilon) {
    const int r = window / 2;
    for (int n = 0; n < maxIterations; ++n) {
        float xx = 0;
        float xy = 0;
        float yy = 0;
        float bx = 0;
        float by = 0;
        for (int j = -r; j <= r; ++j) {
            for (int i = -r; i <= r; ++i) {
                const float x = p.x + static_cast<float>(i);
                const float y = p.y + static_cast<float>(j);
                const float dx = (a.at(x + 1, y) - a.at(x - 1, y)) / 2;
                const float dy = (a.at(x, y + 1) - a.at(x, y - 1)) / 2;
                const float d =
                    a.at(x, y) - b.at(q.x + static_cast<float>(i), q.y + static_cast<float>(j));
                xx += dx * dx;
                xy += dx * dy;
                yy += dy * dy;
                bx += d * dx;
                by += d * dy;
            }
        }
        const float det = xx * yy - xy * xy;
        const ZmoiPoint32f step{(yy * bx - xy * by) / det, (xx * by - xy * bx) / det};
        q = {q.x + step.x, q.y + step.y};
        if (step.x * step.x + step.y * step.y < epsilon * epsilon) break;
    }
}

}  // namespace

void plainFlow(const ZmoiPyramidLevels& first, const ZmoiPyramidLevels& second, ZmoiPoint32f from,
               ZmoiPoint32f& to, int window, int maxLevel, int maxIterations, Zmo32f epsilon) {
    float scale = 1 / static_cast<float>(1 << maxLevel);
    ZmoiPoint32f q{to.x * scale, to.y * scale};
    for (int k = maxLevel; k >= 0; --k) {
        trackInLayer(layerOf(first, k), layerOf(second, k), {from.x * scale, from.y * scale}, q,
                     window, maxIterations, epsilon);
        if (k > 0) {
            q = {q.x * 2, q.y * 2};
            scale *= 2;
        }
    }
    to = q;
}
