#include <algorithm>
#include <cmath>

#include "kit.h"
#include "zmocv.h"

namespace {

constexpr double unreached = std::numeric_limits<double>::infinity();

// Lengths of the shortest paths to the zero pixels, found by trying all steps until nothing changes.
std::vector<double> chamferLengths(const kit::Image<Zmo8u>& src, const std::vector<double>& steps) {
    const ZmoiSize size = src.size();
    const auto at = [&](int x, int y) {
        return static_cast<size_t>(y) * static_cast<size_t>(size.width) + static_cast<size_t>(x);
    };
    std::vector<double> lengths;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            lengths.push_back(src.get(x, y) == 0 ? 0 : unreached);
        }
    }
    const auto improve = [&](int x, int y) {
        bool improved = false;
        for (int dy = -2; dy <= 2; ++dy) {
            for (int dx = -2; dx <= 2; ++dx) {
                // 1, 2 and 5 are the squared lengths of the three kinds of steps.
                const int square = dx * dx + dy * dy;
                const size_t kind = square == 1 ? 0 : square == 2 ? 1 : square == 5 ? 2 : 9;
                if (kind >= steps.size() || x + dx < 0 || y + dy < 0 || x + dx >= size.width ||
                    y + dy >= size.height) {
                    continue;
                }
                const double length = lengths[at(x + dx, y + dy)] + steps[kind];
                if (length >= lengths[at(x, y)]) continue;
                lengths[at(x, y)] = length;
                improved = true;
            }
        }
        return improved;
    };
    for (bool improved = true; improved;) {
        improved = false;
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) improved |= improve(x, y);
        }
    }
    return lengths;
}

// All arguments that any of the functions takes.
template <class T>
struct Args {
    const Zmo8u* pSrc;
    int srcStep;
    T* pDst;
    int dstStep;
    ZmoiSize roi;
    std::vector<double> values;  // metrics or radius
    Zmo8u* pBuffer;
};

template <class T>
struct Function {
    const char* name;
    size_t values;
    ZmoStatus (*run)(const Args<T>&);
    ZmoStatus (*bufferSize)(ZmoiSize, ZmoDataType, int, int*);
};

// No metrics at all stand for a null pointer.
template <class T, class Metric>
ZmoStatus callChamfer(ZmoStatus (*run)(const Zmo8u*, int, T*, int, ZmoiSize, const Metric*),
                      const Args<T>& a) {
    std::vector<Metric> metrics;
    for (const double value : a.values) metrics.push_back(static_cast<Metric>(value));
    return run(a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi,
               metrics.empty() ? nullptr : metrics.data());
}

#define CHAMFER(size, types)                                                            \
    {                                                                                   \
#size "x" #size "_" #types, size / 2 + 1, [](const auto& a) {                         \
            return callChamfer(zmoiDistanceTransform_##size##x##size##_##types##_C1R, a);     \
        }, nullptr \
    }

std::vector<Function<Zmo8u>> functions(Zmo8u) {
    return {CHAMFER(3, 8u), CHAMFER(5, 8u)};
}
std::vector<Function<Zmo16u>> functions(Zmo16u) {
    return {CHAMFER(3, 8u16u), CHAMFER(5, 8u16u)};
}
std::vector<Function<Zmo32f>> functions(Zmo32f) {
    return {CHAMFER(3, 8u32f), CHAMFER(5, 8u32f)};
}

const Function<Zmo32f> euclidean = {"TrueDistanceTransform", 0,
                                    [](const auto& a) {
                                        return zmoiTrueDistanceTransform_8u32f_C1R(
                                            a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi, a.pBuffer);
                                    },
                                    zmoiTrueDistanceTransformGetBufferSize};
const Function<Zmo32f> marching = {"FastMarching", 1,
                                   [](const auto& a) {
                                       return zmoiFastMarching_8u32f_C1R(
                                           a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi,
                                           static_cast<float>(a.values.at(0)), a.pBuffer);
                                   },
                                   zmoiFastMarchingGetBufferSize};

// Runs at every level and hands the result to check.
template <class T, class Check>
void run(const Function<T>& function, const kit::Image<Zmo8u>& src, kit::Layout layout,
         const std::vector<double>& values, Check check) {
    int bytes = 64;
    if (function.bufferSize) {
        EXPECT_EQ(function.bufferSize(src.size(), zmo8u, 1, &bytes), zmoStsNoErr);
    }
    std::vector<kit::Image<T>> results;
    kit::forEachLevel([&] {
        kit::Image<T> dst(src.size(), layout);
        kit::Buffer buffer(bytes);
        kit::succeed([&] {
            return function.run(
                {src.ptr(), src.step(), dst.ptr(), dst.step(), src.size(), values, buffer.ptr()});
        });
        dst.expectSurroundingsUntouched("distances");
        buffer.expectSurroundingsUntouched();
        results.push_back(dst);
    });
    src.expectUntouched("source");
    for (const auto& result : results) EXPECT_TRUE(kit::samePixels(result, results[0]));
    check(results[0]);
}

// Few zero pixels, and none, one or all in some images.
template <class Body>
void forEachSource(uint64_t stream, Body body) {
    kit::Random random(stream);
    int turn = 0;
    for (const ZmoiSize size : kit::sizes()) {
        const kit::Layout layout = kit::layouts()[static_cast<size_t>(turn) % 4];
        for (const int zeros : {0, 1, 30, 1000}) {
            SCOPED_TRACE(testing::Message() << size << " " << layout << " zeros " << zeros);
            kit::Image<Zmo8u> src(size, {layout.misalign + 3, layout.padding + 1});
            src.fill([&] { return random.between(0, 999) < zeros ? 0 : random.between(1, 255); });
            if (zeros == 1) src.set(static_cast<int>(random.between(0, size.width - 1)), 0, 0);
            src.snapshot();
            body(src, layout, static_cast<size_t>(turn++));
        }
    }
}

template <class T>
void expectShortestPaths(const std::vector<std::vector<double>>& metrics) {
    for (const auto& function : functions(T())) {
        SCOPED_TRACE(function.name);
        forEachSource(81, [&](const kit::Image<Zmo8u>& src, kit::Layout layout, size_t turn) {
            std::vector<double> steps = metrics[turn % metrics.size()];
            steps.resize(function.values);
            const std::vector<double> lengths = chamferLengths(src, steps);
            size_t i = 0;
            const auto expected = [&](int, int) {
                return std::min<double>(lengths[i++], std::numeric_limits<T>::max());
            };
            run(function, src, layout, steps,
                [&](const kit::Image<T>& dst) { kit::expectPixels(dst, expected); });
        });
    }
}

// The 32f lengths are sums of few quarters: exact.
TEST(Chamfer, ShortestPaths) {
    expectShortestPaths<Zmo8u>({{3, 4, 7}, {5, 7, 11}, {100, 150, 220}, {255, 300, 700}});
    expectShortestPaths<Zmo16u>({{5, 7, 11}, {1000, 1400, 2200}, {40000, 60000, 90000}});
    expectShortestPaths<Zmo32f>({{1, 1.25, 2.25}, {0.75, 1, 1.75}});
}

TEST(Chamfer, InPlaceGivesTheSame) {
    forEachSource(82, [&](const kit::Image<Zmo8u>& src, kit::Layout layout, size_t) {
        const Zmo32s metrics[] = {5, 7, 11};
        for (const auto& function : functions(Zmo8u())) {
            const auto inPlace = function.values == 2 ? zmoiDistanceTransform_3x3_8u_C1IR
                                                      : zmoiDistanceTransform_5x5_8u_C1IR;
            run(function, src, layout, {5, 7, 11}, [&](const kit::Image<Zmo8u>& expected) {
                kit::forEachLevel([&] {
                    kit::Image<Zmo8u> image = src;
                    kit::succeed(
                        [&] { return inPlace(image.ptr(), image.step(), image.size(), metrics); });
                    EXPECT_TRUE(kit::samePixels(image, expected));
                    image.expectSurroundingsUntouched("image");
                });
            });
        }
    });
}

TEST(TrueDistance, NearestZeroPixel) {
    forEachSource(83, [&](const kit::Image<Zmo8u>& src, kit::Layout layout, size_t) {
        std::vector<ZmoiPoint> zeros;
        for (int y = 0; y < src.size().height; ++y) {
            for (int x = 0; x < src.size().width; ++x) {
                if (src.get(x, y) == 0) zeros.push_back({x, y});
            }
        }
        run(euclidean, src, layout, {}, [&](const kit::Image<Zmo32f>& dst) {
            kit::expectPixels(dst, [&](int x, int y) {
                int64_t least = INT64_MAX;
                for (const ZmoiPoint p : zeros) {
                    const int64_t dx = x - p.x;
                    const int64_t dy = y - p.y;
                    least = std::min(least, dx * dx + dy * dy);
                }
                return zeros.empty() ? double{std::numeric_limits<float>::max()}
                                     : std::sqrt(static_cast<double>(least));
            });
        });
    });
}

// Each arrival time solves the equation with those of its neighbours, in double precision.
TEST(FastMarching, TimesSolveTheEquation) {
    forEachSource(84, [&](const kit::Image<Zmo8u>& src, kit::Layout layout, size_t turn) {
        const double radius = turn % 2 == 0 ? 4.5 : 1000;
        run(marching, src, layout, {radius}, [&](const kit::Image<Zmo32f>& dst) {
            const auto at = [&](int x, int y) {
                const bool inside =
                    x >= 0 && y >= 0 && x < src.size().width && y < src.size().height;
                const double time = inside ? dst.get(x, y) : unreached;
                return time < radius ? time : unreached;
            };
            double worst = 0;
            for (int y = 0; y < src.size().height; ++y) {
                for (int x = 0; x < src.size().width; ++x) {
                    const double a = std::min(at(x - 1, y), at(x + 1, y));
                    const double b = std::min(at(x, y - 1), at(x, y + 1));
                    const double near = std::min(a, b);
                    double want = near + 1;
                    if (near != unreached && std::fabs(a - b) < 1) {
                        want = (a + b + std::sqrt(2 - (a - b) * (a - b))) / 2;
                    }
                    want = src.get(x, y) == 0 ? 0 : std::min(want, radius);
                    worst = std::max(worst, std::fabs(want - double{dst.get(x, y)}));
                }
            }
            EXPECT_LT(worst, 2e-4);
        });
    });
}

template <class T>
void expectBadArguments(const Function<T>& function) {
    using A = Args<T>;
    SCOPED_TRACE(function.name);
    kit::Image<Zmo8u> src({12, 4});
    src.fill([] { return 3; });
    kit::Image<T> dst({12, 4});
    kit::Buffer buffer(4096);
    std::vector<kit::Fault<A>> faults = {
        {"null source", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }},
        {"null destination", zmoStsNullPtrErr, [](A& a) { a.pDst = nullptr; }},
        {"width 0", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }},
        {"height negative", zmoStsSizeErr, [](A& a) { a.roi.height = -1; }},
        {"source step short", zmoStsStepErr, [](A& a) { a.srcStep = 11; }},
        {"destination step short", zmoStsStepErr,
         [](A& a) { a.dstStep -= static_cast<int>(sizeof(T)); }},
    };
    for (size_t i = 0; i < function.values; ++i) {
        faults.push_back({"value 0", zmoStsRangeErr, [i](A& a) {
                              if (a.values.size() > i) a.values[i] = 0;
                          }});
    }
    if (function.bufferSize) {
        faults.insert(faults.begin(),
                      {"null buffer", zmoStsNullPtrErr, [](A& a) { a.pBuffer = nullptr; }});
        int size = -1;
        EXPECT_EQ(function.bufferSize({4, 4}, zmo8u, 1, nullptr), zmoStsNullPtrErr);
        EXPECT_EQ(function.bufferSize({4, 0}, zmo16u, 1, &size), zmoStsSizeErr);
        EXPECT_EQ(function.bufferSize({4, 4}, zmo16u, 3, &size), zmoStsDataTypeErr);
        EXPECT_EQ(function.bufferSize({4, 4}, zmo8u, 3, &size), zmoStsChannelsErr);
        EXPECT_EQ(function.bufferSize({INT32_MAX, 2}, zmo8u, 1, &size), zmoStsTooLargeErr);
        EXPECT_EQ(size, -1);
    } else {
        faults.insert(faults.begin(),
                      {"null metrics", zmoStsNullPtrErr, [](A& a) { a.values.clear(); }});
    }
    const std::vector<double> values(function.values, 2);
    kit::expectFaults(
        A{src.ptr(), src.step(), dst.ptr(), dst.step(), {12, 4}, values, buffer.ptr()},
        function.run, faults, [&] {
            dst.expectUntouched("distances");
            buffer.expectUntouched();
        });
}

TEST(Distance, BadArguments) {
    for (const auto& function : functions(Zmo8u())) expectBadArguments(function);
    for (const auto& function : functions(Zmo16u())) expectBadArguments(function);
    for (const auto& function : functions(Zmo32f())) expectBadArguments(function);
    expectBadArguments(euclidean);
    expectBadArguments(marching);
}

}  // namespace
