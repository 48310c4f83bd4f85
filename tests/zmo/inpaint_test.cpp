#include <algorithm>
#include <cmath>

#include "parts.h"
#include "zmocv.h"

namespace {

constexpr auto functionFor(int channels) {
    return channels == 1 ? zmoiInpaint_8u_C1R : zmoiInpaint_8u_C3R;
}

kit::Buffer bufferFor(ZmoiSize size, int channels) {
    int bytes = 0;
    EXPECT_EQ(zmoiInpaintGetBufferSize(size, zmo8u, channels, &bytes), zmoStsNoErr);
    return kit::Buffer(bytes);
}

// A plane of numbers with a flag for those that count.
struct Plane {
    explicit Plane(ZmoiSize size)
        : width(size.width),
          height(size.height),
          value(static_cast<size_t>(width) * static_cast<size_t>(height)),
          known(value.size()) {}

    size_t at(int x, int y) const {
        return static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x);
    }
    bool knows(int x, int y) const {
        return x >= 0 && y >= 0 && x < width && y < height && known[at(x, y)];
    }
    // Along x or y; the pixel itself need not be known.
    double derivative(int x, int y, int dx, int dy) const {
        const bool before = knows(x - dx, y - dy);
        const bool behind = knows(x + dx, y + dy);
        if (!before && !behind) return 0;
        const double low = value[before ? at(x - dx, y - dy) : at(x, y)];
        const double high = value[behind ? at(x + dx, y + dy) : at(x, y)];
        return before && behind ? (high - low) / 2 : high - low;
    }

    int width;
    int height;
    std::vector<float> value;
    std::vector<bool> known;
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
    for (int qy = 0; qy < p.height; ++qy) {
        for (int qx = 0; qx < p.width; ++qx) {
            const int rx = x - qx;
            const int ry = y - qy;
            const auto r2 = static_cast<float>(rx * rx + ry * ry);
            if (!p.knows(qx, qy) || r2 == 0 || double{r2} > double{radius} * radius) continue;
            const double gx = p.derivative(qx, qy, 1, 0);
            const double gy = p.derivative(qx, qy, 0, 1);
            double value = p.value[p.at(qx, qy)];
            float weight = 0;
            if (flag == zmoiInpaintMarching) {
                const float d =
                    std::fabs(static_cast<float>(rx) * tx + static_cast<float>(ry) * ty);
                const float apart = times.value[times.at(x, y)] - times.value[times.at(qx, qy)];
                weight =
                    alignment(d * (1 / std::sqrt(r2))) * (1 / r2) * (1 / (1 + std::fabs(apart)));
                value += gx * rx + gy * ry;
            } else {
                const auto e = static_cast<float>(gy * rx - gx * ry);
                const auto s = static_cast<float>(gx * gx + gy * gy);
                weight = (e * e + r2) / ((s + 1) * r2) * (1 / r2) * (1 / r2);
            }
            const auto lane = static_cast<size_t>(static_cast<int>(radius) - rx) % 8;
            sums[lane] += weight * static_cast<float>(value);
            weights[lane] += weight;
        }
    }
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
        return x >= 0 && y >= 0 && x < size.width && y < size.height && mask.get(x, y) != 0;
    };
    kit::Image<Zmo8u> away(size);
    kit::Image<Zmo32f> arrival(size);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const bool touches = selected(x - 1, y) || selected(x + 1, y) || selected(x, y - 1) ||
                                 selected(x, y + 1);
            away.set(x, y, selected(x, y) || !touches);
        }
    }
    int bytes = 0;
    zmoiFastMarchingGetBufferSize(size, zmo8u, 1, &bytes);
    kit::Buffer buffer(bytes);
    zmoiFastMarching_8u32f_C1R(away.ptr(), away.step(), arrival.ptr(), arrival.step(), size, 1e30F,
                               buffer.ptr());
    Plane times(size);
    for (size_t i = 0; i < times.value.size(); ++i) {
        const int x = static_cast<int>(i) % size.width;
        const int y = static_cast<int>(i) / size.width;
        const float time = arrival.get(x, y);
        times.known[i] = !selected(x, y);
        times.value[i] = times.known[i] ? -std::min(time, radius) : time;
    }
    return times;
}

kit::Image<Zmo8u> inpainted(const kit::Image<Zmo8u>& src, const kit::Image<Zmo8u>& mask,
                            float radius, ZmoiInpaintFlag flag) {
    kit::Image<Zmo8u> result = src;
    Plane times = timesFor(mask, radius);
    if (std::ranges::count(times.known, true) == 0) return result;
    std::vector<size_t> order;
    for (size_t i = 0; i < times.value.size(); ++i) {
        if (!times.known[i]) order.push_back(i);
    }
    std::ranges::stable_sort(order, {}, [&](size_t i) { return times.value[i]; });
    std::vector<Plane> picture(static_cast<size_t>(src.channels()), times);
    const auto each = [&](auto body) {
        for (int c = 0; c < src.channels(); ++c) body(picture[static_cast<size_t>(c)], c);
    };
    const auto placeOf = [&](size_t i) {
        return ZmoiPoint{static_cast<int>(i) % times.width, static_cast<int>(i) / times.width};
    };
    each([&](Plane& plane, int c) {
        for (size_t i = 0; i < plane.value.size(); ++i)
            plane.value[i] = src.get(placeOf(i).x, placeOf(i).y, c);
    });
    for (const size_t i : order) {
        const ZmoiPoint p = placeOf(i);
        each([&](Plane& plane, int c) {
            const float mean = meanAround(plane, times, p.x, p.y, radius, flag);
            plane.value[i] = std::nearbyint(std::clamp(mean, 0.0F, 255.0F));
            plane.known[i] = true;
            result.set(p.x, p.y, c, static_cast<Zmo8u>(plane.value[i]));
        });
        times.known[i] = true;
    }
    return result;
}

// Masks with nothing, with single pixels, with areas, and with everything.
void expectOracle(ZmoiSize size, int selected, int channels, size_t turn) {
    const float radii[] = {1, 2.5F, 1.4F, 6, 64};
    const float radius = radii[turn % 5];
    const kit::Layout layout = kit::layouts()[turn % 4];
    const auto flag = turn % 7 % 2 ? zmoiInpaintMarching : zmoiInpaintDiffusion;
    SCOPED_TRACE(testing::Message() << size << " " << layout << " C" << channels << " " << selected
                                    << " flag " << flag << " " << radius);
    kit::Random random(turn);
    kit::Image<Zmo8u> src(size, layout, 0, channels);
    src.fill([&] { return random.between(0, 3) ? random.between(100, 110) : 255; });
    kit::Image<Zmo8u> mask(size, {layout.misalign + 1, layout.padding + 2});
    bool any = false;
    mask.fill([&] {
        const bool selects = random.between(0, 999) < selected;
        any |= selects;
        return selects ? random.between(1, 255) : 0;
    });
    const kit::Image<Zmo8u> want = inpainted(src, mask, radius, flag);
    kit::forEachLevel([&] {
        kit::Image<Zmo8u> dst(size, {layout.misalign + 2, layout.padding}, 0, channels);
        kit::Buffer buffer = bufferFor(size, channels);
        const ZmoStatus status = kit::watched([&] {
            return functionFor(channels)(src.ptr(), src.step(), mask.ptr(), mask.step(), dst.ptr(),
                                         dst.step(), size, radius, flag, buffer.ptr());
        });
        EXPECT_EQ(status, any ? zmoStsNoErr : zmoStsEmptyMask);
        kit::expectPixels(dst, [&](int x, int y, int c) { return want.get(x, y, c); });
        dst.expectSurroundingsUntouched("image");
        buffer.expectSurroundingsUntouched();
    });
    src.expectUntouched("source");
    mask.expectUntouched("mask");
}

TEST(Inpaint, Oracle) {
    size_t turn = 0;
    for (const ZmoiSize size : kit::sizes()) {
        for (const int selected : {0, 150, 900, 1000}) {
            for (const int channels : {1, 3}) expectOracle(size, selected, channels, turn++);
        }
    }
}

TEST(Inpaint, BadArguments) {
    const ZmoiSize size{12, 4};
    for (const int channels : {1, 3}) {
        kit::Image<Zmo8u> src(size, {}, 0, channels);
        kit::Image<Zmo8u> mask(size);
        mask.fill([] { return 0; });
        mask.set(3, 3, 1);
        kit::Image<Zmo8u> dst(size, {}, 0, channels);
        kit::Buffer buffer = bufferFor(size, channels);
        kit::expectBadParts(
            {{src.ptr(), mask.ptr(), dst.ptr(), buffer.ptr()},
             {src.step(), mask.step(), dst.step()},
             size,
             {3, zmoiInpaintDiffusion}},
            [&](const kit::Parts& c) {
                return functionFor(channels)(c.at<Zmo8u>(0), c.steps[0], c.at<Zmo8u>(1), c.steps[1],
                                             c.at<Zmo8u>(2), c.steps[2], c.roi, c.values[0],
                                             static_cast<ZmoiInpaintFlag>(c.whole(1)),
                                             c.at<Zmo8u>(3));
            },
            {{0, 0.99F, zmoStsRangeErr},
             {0, 64.01F, zmoStsRangeErr},
             {0, NAN, zmoStsRangeErr},
             {1, 2, zmoStsFlagErr}},
            [&] {
                dst.expectUntouched("image");
                buffer.expectUntouched();
            });
        kit::expectBadQueries(zmoiInpaintGetBufferSize, zmo8u, channels);
    }
}

}  // namespace
