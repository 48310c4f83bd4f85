#include <algorithm>
#include <cmath>

#include "kit.h"
#include "zmocv.h"

namespace {

struct Args {
    const Zmo8u* pSrc;
    int srcStep;
    const Zmo8u* pMask;
    int maskStep;
    Zmo8u* pDst;
    int dstStep;
    ZmoiSize roi;
    float radius;
    ZmoiInpaintFlag flag;
    Zmo8u* pBuffer;
};

template <int channels>
ZmoStatus run(const Args& a) {
    const auto function = channels == 1 ? zmoiInpaint_8u_C1R : zmoiInpaint_8u_C3R;
    return function(a.pSrc, a.srcStep, a.pMask, a.maskStep, a.pDst, a.dstStep, a.roi, a.radius,
                    a.flag, a.pBuffer);
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

// Fast marching over the pixels for which goal holds, up to limit; arrive(x, y) with each.
template <class Goal, class Arrive>
void march(Plane& times, Goal goal, double limit, Arrive arrive) {
    std::vector<float> waiting(times.value.size(), INFINITY);
    const auto smaller = [&](int x, int y, int dx, int dy) -> double {
        float least = INFINITY;
        if (times.knows(x - dx, y - dy)) least = times.value[times.at(x - dx, y - dy)];
        if (times.knows(x + dx, y + dy))
            least = std::min(least, times.value[times.at(x + dx, y + dy)]);
        return least;
    };
    const auto solve = [&](int x, int y) {
        const bool inside = x >= 0 && y >= 0 && x < times.width && y < times.height;
        if (!inside || times.known[times.at(x, y)] || !goal(x, y)) return;
        const auto a = static_cast<float>(smaller(x, y, 1, 0));
        const auto b = static_cast<float>(smaller(x, y, 0, 1));
        float time = std::min(a, b) + 1;
        if (std::fabs(a - b) < 1) time = (a + b + std::sqrt(2 - (a - b) * (a - b))) / 2;
        float& best = waiting[times.at(x, y)];
        if (time < limit) best = std::min(best, time);
    };
    const auto leave = [&](int x, int y) {
        solve(x - 1, y);
        solve(x + 1, y);
        solve(x, y - 1);
        solve(x, y + 1);
    };
    for (int y = 0; y < times.height; ++y) {
        for (int x = 0; x < times.width; ++x) {
            if (times.known[times.at(x, y)]) leave(x, y);
        }
    }
    for (;;) {
        const auto next = std::ranges::min_element(waiting);
        if (*next == INFINITY) return;
        const auto i = next - waiting.begin();
        const int x = static_cast<int>(i % times.width);
        const int y = static_cast<int>(i / times.width);
        times.value[static_cast<size_t>(i)] = *next;
        *next = INFINITY;
        arrive(x, y);
        times.known[static_cast<size_t>(i)] = true;
        leave(x, y);
    }
}

float alignment(float value) {
    return value <= 0.01F ? 1e-6F : value;
}

// What the known pixels make of channel p at (x, y). The sums are floats, each operation rounded.
float meanAround(const Plane& p, const Plane& times, int x, int y, float radius,
                 ZmoiInpaintFlag flag) {
    const auto tx = static_cast<float>(times.derivative(x, y, 1, 0));
    const auto ty = static_cast<float>(times.derivative(x, y, 0, 1));
    float sum = 0;
    float weights = 0;
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
            sum += weight * static_cast<float>(value);
            weights += weight;
        }
    }
    return sum / weights;
}

kit::Image<Zmo8u> inpainted(const kit::Image<Zmo8u>& src, const kit::Image<Zmo8u>& mask,
                            float radius, ZmoiInpaintFlag flag) {
    const ZmoiSize size = src.size();
    kit::Image<Zmo8u> result = src;
    const auto selected = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < size.width && y < size.height && mask.get(x, y) != 0;
    };
    std::vector<Plane> picture(static_cast<size_t>(src.channels()), Plane(size));
    Plane times(size);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            for (int c = 0; c < src.channels(); ++c) {
                Plane& plane = picture[static_cast<size_t>(c)];
                plane.value[plane.at(x, y)] = src.get(x, y, c);
                plane.known[plane.at(x, y)] = !selected(x, y);
            }
            times.value[times.at(x, y)] = selected(x, y) ? 0 : radius;
            times.known[times.at(x, y)] =
                !selected(x, y) && (selected(x - 1, y) || selected(x + 1, y) ||
                                    selected(x, y - 1) || selected(x, y + 1));
            if (times.known[times.at(x, y)]) times.value[times.at(x, y)] = 0;
        }
    }
    march(
        times, [&](int x, int y) { return !selected(x, y); }, double{radius}, [](int, int) {});
    for (float& time : times.value) time = -time;
    times.known = picture[0].known;
    march(times, selected, 1e30, [&](int x, int y) {
        for (int c = 0; c < src.channels(); ++c) {
            const float mean =
                meanAround(picture[static_cast<size_t>(c)], times, x, y, radius, flag);
            result.set(x, y, c, static_cast<Zmo8u>(std::nearbyint(std::clamp(mean, 0.0F, 255.0F))));
        }
        for (int c = 0; c < src.channels(); ++c) {
            Plane& plane = picture[static_cast<size_t>(c)];
            plane.value[plane.at(x, y)] = result.get(x, y, c);
            plane.known[plane.at(x, y)] = true;
        }
    });
    return result;
}

// Masks with nothing, with single pixels, with areas, and with everything.
template <int channels>
void expectOracle() {
    kit::Random random(111);
    const float radii[] = {1, 2.5F, 1.4F, 6, 64};
    size_t turn = 0;
    for (const ZmoiSize size : kit::sizes()) {
        for (const int selected : {0, 150, 900, 1000}) {
            const kit::Layout layout = kit::layouts()[turn % 4];
            const float radius = radii[turn % 5];
            const auto flag = turn % 7 % 2 ? zmoiInpaintMarching : zmoiInpaintDiffusion;
            SCOPED_TRACE(testing::Message() << size << " " << layout << " C" << channels << " "
                                            << selected << " flag " << flag << " " << radius);
            kit::Image<Zmo8u> src(size, layout, 0, channels);
            src.fill([&] { return random.between(0, 3) ? random.between(100, 110) : 255; });
            kit::Image<Zmo8u> mask(size, {layout.misalign + 1, layout.padding + 2});
            mask.fill(
                [&] { return random.between(0, 999) < selected ? random.between(1, 255) : 0; });
            if (selected < 1000) mask.set(size.width / 2, size.height / 2, 0);
            mask.snapshot();
            bool any = false;
            for (int i = 0; i < size.width * size.height; ++i)
                any |= mask.get(i % size.width, i / size.width) != 0;
            const kit::Image<Zmo8u> want = inpainted(src, mask, radius, flag);
            kit::forEachLevel([&] {
                kit::Image<Zmo8u> dst(size, {layout.misalign + 2, layout.padding}, 0, channels);
                kit::Buffer buffer = bufferFor(size, channels);
                EXPECT_EQ(kit::watched([&] {
                              return run<channels>({src.ptr(), src.step(), mask.ptr(), mask.step(),
                                                    dst.ptr(), dst.step(), size, radius, flag,
                                                    buffer.ptr()});
                          }),
                          any ? zmoStsNoErr : zmoStsEmptyMask);
                kit::expectPixels(dst, [&](int x, int y, int c) { return want.get(x, y, c); });
                dst.expectSurroundingsUntouched("image");
                buffer.expectSurroundingsUntouched();
            });
            src.expectUntouched("source");
            mask.expectUntouched("mask");
            ++turn;
        }
    }
}

TEST(Inpaint, Oracle) {
    expectOracle<1>();
    expectOracle<3>();
}

// A ramp goes on through a hole by its gradient, an edge by its level line; what lies below the mask
// is of no account.
TEST(Inpaint, ContinuesThePicture) {
    const ZmoiSize size{41, 41};
    kit::Image<Zmo8u> mask(size);
    mask.fill([] { return 0; });
    for (int y = 17; y < 24; ++y) {
        for (int x = 17; x < 24; ++x) mask.set(x, y, 1);
    }
    const auto worst = [&](ZmoiInpaintFlag flag, auto picture) {
        kit::Image<Zmo8u> src(size);
        kit::Image<Zmo8u> dst(size);
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x)
                src.set(x, y, mask.get(x, y) ? Zmo8u(99) : static_cast<Zmo8u>(picture(x, y)));
        }
        kit::Buffer buffer = bufferFor(size, 1);
        kit::succeed([&] {
            return run<1>({src.ptr(), src.step(), mask.ptr(), mask.step(), dst.ptr(), dst.step(),
                           size, 5, flag, buffer.ptr()});
        });
        int difference = 0;
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x)
                difference = std::max(difference, std::abs(dst.get(x, y) - picture(x, y)));
        }
        return difference;
    };
    EXPECT_LE(worst(zmoiInpaintMarching, [](int x, int y) { return 3 * x + 2 * y + 10; }), 2);
    EXPECT_LE(worst(zmoiInpaintDiffusion, [](int x, int) { return x < 20 ? 40 : 200; }), 64);
}

TEST(Inpaint, BadArguments) {
    const ZmoiSize size{12, 4};
    kit::Image<Zmo8u> src(size, {}, 0, 3);
    kit::Image<Zmo8u> mask(size);
    mask.fill([] { return 0; });
    mask.set(3, 3, 1);
    kit::Image<Zmo8u> dst(size, {}, 0, 3);
    kit::Buffer buffer = bufferFor(size, 3);
    const auto radius = [](const char* name, float value) {
        return kit::Fault<Args>{name, zmoStsRangeErr, [value](Args& a) { a.radius = value; }};
    };
    kit::expectFaults(
        Args{src.ptr(), src.step(), mask.ptr(), mask.step(), dst.ptr(), dst.step(), size, 3,
             zmoiInpaintDiffusion, buffer.ptr()},
        run<3>,
        {{"null source", zmoStsNullPtrErr, [](Args& a) { a.pSrc = nullptr; }},
         {"null mask", zmoStsNullPtrErr, [](Args& a) { a.pMask = nullptr; }},
         {"null destination", zmoStsNullPtrErr, [](Args& a) { a.pDst = nullptr; }},
         {"null buffer", zmoStsNullPtrErr, [](Args& a) { a.pBuffer = nullptr; }},
         {"width 0", zmoStsSizeErr, [](Args& a) { a.roi.width = 0; }},
         {"height negative", zmoStsSizeErr, [](Args& a) { a.roi.height = -1; }},
         {"source step short", zmoStsStepErr, [](Args& a) { a.srcStep = 35; }},
         {"mask step short", zmoStsStepErr, [](Args& a) { a.maskStep = 11; }},
         {"destination step short", zmoStsStepErr, [](Args& a) { a.dstStep = 35; }},
         radius("radius small", 0.99F),
         radius("radius large", 64.01F),
         radius("no number", NAN),
         {"flag", zmoStsFlagErr, [](Args& a) { a.flag = static_cast<ZmoiInpaintFlag>(2); }}},
        [&] {
            dst.expectUntouched("image");
            buffer.expectUntouched();
        });
    int bytes = -1;
    EXPECT_EQ(zmoiInpaintGetBufferSize(size, zmo8u, 1, nullptr), zmoStsNullPtrErr);
    EXPECT_EQ(zmoiInpaintGetBufferSize({0, 4}, zmo16u, 2, &bytes), zmoStsSizeErr);
    EXPECT_EQ(zmoiInpaintGetBufferSize(size, zmo16u, 2, &bytes), zmoStsDataTypeErr);
    EXPECT_EQ(zmoiInpaintGetBufferSize(size, zmo8u, 4, &bytes), zmoStsChannelsErr);
    EXPECT_EQ(zmoiInpaintGetBufferSize({40000, 40000}, zmo8u, 1, &bytes), zmoStsTooLargeErr);
    EXPECT_EQ(bytes, -1);
}

}  // namespace
