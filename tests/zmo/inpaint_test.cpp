#include <algorithm>
#include <cmath>

#include "case.h"
#include "zmocv.h"

namespace {

// A plane of numbers, and which of them count.
struct Plane {
    explicit Plane(ZmoiSize size) : value(size), known(size) {}

    bool knows(int x, int y) const {
        return kit::contains(value.size(), x, y) && known.get(x, y) != 0;
    }
    // Along x or y; the pixel itself need not be known.
    double derivative(int x, int y, int dx, int dy) const {
        const bool before = knows(x - dx, y - dy);
        const bool behind = knows(x + dx, y + dy);
        if (!before && !behind) return 0;
        const double low = before ? value.get(x - dx, y - dy) : value.get(x, y);
        const double high = behind ? value.get(x + dx, y + dy) : value.get(x, y);
        return before && behind ? (high - low) / 2 : high - low;
    }

    kit::Image<float> value;
    kit::Image<Zmo8u> known;
};

float alignment(float value) {
    return value <= 0.01F ? 1e-6F : value;
}

// What the known pixels make of channel p at (x, y). The sums are floats, each operation rounded.
float meanAround(const Plane& p, const Plane& times, int x, int y, float radius,
                 ZmoiInpaintFlag flag) {
    const auto tx = static_cast<float>(times.derivative(x, y, 1, 0));
    const auto ty = static_cast<float>(times.derivative(x, y, 0, 1));
    float sums[8] = {};
    float weights[8] = {};
    kit::forEachPixel(p.value.size(), [&](int qx, int qy) {
        const int rx = x - qx;
        const int ry = y - qy;
        const auto r2 = static_cast<float>(rx * rx + ry * ry);
        if (!p.knows(qx, qy) || r2 == 0 || double{r2} > double{radius} * radius) return;
        const double gx = p.derivative(qx, qy, 1, 0);
        const double gy = p.derivative(qx, qy, 0, 1);
        double value = p.value.get(qx, qy);
        float weight = 0;
        if (flag == zmoiInpaintMarching) {
            const float d = std::fabs(static_cast<float>(rx) * tx + static_cast<float>(ry) * ty);
            const float apart = times.value.get(x, y) - times.value.get(qx, qy);
            weight = alignment(d * (1 / std::sqrt(r2))) * (1 / r2) * (1 / (1 + std::fabs(apart)));
            value += gx * rx + gy * ry;
        } else {
            const auto e = static_cast<float>(gy * rx - gx * ry);
            const auto s = static_cast<float>(gx * gx + gy * gy);
            weight = (e * e + r2) / ((s + 1) * r2) * (1 / r2) * (1 / r2);
        }
        const auto lane = static_cast<size_t>(static_cast<int>(radius) - rx) % 8;
        sums[lane] += weight * static_cast<float>(value);
        weights[lane] += weight;
    });
    const auto total = [](const float* lanes) {
        return ((lanes[0] + lanes[4]) + (lanes[2] + lanes[6])) +
               ((lanes[1] + lanes[5]) + (lanes[3] + lanes[7]));
    };
    return total(sums) / total(weights);
}

// Times from the edge, which a front that starts there reaches inside and outside alike.
Plane timesFor(const kit::Image<Zmo8u>& mask, float radius) {
    const ZmoiSize size = mask.size();
    const auto selected = [&](int x, int y) {
        return kit::contains(size, x, y) && mask.get(x, y) != 0;
    };
    kit::Image<Zmo8u> away(size);
    away.fill([&](int x, int y) {
        const bool touches =
            selected(x - 1, y) || selected(x + 1, y) || selected(x, y - 1) || selected(x, y + 1);
        return selected(x, y) || !touches;
    });
    kit::Case march(ZMO(zmoiFastMarching_8u32f_C1R), size);
    march.with("radius", 1e30F).sized(ZMO(zmoiFastMarchingGetBufferSize));
    march.src().as<Zmo8u>() = away;
    const kit::AnyImage arrival = march.tried();
    Plane times(size);
    times.known.fill([&](int x, int y) { return !selected(x, y); });
    times.value.fill([&](int x, int y) {
        const auto time = static_cast<float>(arrival.get(x, y));
        return selected(x, y) ? time : -std::min(time, radius);
    });
    return times;
}

kit::Image<Zmo8u> inpainted(kit::Case& call, float radius, ZmoiInpaintFlag flag) {
    const auto& src = call.src().as<Zmo8u>();
    kit::Image<Zmo8u> result = src;
    Plane times = timesFor(call.mask(), radius);
    std::vector<ZmoiPoint> order;
    kit::forEachPixel(src.size(), [&](int x, int y) {
        if (!times.knows(x, y)) order.push_back({x, y});
    });
    if (order.size() == kit::indexIn(src.size(), 0, src.size().height)) return result;
    std::ranges::stable_sort(order, {}, [&](ZmoiPoint p) { return times.value.get(p.x, p.y); });
    std::vector<Plane> picture(static_cast<size_t>(src.channels()), times);
    const auto each = [&](auto body) {
        for (int c = 0; c < src.channels(); ++c) body(picture[static_cast<size_t>(c)], c);
    };
    each([&](Plane& plane, int c) {
        plane.value.fill([&](int x, int y) { return src.get(x, y, c); });
    });
    for (const ZmoiPoint p : order) {
        each([&](Plane& plane, int c) {
            const float mean = meanAround(plane, times, p.x, p.y, radius, flag);
            plane.value.set(p.x, p.y, std::nearbyint(std::clamp(mean, 0.0F, 255.0F)));
            plane.known.set(p.x, p.y, 1);
            result.set(p.x, p.y, c, static_cast<Zmo8u>(plane.value.get(p.x, p.y)));
        });
        times.known.set(p.x, p.y, 1);
    }
    return result;
}

const std::vector<kit::Function> functions = {ZMO(zmoiInpaint_8u_C1R), ZMO(zmoiInpaint_8u_C3R)};

kit::Case caseOf(const kit::Function& function, ZmoiSize size, kit::Layout layout, float radius,
                 ZmoiInpaintFlag flag) {
    return kit::Case(function, size, layout)
        .with({{"radius", radius}, {"flag", flag}})
        .sized(ZMO(zmoiInpaintGetBufferSize));
}

// Masks with nothing, with single pixels, with areas, and with everything.
TEST(Inpaint, Oracle) {
    kit::forEachCase(
        {131, 4}, functions,
        [](auto& random, const auto& function, ZmoiSize size, kit::Layout layout, size_t turn) {
            const int selected = std::array{0, 150, 900, 1000}[(turn + turn / 4) % 4];
            const auto radius = random.template pick<float>({1, 2.5F, 1.4F, 6, 64});
            const auto flag = random.between(0, 1) ? zmoiInpaintMarching : zmoiInpaintDiffusion;
            kit::Case c = caseOf(function, size, layout, radius, flag);
            c.src().fill([&] { return random.between(0, 3) ? random.between(100, 110) : 255; });
            bool any = false;
            c.mask().fill([&] {
                const bool selects = random.between(0, 999) < selected;
                any |= selects;
                return selects ? random.between(1, 255) : 0;
            });
            const kit::Image<Zmo8u> want = inpainted(c, radius, flag);
            return c.wantStatus(any ? zmoStsNoErr : zmoStsEmptyMask)
                .want("pDst", [&](int x, int y, int k) { return want.get(x, y, k); });
        });
}

TEST(Inpaint, BadArguments) {
    for (const auto& function : functions) {
        kit::Case c = caseOf(function, {12, 4}, {}, 3, zmoiInpaintDiffusion);
        c.mask().fill([](int x, int y) { return x == 3 && y == 3; });
        c.expectBadArguments(
            {{"radius", {0.99F, 64.01F, NAN}, zmoStsRangeErr}, {"flag", 2, zmoStsFlagErr}});
    }
}

}  // namespace
