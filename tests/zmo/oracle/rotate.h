#pragma once

#include <cmath>
#include <optional>

#include "kit.h"

namespace oracle {

// Cosine and sine.
inline std::pair<double, double> turn(double degrees) {
    const double rest = std::fmod(degrees, 360.0);
    if (rest == 0) return {1, 0};
    if (rest == 90 || rest == -270) return {0, 1};
    if (rest == 180 || rest == -180) return {-1, 0};
    if (rest == 270 || rest == -90) return {0, -1};
    return {std::cos(rest * 0.017453292519943295), std::sin(rest * 0.017453292519943295)};
}

// The value of destination pixel (X, Y), nothing where its source lies outside.
inline std::optional<double> rotated(const kit::Image& src, int X, int Y, double degrees,
                                     double xShift, double yShift) {
    const auto [c, s] = turn(degrees);
    const double u = X - xShift;
    const double v = Y - yShift;
    const double x = c * u - s * v;
    const double y = s * u + c * v;
    const ZmoiSize size = src.size();
    if (!(x >= 0 && x <= size.width - 1 && y >= 0 && y <= size.height - 1)) return std::nullopt;
    const int left = static_cast<int>(std::floor(x));
    const int upper = static_cast<int>(std::floor(y));
    const auto pixel = [&](int i, int j) { return kit::contains(size, i, j) ? src(i, j) : 0; };
    const auto between = [](double a, double b, double part) {
        return part == 0 ? a : a + part * (b - a);
    };
    const auto line = [&](int j) { return between(pixel(left, j), pixel(left + 1, j), x - left); };
    return std::nearbyint(between(line(upper), line(upper + 1), y - upper));
}

}  // namespace oracle
