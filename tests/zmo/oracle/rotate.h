#pragma once

#include <cmath>
#include <optional>

#include "kit.h"

namespace oracle {

struct Turn {
    double c;
    double s;
};

inline Turn turn(double degrees) {
    const double rest = std::fmod(degrees, 360.0);
    if (rest == 0) return {1, 0};
    if (rest == 90 || rest == -270) return {0, 1};
    if (rest == 180 || rest == -180) return {-1, 0};
    if (rest == 270 || rest == -90) return {0, -1};
    return {std::cos(rest * 0.017453292519943295), std::sin(rest * 0.017453292519943295)};
}

// The value of destination pixel (X, Y), nothing where its source lies outside.
inline std::optional<Zmo8u> rotated(const kit::Image<Zmo8u>& src, int X, int Y, double degrees,
                                    double xShift, double yShift) {
    const Turn t = turn(degrees);
    const double u = X - xShift;
    const double v = Y - yShift;
    const double x = t.c * u - t.s * v;
    const double y = t.s * u + t.c * v;
    const ZmoiSize size = src.size();
    if (!(x >= 0 && x <= size.width - 1 && y >= 0 && y <= size.height - 1)) return std::nullopt;
    const int left = static_cast<int>(std::floor(x));
    const int upper = static_cast<int>(std::floor(y));
    const double f = x - left;
    const double g = y - upper;
    const auto pixel = [&](int i, int j) -> double {
        return i < size.width && j < size.height ? src.get(i, j) : 0;
    };
    const auto between = [](double a, double b, double part) {
        return part == 0 ? a : a + part * (b - a);
    };
    const double top = between(pixel(left, upper), pixel(left + 1, upper), f);
    const double bottom = between(pixel(left, upper + 1), pixel(left + 1, upper + 1), f);
    return static_cast<Zmo8u>(std::nearbyint(between(top, bottom, g)));
}

}  // namespace oracle
