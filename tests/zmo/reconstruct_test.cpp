#include <algorithm>
#include <cmath>

#include "call.h"
#include "oracle/region.h"
#include "zmocv.h"

namespace {

template <class T>
using Reconstruct = ZmoStatus (*)(const T*, int, const T*, int, T*, int, ZmoiSize, int, Zmo8u*);

template <class T>
struct Pair {
    Reconstruct<T> erode;
    Reconstruct<T> dilate;
};
#define PAIR(type)                                                                              \
    template <>                                                                                 \
    const Pair<Zmo##type> functions<Zmo##type> = {zmoiMorphReconstructErode_##type##_C1IR_Copy, \
                                                  zmoiMorphReconstructDilate_##type##_C1IR_Copy};
template <class T>
const Pair<T> functions;
PAIR(8u)
PAIR(16u)
PAIR(32f)
PAIR(64f)

template <class T>
struct Case {
    Case(ZmoiSize size, kit::Layout layout, int near, bool up = true)
        : limit(size, layout),
          marker(size, {layout.misalign * 5 % 64, layout.padding + 2}),
          result(size, {layout.misalign * 3 % 64, layout.padding + 1}),
          connectivity(near),
          dilates(up) {}
    // Not watched: a NaN raises flags.
    ZmoStatus run() {
        kit::Buffer buffer =
            kit::bufferOf(zmoiMorphReconstructGetBufferSize, limit.size(), kit::typeOf<T>, 1);
        result.fill([] { return 3; });
        return kit::runUnwatched(dilates ? functions<T>.dilate : functions<T>.erode, limit, marker,
                                 result, limit.size(), connectivity, buffer);
    }

    kit::Image<T> limit;
    kit::Image<T> marker;
    kit::Image<T> result;
    int connectivity;
    bool dilates;
};

// The definition: one step of every pixel at a time, until nothing changes.
template <class T>
kit::Image<T> definition(const Case<T>& c) {
    const ZmoiSize size = c.limit.size();
    const auto low = [&](T a, T b) { return c.dilates ? std::min(a, b) : std::max(a, b); };
    const auto high = [&](T a, T b) { return c.dilates ? std::max(a, b) : std::min(a, b); };
    kit::Image<T> want(size);
    want.fill([&](int x, int y) { return low(c.marker.get(x, y), c.limit.get(x, y)); });
    for (bool changes = true; changes;) {
        const kit::Image<T> before = want;
        changes = false;
        want.fill([&](int x, int y) {
            T value = before.get(x, y);
            oracle::forEachNeighbour(size, x, y, c.connectivity,
                                     [&](int i, int j) { value = high(value, before.get(i, j)); });
            value = low(value, c.limit.get(x, y));
            changes |= value != before.get(x, y);
            return value;
        });
    }
    return want;
}

// Smooth hills, noise, and walls with a gap at either end, through which only the queue finds its way.
template <class T>
void expectEverywhere(double lowest, double highest) {
    kit::forEachTurn(67, [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
        const size_t kind = turn % 6;
        const bool dilates = kind % 2 == 1;
        Case<T> c(size, layout, turn / 2 % 2 == 0 ? 4 : 8, dilates);
        const double far = dilates ? lowest : highest;
        const double near = dilates ? highest : lowest;
        const auto noise = [&] { return random.uniform(lowest, highest); };
        c.limit.fill([&](int x, int y) {
            const bool wall = x % 4 == 1 && y != (x % 8 == 1 ? 0 : size.height - 1);
            const double hill = 0.5 + 0.5 * std::sin(x * 0.7) * std::cos(y * 0.9);
            if (kind < 2) return noise();
            return kind < 4 ? lowest + hill * (highest - lowest) : wall ? far : near;
        });
        c.marker.fill([&](int x, int y) {
            if (kind < 2) return noise();
            return random.between(0, 99) == 0 || x + y == 0 ? near : far;
        });
        kit::expectPixels(kit::atAllLevels([&] {
                              kit::succeed([&] { return c.run(); });
                              return c.result;
                          }),
                          definition(c));
    });
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
    kit::atAllLevels([&] {
        EXPECT_EQ(c.run(), zmoStsNoErr);
        return c.result;
    });
}

// One marker fills a corridor of many bends, to its far end.
TEST(Reconstruct, FollowsACorridorThroughTheWholeImage) {
    constexpr int side = 129;
    Case<Zmo8u> c({side, side}, {}, 4);
    c.marker.fill([](int x, int y) { return x + y == 0 ? 255 : 0; });
    c.limit.fill(
        [](int x, int y) { return x % 2 == 0 || y == (x % 4 == 1 ? 0 : side - 1) ? 255 : 0; });
    EXPECT_EQ(c.run(), zmoStsNoErr);
    kit::expectPixels(c.result, c.limit);
}

template <class T>
void expectBadArguments() {
    kit::Image<T> image({9, 4});
    kit::Image<T> result({9, 4});
    kit::Buffer buffer(4096);
    image.fill([] { return 1; });
    for (const auto function : {functions<T>.erode, functions<T>.dilate}) {
        kit::expectBadArguments(function, {{7, 6, zmoStsConnectivityErr}}, image, image, result,
                                image.size(), 4, buffer);
    }
}

TEST(Reconstruct, BadArguments) {
    expectBadArguments<Zmo8u>();
    expectBadArguments<Zmo16u>();
    expectBadArguments<Zmo32f>();
    expectBadArguments<Zmo64f>();
}

}  // namespace
