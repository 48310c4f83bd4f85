#pragma once

#include <cmath>
#include <cstdlib>
#include <type_traits>

#include "region.h"

namespace oracle {

// Sizes of gradients as they are compared: exact integers for 16s, single precision for 32f, both
// exact as double. L2 sizes are squared.
inline double gradientSize(Zmo16s dx, Zmo16s dy, ZmoiNorm norm) {
    const int64_t a = dx;
    const int64_t b = dy;
    return static_cast<double>(norm == zmoiNormL1 ? std::abs(a) + std::abs(b) : a * a + b * b);
}

inline double gradientSize(Zmo32f dx, Zmo32f dy, ZmoiNorm norm) {
    if (norm == zmoiNormL1) {
        const float sum = std::fabs(dx) + std::fabs(dy);
        return sum;
    }
    const float a = dx * dx;
    const float b = dy * dy;
    const float sum = a + b;
    return sum;
}

// True when the gradient is within the first sector of the axis `along`.
inline bool inSector(Zmo16s along, Zmo16s across) {
    return 32768 * std::abs(int64_t{across}) <= 13573 * std::abs(int64_t{along});
}

inline bool inSector(Zmo32f along, Zmo32f across) {
    const float bound = 0.41421356F * std::fabs(along);
    return std::fabs(across) <= bound;
}

template <class T>
class Canny {
  public:
    Canny(const kit::Image<T>& dx, const kit::Image<T>& dy, float low, float high, ZmoiNorm norm)
        : m_dx(dx), m_dy(dy), m_norm(norm), m_edges(dx.size()) {
        const double lowLimit = limit(low);
        const double highLimit = limit(high);
        kit::Image<Zmo8u> candidates(dx.size());
        kit::forEachPixel(dx.size(), [&](int x, int y) {
            const bool maximum = isMaximum(x, y);
            candidates.set(x, y, maximum && size(x, y) > lowLimit ? 1 : 0);
            m_edges.set(x, y, maximum && size(x, y) > highLimit ? 255 : 0);
        });
        while (growOnce(candidates)) {
        }
    }

    const kit::Image<Zmo8u>& edges() const { return m_edges; }

    int count() const {
        int found = 0;
        kit::forEachPixel(m_dx.size(),
                          [&](int x, int y) { found += m_edges.get(x, y) != 0 ? 1 : 0; });
        return found;
    }

  private:
    double limit(float threshold) const {
        const double value = threshold;
        const double compared = m_norm == zmoiNormL2 ? value * value : value;
        return std::is_same_v<T, Zmo32f> && compared < 0x1p-126 ? 0 : compared;
    }

    bool isInside(int x, int y) const { return kit::contains(m_dx.size(), x, y); }

    double size(int x, int y) const {
        return isInside(x, y) ? gradientSize(m_dx.get(x, y), m_dy.get(x, y), m_norm) : 0;
    }

    bool isMaximum(int x, int y) const {
        const T dx = m_dx.get(x, y);
        const T dy = m_dy.get(x, y);
        int toLaterX = 1;
        int toLaterY = 1;
        if (inSector(dx, dy)) {
            toLaterY = 0;
        } else if (inSector(dy, dx)) {
            toLaterX = 0;
        } else if ((dx < 0) != (dy < 0)) {
            toLaterX = -1;
        }
        return size(x, y) > size(x - toLaterX, y - toLaterY) &&
               size(x, y) >= size(x + toLaterX, y + toLaterY);
    }

    bool hasEdgeNeighbour(int x, int y) const {
        bool has = false;
        forEachNeighbour(m_dx.size(), x, y, 8,
                         [&](int i, int j) { has |= m_edges.get(i, j) != 0; });
        return has;
    }

    bool growOnce(const kit::Image<Zmo8u>& candidates) {
        bool grown = false;
        kit::forEachPixel(m_dx.size(), [&](int x, int y) {
            if (candidates.get(x, y) == 0 || m_edges.get(x, y) != 0) return;
            if (!hasEdgeNeighbour(x, y)) return;
            m_edges.set(x, y, 255);
            grown = true;
        });
        return grown;
    }

    const kit::Image<T>& m_dx;
    const kit::Image<T>& m_dy;
    ZmoiNorm m_norm;
    kit::Image<Zmo8u> m_edges;
};

}  // namespace oracle
