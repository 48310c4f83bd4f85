// Pixels along a line and at fractional positions, one at a time.
#pragma once

#include <algorithm>
#include <cmath>

#include "kit.h"

namespace oracle {

// Pixel k of the line from first to last.
inline ZmoiPoint linePixel(ZmoiPoint first, ZmoiPoint last, int64_t k) {
    const int64_t dx = last.x - first.x;
    const int64_t dy = last.y - first.y;
    const bool alongX = std::abs(dx) >= std::abs(dy);
    const int64_t a = std::max(std::abs(dx), std::abs(dy));
    const int64_t b = std::min(std::abs(dx), std::abs(dy));
    const int64_t aside = a == 0 ? 0 : (2 * k * b + a) / (2 * a);
    const auto moved = [](int from, int64_t way, int64_t by) {
        return static_cast<int>(way < 0 ? from - by : from + by);
    };
    return {moved(first.x, dx, alongX ? k : aside), moved(first.y, dy, alongX ? aside : k)};
}

inline int lineLength(ZmoiPoint first, ZmoiPoint last) {
    return std::max(std::abs(last.x - first.x), std::abs(last.y - first.y)) + 1;
}

// A coordinate as whole part and fraction, the fraction rounded to single precision.
struct Coordinate {
    explicit Coordinate(double value)
        : whole(std::floor(value)), fraction(static_cast<float>(value - whole)) {
        if (fraction == 1) {
            whole += 1;
            fraction = 0;
        }
    }
    // The image's pixel for the window's pixel i, before any replacement.
    double at(int i) const { return whole + i; }
    bool valid(int i, int length) const {
        return at(i) >= 0 && at(i) + (fraction > 0 ? 1 : 0) <= length - 1;
    }

    double whole;
    float fraction;
};

inline double between(double s0, double s1, double f) {
    if (f == 0) return s0;
    return kit::single(kit::single(kit::single(1 - f) * s0) + kit::single(f * s1));
}

// The interpolated value of the window's pixel (x, y).
inline double subpixel(const kit::Image& image, Coordinate left, Coordinate top, int x, int y) {
    const auto pixel = [&](double column, double row) {
        return image(static_cast<int>(std::clamp(column, 0.0, image.size().width - 1.0)),
                     static_cast<int>(std::clamp(row, 0.0, image.size().height - 1.0)));
    };
    const auto line = [&](double row) {
        return between(pixel(left.at(x), row), pixel(left.at(x) + 1, row), left.fraction);
    };
    return between(line(top.at(y)), line(top.at(y) + 1), top.fraction);
}

}  // namespace oracle
