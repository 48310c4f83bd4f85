#include <cmath>

#include "case.h"
#include "zmocv.h"

namespace {

// Numbers, and which of them count.
struct Plane {
    kit::Image value;
    kit::Image known;

    bool knows(int x, int y) const { return kit::contains(value.size(), x, y) && known(x, y) != 0; }
    // Along x or y; the pixel itself need not be known.
    double derivative(int x, int y, int dx, int dy) const {
        const bool before = knows(x - dx, y - dy);
        const bool behind = knows(x + dx, y + dy);
        if (!before && !behind) return 0;
        const double low = before ? value(x - dx, y - dy) : value(x, y);
        const double high = behind ? value(x + dx, y + dy) : value(x, y);
        return before && behind ? (high - low) / 2 : high - low;
    }
};

// What the known pixels make of the one at (x, y). The sums are floats, each operation rounded.
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
        double value = p.value(qx, qy);
        float weight = 0;
        if (flag == zmoiInpaintMarching) {
            const float d = std::fabs(static_cast<float>(rx) * tx + static_cast<float>(ry) * ty);
            const float alignment = d * (1 / std::sqrt(r2));
            const auto apart = static_cast<float>(times.value(x, y) - times.value(qx, qy));
            weight =
                (alignment <= 0.01F ? 1e-6F : alignment) * (1 / r2) * (1 / (1 + std::fabs(apart)));
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
Plane timesFor(const kit::Image& mask, double radius) {
    const ZmoiSize size = mask.size();
    const auto selected = [&](int x, int y) {
        return kit::contains(size, x, y) && mask(x, y) != 0;
    };
    kit::Case march(ZMO(zmoiFastMarching_8u32f_C1R), kit::Turn(0, size));
    march.with("radius", 1e30F).sized(ZMO(zmoiFastMarchingGetBufferSize));
    march.src().fill([&](int x, int y) {
        const bool touches =
            selected(x - 1, y) || selected(x + 1, y) || selected(x, y - 1) || selected(x, y + 1);
        return selected(x, y) || !touches;
    });
    const kit::Image arrival = march.tried();
    return {kit::Image(size,
                       [&](int x, int y) {
                           return selected(x, y) ? arrival(x, y) : -std::min(arrival(x, y), radius);
                       }),
            kit::Image(size, [&](int x, int y) { return !selected(x, y); })};
}

kit::Image inpainted(kit::Case& call, float radius, ZmoiInpaintFlag flag) {
    const kit::Image& src = call.src();
    kit::Image result = src.numbers();
    Plane times = timesFor(call.mask(), radius);
    std::vector<ZmoiPoint> order;
    kit::forEachPixel(src.size(), [&](int x, int y) {
        if (!times.knows(x, y)) order.push_back({x, y});
    });
    if (order.size() == kit::indexIn(src.size(), 0, src.size().height)) return result;
    std::ranges::stable_sort(order, {}, [&](ZmoiPoint p) { return times.value(p.x, p.y); });
    std::vector<Plane> picture;
    for (int c = 0; c < src.channels(); ++c) {
        const auto channel = [&, c](int x, int y) { return src(x, y, c); };
        picture.push_back({kit::Image(src.size(), channel), times.known});
    }
    for (const ZmoiPoint p : order) {
        for (int c = 0; c < src.channels(); ++c) {
            Plane& plane = picture[static_cast<size_t>(c)];
            const float mean = meanAround(plane, times, p.x, p.y, radius, flag);
            plane.value.set(p.x, p.y, std::nearbyint(std::clamp(mean, 0.0F, 255.0F)));
            plane.known.set(p.x, p.y, 1);
            result.set(p.x, p.y, plane.value(p.x, p.y), c);
        }
        times.known.set(p.x, p.y, 1);
    }
    return result;
}

const std::vector<kit::Function> functions = {ZMO(zmoiInpaint_8u_C1R), ZMO(zmoiInpaint_8u_C3R)};

kit::Case caseOf(const kit::Function& function, const kit::Turn& t, float radius,
                 ZmoiInpaintFlag flag) {
    return kit::Case(function, t)
        .with({{"radius", radius}, {"flag", flag}})
        .sized(ZMO(zmoiInpaintGetBufferSize));
}

// Masks with nothing, with single pixels, with areas, and with everything.
TEST(Inpaint, Oracle) {
    kit::forEachCase({131, 4}, functions, [](kit::Turn& t, const auto& function) {
        const int selected = std::array{0, 150, 900, 1000}[(t.number + t.number / 4) % 4];
        const auto radius = t.pick<float>({1, 2.5F, 1.4F, 6, 64});
        const auto flag = t.between(0, 1) ? zmoiInpaintMarching : zmoiInpaintDiffusion;
        kit::Case c = caseOf(function, t, radius, flag);
        c.src().fill([&] { return t.between(0, 3) ? t.between(100, 110) : 255; });
        bool any = false;
        c.mask().fill([&] {
            const bool selects = t.between(0, 999) < selected;
            any |= selects;
            return selects ? t.between(1, 255) : 0;
        });
        return c.want(inpainted(c, radius, flag)).wantStatus(any ? zmoStsNoErr : zmoStsEmptyMask);
    });
}

TEST(Inpaint, BadArguments) {
    for (const auto& function : functions) {
        kit::Case c = caseOf(function, kit::Turn(132, {12, 4}), 3, zmoiInpaintDiffusion);
        c.mask().fill([](int x, int y) { return x == 3 && y == 3; });
        c.expectBadArguments(
            {{"radius", {0.99F, 64.01F, NAN}, zmoStsRangeErr}, {"flag", 2, zmoStsFlagErr}});
    }
}

}  // namespace
