#include <algorithm>
#include <cmath>

#include "case.h"
#include "zmocv.h"

namespace {

// The model as the header has it: floats, each operation rounded once.
ZmoiPoint32f distorted(int x, int y, const Zmo32f* camera, const Zmo32f* lens) {
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

double interpolated(const kit::AnyImage& src, ZmoiPoint32f at, int c) {
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
        return (1 - a) * static_cast<float>(src.get(x, row, c)) +
               a * static_cast<float>(src.get(std::min(x + 1, lastX), row, c));
    };
    const float value = (1 - b) * line(y) + b * line(std::min(y + 1, lastY));
    return src.most() == 0 ? value : std::nearbyint(value);
}

struct Optics {
    Zmo32f camera[4];
    Zmo32f lens[4];
};

// Lenses of all kinds; also one that leaves everything in place, and one that sees nothing.
std::vector<Optics> opticsFor(ZmoiSize size) {
    const float w = static_cast<float>(size.width);
    const float h = static_cast<float>(size.height);
    return {{{64, 32, 16, 8}, {0, 0, 0, 0}},
            {{w, 0.8F * w, 0.5F * w, 0.5F * h}, {-0.3F, 0.1F, 0.01F, -0.02F}},
            {{w, w, 0.45F * w - 0.3F, 0.6F * h}, {0.25F, -0.05F, -0.03F, 0.004F}},
            {{0.7F * w, w, 0.1F * w, 0.2F * h}, {0, 0.4F, 0.001F, 0}},
            {{9, 9, -1e4F, 3}, {0.5F, 0, 0, 0}}};
}

#define RADIAL(type) ZMO(zmoiUndistortRadial_##type##_C1R), ZMO(zmoiUndistortRadial_##type##_C3R)

const std::vector<kit::Function> radials = {RADIAL(8u), RADIAL(16u), RADIAL(32f)};
const kit::Function createMap = ZMO(zmoiCreateMapCameraUndistort_32f_C1R);

kit::Case caseOf(const kit::Function& function, ZmoiSize size, kit::Layout layout,
                 const Optics& optics) {
    kit::Case c(function, size, layout);
    c.with({{"k1", optics.lens[0]}, {"k2", optics.lens[1]}});
    for (const auto& [name, values] : {std::pair("camera", optics.camera), {"lens", optics.lens}}) {
        kit::Buffer memory(sizeof(optics.lens), 0);
        std::memcpy(memory.ptr(), values, sizeof(optics.lens));
        c.give(name, memory);
    }
    if (function.has("pBuffer")) c.sized(ZMO(zmoiUndistortRadialGetBufferSize));
    // Wider pixels in a row of 2^31 bytes need less.
    if (!function.isNamed("_8u_C1R")) c.allowAnySize();
    return c;
}

TEST(UndistortRadial, Oracle) {
    kit::forEachCase(
        {91, 4}, radials,
        [](auto& random, const auto& function, ZmoiSize size, kit::Layout layout, size_t turn) {
            Optics optics = opticsFor(size)[turn % 5];
            kit::Case c = caseOf(function, size, layout, optics);
            const bool extreme = turn % 3 == 0;
            c.src().fill([&, most = static_cast<int64_t>(c.src().most())]() -> double {
                if (most == 0) return random.uniform(-1000, 1000) * (extreme ? 1e34 : 1);
                return static_cast<double>(extreme ? random.between(0, 1) * most
                                                   : random.between(0, most));
            });
            optics.lens[2] = optics.lens[3] = 0;
            return c.want("pDst", [&](int x, int y, int k) {
                return interpolated(c.src(), distorted(x, y, optics.camera, optics.lens), k);
            });
        });
}

TEST(CreateMapCameraUndistort, Oracle) {
    kit::forEachCase({93, 4}, createMap,
                     [](kit::Random&, ZmoiSize size, kit::Layout layout, size_t turn) {
                         const Optics optics = opticsFor(size)[turn % 5];
                         const auto at = [&](int x, int y) {
                             return distorted(x, y, optics.camera, optics.lens);
                         };
                         return caseOf(createMap, size, layout, optics)
                             .want("pDst", [&](int x, int y) { return at(x, y).x; })
                             .want("pDst2", [&](int x, int y) { return at(x, y).y; });
                     });
}

// Whatever they become, they become the same everywhere.
TEST(UndistortRadial, NotANumberAndInfinity) {
    const ZmoiSize size{100, 31};
    kit::Random random(92);
    kit::Case c = caseOf(radials[4], size, {}, opticsFor(size)[1]);
    c.src().fill([&] {
        const auto drawn = static_cast<size_t>(random.between(0, 15));
        return drawn < 4 ? std::array{INFINITY, -INFINITY, NAN, -NAN}[drawn] : 1.0F;
    });
    kit::expectSameAtAllLevels(c);
}

// With each value in turn not a number, infinite, or, of those that must be positive, not that.
std::vector<std::array<Zmo32f, 4>> wrongFour(std::array<Zmo32f, 4> good, size_t positive) {
    std::vector<std::array<Zmo32f, 4>> all;
    for (size_t i = 0; i < 4; ++i) {
        for (const float value : {NAN, INFINITY, -INFINITY, 0.0F, -1.0F}) {
            if (i >= positive && std::isfinite(value)) continue;
            all.push_back(good);
            all.back()[i] = value;
        }
    }
    return all;
}

TEST(Undistort, BadArguments) {
    const Optics good{{9, 9, 5, 2}, {0.1F, 0.1F, 0, 0}};
    const auto badCameras = wrongFour({9, 9, 5, 2}, 2);
    const auto badLenses = wrongFour({0.1F, 0.1F, 0, 0}, 0);
    std::vector<kit::Wrong> wrongMap;
    for (const auto& bad : badCameras) wrongMap.push_back({"camera", bad.data(), zmoStsRangeErr});
    std::vector<kit::Wrong> wrong = wrongMap;
    for (const char* const name : {"k1", "k2"}) {
        wrong.push_back({name, {NAN, INFINITY, -INFINITY}, zmoStsRangeErr});
    }
    for (const auto& bad : badLenses) wrongMap.push_back({"lens", bad.data(), zmoStsRangeErr});
    for (const auto& function : radials)
        caseOf(function, {12, 4}, {}, good).expectBadArguments(wrong);
    caseOf(createMap, {12, 4}, {}, good).expectBadArguments(wrongMap);
}

}  // namespace
