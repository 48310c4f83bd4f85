#include <algorithm>
#include <cmath>

#include "kit.h"
#include "zmocv.h"

namespace {

template <class T>
struct Args {
    const T* pSrc;
    int srcStep;
    const T* pSrc2;
    int src2Step;
    T* pSrcDst;
    int srcDstStep;
    ZmoiSize roi;
    int connectivity;
    Zmo8u* pBuffer;
};

#define RECONSTRUCT(T, type)                                                        \
    ZmoStatus call(bool dilates, const Args<T>& a) {                                \
        return (dilates ? zmoiMorphReconstructDilate_##type##_C1IR_Copy             \
                        : zmoiMorphReconstructErode_##type##_C1IR_Copy)(            \
            a.pSrc, a.srcStep, a.pSrc2, a.src2Step, a.pSrcDst, a.srcDstStep, a.roi, \
            a.connectivity, a.pBuffer);                                             \
    }                                                                               \
    ZmoDataType typeOf(T) {                                                         \
        return zmo##type;                                                           \
    }
RECONSTRUCT(Zmo8u, 8u)
RECONSTRUCT(Zmo16u, 16u)
RECONSTRUCT(Zmo32f, 32f)
RECONSTRUCT(Zmo64f, 64f)

template <class T>
struct Case {
    Case(ZmoiSize size, kit::Layout layout, int near, bool up = true)
        : limit(size, layout),
          marker(size, {layout.misalign * 5 % 64, layout.padding + 2}),
          result(size, {layout.misalign * 3 % 64, layout.padding + 1}),
          connectivity(near),
          dilates(up),
          buffer(told(size), layout.misalign) {}
    static int told(ZmoiSize size) {
        int bytes = 0;
        EXPECT_EQ(zmoiMorphReconstructGetBufferSize(size, typeOf(T()), 1, &bytes), zmoStsNoErr);
        return bytes;
    }
    Args<T> args() {
        return {limit.ptr(),   limit.step(), marker.ptr(), marker.step(), result.ptr(),
                result.step(), limit.size(), connectivity, buffer.ptr()};
    }
    kit::Image<T> limit;
    kit::Image<T> marker;
    kit::Image<T> result;
    int connectivity;
    bool dilates;
    kit::Buffer buffer;
    std::vector<T> want = {};
};

// The definition: one step of every pixel at a time, until nothing changes.
template <class T>
std::vector<T> definition(const Case<T>& c) {
    const ZmoiSize size = c.limit.size();
    const bool dilates = c.dilates;
    const auto at = [&](int x, int y) { return static_cast<size_t>(y * size.width + x); };
    const auto low = [&](T a, T b) { return dilates ? std::min(a, b) : std::max(a, b); };
    const auto high = [&](T a, T b) { return dilates ? std::max(a, b) : std::min(a, b); };
    std::vector<T> now;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x)
            now.push_back(low(c.marker.get(x, y), c.limit.get(x, y)));
    }
    for (std::vector<T> before; before != now;) {
        before = now;
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                for (int k = 0; k < 9; ++k) {
                    const int i = x + k % 3 - 1;
                    const int j = y + k / 3 - 1;
                    if (i < 0 || j < 0 || i >= size.width || j >= size.height) continue;
                    if (c.connectivity == 4 && i != x && j != y) continue;
                    now[at(x, y)] = high(now[at(x, y)], before[at(i, j)]);
                }
                now[at(x, y)] = low(now[at(x, y)], c.limit.get(x, y));
            }
        }
    }
    return now;
}

// Switching levels takes longer than a small call, so all cases run at one level before the next.
template <class T>
void expectDefinition(std::vector<Case<T>>& cases) {
    for (auto& c : cases) c.want = definition(c);
    kit::forEachLevel([&] {
        for (auto& c : cases) {
            const ZmoiSize size = c.limit.size();
            SCOPED_TRACE(testing::Message()
                         << size << " connectivity " << c.connectivity << " dilates " << c.dilates);
            c.result.fill([] { return 3; });
            kit::succeed([&] { return call(c.dilates, c.args()); });
            c.result.expectSurroundingsUntouched("result");
            c.buffer.expectSurroundingsUntouched();
            kit::expectPixels(c.result, [&](int x, int y) {
                return c.want[static_cast<size_t>(y * size.width + x)];
            });
            c.limit.expectUntouched("limit");
            c.marker.expectUntouched("marker");
        }
    });
}

// Smooth hills, noise, and a spiral wall through which only the queue finds its way.
template <class T>
void expectEverywhere(double lowest, double highest) {
    kit::Random random(67);
    const auto layouts = kit::layouts();
    auto sizes = kit::sizes();
    sizes.push_back({31, 31});
    size_t turn = 0;
    std::vector<Case<T>> cases;
    for (const ZmoiSize size : sizes) {
        for (int kind = 0; kind < 3; ++kind) {
            for (const bool dilates : {false, true}) {
                Case<T>& c =
                    cases.emplace_back(size, layouts[turn % 4], turn / 2 % 2 == 0 ? 4 : 8, dilates);
                ++turn;
                const double far = dilates ? lowest : highest;
                const double near = dilates ? highest : lowest;
                const auto draw = [&] { return static_cast<T>(random.uniform(lowest, highest)); };
                c.limit.fill(draw);
                c.marker.fill(draw);
                for (int y = 0; y < size.height && kind > 0; ++y) {
                    for (int x = 0; x < size.width; ++x) {
                        const bool wall = x % 4 == 1 && y != (x % 8 == 1 ? 0 : size.height - 1);
                        const double hill = 0.5 + 0.5 * std::sin(x * 0.7) * std::cos(y * 0.9);
                        c.limit.set(x, y,
                                    static_cast<T>(kind == 1 ? lowest + hill * (highest - lowest)
                                                   : wall    ? far
                                                             : near));
                        c.marker.set(
                            x, y,
                            static_cast<T>(random.between(0, 99) == 0 || x + y == 0 ? near : far));
                    }
                }
                c.limit.snapshot();
                c.marker.snapshot();
            }
        }
    }
    expectDefinition(cases);
}

TEST(Reconstruct, Oracle) {
    expectEverywhere<Zmo8u>(0, 255);
    expectEverywhere<Zmo16u>(0, 65535);
    expectEverywhere<Zmo32f>(-10, 10);
    expectEverywhere<Zmo64f>(-1e9, 1e9);
}

// With not-a-numbers the work ends, with the same bits at all levels.
TEST(Reconstruct, NotANumber) {
    Case<Zmo32f> c({40, 30}, {}, 8);
    kit::Random random(68);
    const auto draw = [&] {
        return random.between(0, 9) == 0   ? NAN
               : random.between(0, 9) == 0 ? HUGE_VAL
                                           : random.uniform(0, 1);
    };
    c.limit.fill(draw);
    c.marker.fill(draw);
    std::vector<std::vector<uint32_t>> bits;
    kit::forEachLevel([&] {
        EXPECT_EQ(call(true, c.args()), zmoStsNoErr);
        bits.emplace_back();
        for (int i = 0; i < 1200; ++i)
            bits.back().push_back(std::bit_cast<uint32_t>(c.result.get(i % 40, i / 40)));
    });
    for (const auto& other : bits) EXPECT_EQ(other, bits[0]);
}

// One marker fills a corridor of many bends, to its far end.
TEST(Reconstruct, FollowsACorridorThroughTheWholeImage) {
    constexpr int side = 129;
    Case<Zmo8u> c({side, side}, {}, 4);
    c.marker.fill([] { return 0; });
    c.marker.set(0, 0, 255);
    c.limit.fill([] { return 255; });
    for (int x = 1; x < side; x += 2) {
        for (int y = 0; y < side; ++y)
            c.limit.set(x, y, y == (x % 4 == 1 ? 0 : side - 1) ? 255 : 0);
    }
    EXPECT_EQ(call(true, c.args()), zmoStsNoErr);
    kit::expectPixels(c.result, [&](int x, int y) { return c.limit.get(x, y); });
}

TEST(Reconstruct, BadArguments) {
    Case<Zmo16u> c({9, 4}, {}, 8);
    c.result.snapshot();
    using A = Args<Zmo16u>;
    for (const bool dilates : {false, true}) {
        kit::expectFaults(
            c.args(), [&](const A& a) { return call(dilates, a); },
            std::vector<kit::Fault<A>>{
                {"null limit", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }},
                {"null marker", zmoStsNullPtrErr, [](A& a) { a.pSrc2 = nullptr; }},
                {"null result", zmoStsNullPtrErr, [](A& a) { a.pSrcDst = nullptr; }},
                {"null buffer", zmoStsNullPtrErr, [](A& a) { a.pBuffer = nullptr; }},
                {"height 0", zmoStsSizeErr, [](A& a) { a.roi.height = 0; }},
                {"limit step", zmoStsStepErr, [](A& a) { a.srcStep = 17; }},
                {"marker step", zmoStsStepErr, [](A& a) { a.src2Step = 21; }},
                {"result step", zmoStsStepErr, [](A& a) { a.srcDstStep = 0; }},
                {"connectivity", zmoStsConnectivityErr, [](A& a) { a.connectivity = 6; }},
            },
            [&] { c.result.expectUntouched("result"); });
        c.result.snapshot();
    }
    int size = 0;
    EXPECT_EQ(zmoiMorphReconstructGetBufferSize({9, 9}, zmo16s, 1, &size), zmoStsDataTypeErr);
    EXPECT_EQ(zmoiMorphReconstructGetBufferSize({9, 9}, zmo8u, 3, &size), zmoStsChannelsErr);
    EXPECT_EQ(zmoiMorphReconstructGetBufferSize({0, 9}, zmo8u, 1, &size), zmoStsSizeErr);
    EXPECT_EQ(zmoiMorphReconstructGetBufferSize({50000, 50000}, zmo8u, 1, &size),
              zmoStsTooLargeErr);
}

}  // namespace
