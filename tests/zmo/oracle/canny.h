// Edges from derivatives: exact for integers, and in single precision for floats.
#pragma once

#include <cmath>

#include "region.h"

namespace oracle {

struct CannyRules {
    float low;
    float high;
    ZmoiNorm norm;
};

class Canny {
  public:
    Canny(const kit::Image& dx, const kit::Image& dy, const CannyRules& rules)
        : m_dx(dx), m_dy(dy), m_norm(rules.norm) {
        const double low = limit(rules.low);
        const double high = limit(rules.high);
        kit::forEachPixel(dx.size(), [&](int x, int y) {
            if (edges(x, y) != 0 || !isMaximum(x, y) || size(x, y) <= high) return;
            const auto grows = [&](ZmoiPoint, ZmoiPoint to) {
                return isMaximum(to.x, to.y) && size(to.x, to.y) > low;
            };
            for (const ZmoiPoint p : reached(dx.size(), {x, y}, 8, grows)) edges.set(p.x, p.y, 255);
        });
    }

  private:
    double rounded(double value) const { return m_dx.isWhole() ? value : kit::single(value); }

    // As sizes are compared: those of the norm L2 are squared.
    double size(int x, int y) const {
        if (!kit::contains(m_dx.size(), x, y)) return 0;
        const double a = std::fabs(m_dx(x, y));
        const double b = std::fabs(m_dy(x, y));
        return rounded(m_norm == zmoiNormL1 ? a + b : rounded(a * a) + rounded(b * b));
    }
    double limit(double threshold) const {
        const double compared = m_norm == zmoiNormL2 ? threshold * threshold : threshold;
        return !m_dx.isWhole() && compared < 0x1p-126 ? 0 : compared;
    }

    // The gradient is within the first sector of the axis `along`.
    bool inSector(double along, double across) const {
        if (m_dx.isWhole()) return 32768 * std::fabs(across) <= 13573 * std::fabs(along);
        return std::fabs(across) <= kit::single(double{0.41421356F} * std::fabs(along));
    }

    bool isMaximum(int x, int y) const {
        const double dx = m_dx(x, y);
        const double dy = m_dy(x, y);
        ZmoiPoint later{1, 1};
        if (inSector(dx, dy)) {
            later.y = 0;
        } else if (inSector(dy, dx)) {
            later.x = 0;
        } else if ((dx < 0) != (dy < 0)) {
            later.x = -1;
        }
        return size(x, y) > size(x - later.x, y - later.y) &&
               size(x, y) >= size(x + later.x, y + later.y);
    }

    const kit::Image& m_dx;
    const kit::Image& m_dy;
    ZmoiNorm m_norm;

  public:
    kit::Image edges{m_dx.size()};
};

}  // namespace oracle
