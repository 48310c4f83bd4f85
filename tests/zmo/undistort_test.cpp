#include <cmath>

#include "case.h"
#include "zmocv.h"

namespace {

struct Optics {
    std::vector<double> camera;
    std::vector<double> lens;
};

// The model as the header has it: floats, each operation rounded once.
ZmoiPoint32f distorted(int x, int y, const Optics& optics) {
    const std::vector<float> camera(optics.camera.begin(), optics.camera.end());
    const std::vector<float> lens(optics.lens.begin(), optics.lens.end());
    const float u = (static_cast<float>(x) - camera[2]) / camera[0];
    const float v = (static_cast<float>(y) - camera[3]) / camera[1];
    const float uu = u * u;
    const float vv = v * v;
    const float r2 = uu + vv;
    const float g = 1 + r2 * (lens[0] + r2 * lens[1]);
    const float du = u * g + 2 * lens[2] * (u * v) + lens[3] * (r2 + 2 * uu);
    const float dv = v * g + lens[2] * (r2 + 2 * vv) + 2 * lens[3] * (u * v);
    return {camera[2] + camera[0] * du, camera[3] + camera[1] * dv};
}

double interpolated(const kit::Image& src, ZmoiPoint32f at, int c) {
    const int lastX = src.size().width - 1;
    const int lastY = src.size().height - 1;
    const bool inside = at.x >= 0 && at.y >= 0 && at.x <= static_cast<float>(lastX) &&
                        at.y <= static_cast<float>(lastY);
    if (!inside) return 0;
    const int x = static_cast<int>(std::floor(at.x));
    const int y = static_cast<int>(std::floor(at.y));
    const float a = at.x - std::floor(at.x);
    const float b = at.y - std::floor(at.y);
    const auto line = [&](int row) {
        return (1 - a) * static_cast<float>(src(x, row, c)) +
               a * static_cast<float>(src(std::min(x + 1, lastX), row, c));
    };
    return src.stored((1 - b) * line(y) + b * line(std::min(y + 1, lastY)));
}

// Lenses of all kinds; also one that leaves everything in place, and one that sees nothing.
Optics opticsFor(const kit::Turn& t) {
    const double w = t.size.width;
    const double h = t.size.height;
    const Optics all[] = {{{64, 32, 16, 8}, {0, 0, 0, 0}},
                          {{w, 0.8 * w, 0.5 * w, 0.5 * h}, {-0.3, 0.1, 0.01, -0.02}},
                          {{w, w, 0.45 * w - 0.3, 0.6 * h}, {0.25, -0.05, -0.03, 0.004}},
                          {{0.7 * w, w, 0.1 * w, 0.2 * h}, {0, 0.4, 0.001, 0}},
                          {{9, 9, -1e4, 3}, {0.5, 0, 0, 0}}};
    return all[t.number % 5];
}

#define RADIAL(type) ZMO(zmoiUndistortRadial_##type##_C1R), ZMO(zmoiUndistortRadial_##type##_C3R)

const std::vector<kit::Function> radials = {RADIAL(8u), RADIAL(16u), RADIAL(32f)};
const kit::Function createMap = ZMO(zmoiCreateMapCameraUndistort_32f_C1R);

kit::Case caseOf(const kit::Function& function, const kit::Turn& t, const Optics& optics) {
    kit::Case c(function, t);
    c.with({{"k1", optics.lens[0]},
            {"k2", optics.lens[1]},
            {"camera", optics.camera},
            {"lens", optics.lens}});
    if (function.has("pBuffer")) c.sized(ZMO(zmoiUndistortRadialGetBufferSize));
    // Wider pixels in a row of 2^31 bytes need less.
    if (!function.isNamed("_8u_C1R")) c.allowAnySize();
    return c;
}

TEST(UndistortRadial, Oracle) {
    kit::forEachCase({91, 4}, radials, [](kit::Turn& t, const auto& function) {
        Optics optics = opticsFor(t);
        kit::Case c = caseOf(function, t, optics);
        draw(t, c.src(), t.number % 3 == 0 ? kit::Draw::ends : kit::Draw::any);
        optics.lens[2] = optics.lens[3] = 0;
        return c.want(
            [&](int x, int y, int k) { return interpolated(c.src(), distorted(x, y, optics), k); });
    });
}

TEST(CreateMapCameraUndistort, Oracle) {
    kit::forEachCase({93, 4}, 1, [](kit::Turn& t, size_t) {
        const Optics optics = opticsFor(t);
        return caseOf(createMap, t, optics)
            .want("pDst", [&](int x, int y) { return distorted(x, y, optics).x; })
            .want("pDst2", [&](int x, int y) { return distorted(x, y, optics).y; });
    });
}

// Whatever they become, they become the same everywhere.
TEST(UndistortRadial, NotANumberAndInfinity) {
    kit::Turn t(92, {100, 31}, {}, 1);
    kit::Case c = caseOf(radials[4], t, opticsFor(t));
    c.src().fill([&] {
        const auto drawn = t.between(size_t{0}, size_t{15});
        return drawn < 4 ? std::array{INFINITY, -INFINITY, NAN, -NAN}[drawn] : 1.0F;
    });
    kit::expectSameAtAllLevels(c);
}

// Each value in turn is not a number, infinite, or, of those that must be positive, not that.
void addWrong(std::vector<kit::Wrong>& wrong, const char* name, const std::vector<double>& good,
              size_t positive) {
    for (size_t i = 0; i < good.size(); ++i) {
        for (const float value : {NAN, INFINITY, -INFINITY, 0.0F, -1.0F}) {
            if (i >= positive && std::isfinite(value)) continue;
            auto bad = good;
            bad[i] = value;
            wrong.push_back({name, bad, zmoStsRangeErr});
        }
    }
}

TEST(Undistort, BadArguments) {
    const Optics good{{9, 9, 5, 2}, {0.1, 0.1, 0, 0}};
    const kit::Turn t(94, {12, 4});
    std::vector<kit::Wrong> wrong;
    addWrong(wrong, "camera", good.camera, 2);
    std::vector<kit::Wrong> wrongMap = wrong;
    addWrong(wrongMap, "lens", good.lens, 0);
    for (const char* const name : {"k1", "k2"}) {
        wrong.push_back({name, {NAN, INFINITY, -INFINITY}, zmoStsRangeErr});
    }
    for (const auto& function : radials) caseOf(function, t, good).expectBadArguments(wrong);
    caseOf(createMap, t, good).expectBadArguments(wrongMap);
}

}  // namespace
