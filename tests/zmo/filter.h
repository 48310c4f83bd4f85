// Filters of images against their oracles: borders, sizes and values change from turn to turn.
#pragma once

#include "call.h"
#include "oracle/border.h"

namespace filters {

constexpr int margin = 12;

template <class S, class D>
struct Call {
    kit::Rows<const S> src;
    ZmoiSize srcRoi;
    kit::Rows<D> dst;
    ZmoiSize roi;
    ZmoiBorderType border;
    const S* pValue;
};

// A function with its arguments chosen by the number of the turn, and its oracle.
template <class S, class D>
struct Filter {
    const char* name;
    int channels;
    std::function<void(const Call<S, D>&, size_t turn)> run = {};
    std::function<D(const oracle::Extended<S>&, int x, int y, size_t turn)> pixel = {};
    std::vector<ZmoiBorderType> borders = {zmoiBorderReplicate, zmoiBorderConst, zmoiBorderMirror,
                                           zmoiBorderInMem};
    bool isLarge = false;
    std::function<ZmoiSize(ZmoiSize, size_t turn)> srcSize = [](ZmoiSize roi, size_t) {
        return roi;
    };
};

// State and work buffer for what query(..., &stateSize, &bufferSize) tells.
struct Prepared {
    template <class Query, class... Args>
    explicit Prepared(Query query, Args... args) {
        int64_t sizes[2] = {};
        EXPECT_EQ(query(args..., &sizes[0], &sizes[1]), zmoStsNoErr);
        state = kit::Buffer(sizes[0]);
        buffer = kit::Buffer(sizes[1]);
    }
    kit::Buffer state{64};
    kit::Buffer buffer{64};
};

template <class S>
S drawn(kit::Random& random, size_t turn) {
    if constexpr (std::is_same_v<S, float>) {
        return static_cast<float>(random.uniform(-1000, 1000));
    } else {
        constexpr int64_t low = std::numeric_limits<S>::min();
        constexpr int64_t high = std::numeric_limits<S>::max();
        // All values, the ends of the type, or values so small that quotients are often halves.
        if (turn % 3 == 0) return static_cast<S>(random.between(low, high));
        if (turn % 3 == 1) return static_cast<S>(random.between(0, 1) != 0 ? low : high);
        return static_cast<S>(random.between(low < 0 ? -6 : 0, 6));
    }
}

template <class S, class D>
struct Case {
    Case(const Filter<S, D>& filter, ZmoiSize size, size_t number)
        : turn(number),
          border(filter.borders[number % filter.borders.size()]),
          src(filter.srcSize(size, number), kit::layouts()[number / 4 % 4], margin,
              filter.channels),
          dst(size, kit::layouts()[(number / 4 + number) % 4], 0, filter.channels),
          expected(size, {}, 0, filter.channels) {
        kit::Random random(number);
        src.fill([&] { return drawn<S>(random, turn); });
        for (S& v : value) v = drawn<S>(random, turn);
    }
    void takeOracle(const Filter<S, D>& filter) {
        expected.fill([&](int x, int y, int c) {
            return filter.pixel(oracle::Extended<S>{src, border, value[c], c}, x, y, turn);
        });
    }
    Call<S, D> call() {
        return {std::as_const(src).rows(),
                src.size(),
                dst.rows(),
                dst.size(),
                border,
                border == zmoiBorderConst ? value : nullptr};
    }

    size_t turn;
    ZmoiBorderType border;
    kit::Image<S> src;
    kit::Image<D> dst;
    kit::Image<D> expected;
    S value[4];
};

template <class S, class D>
void expectFarRows(const Filter<S, D>& filter) {
    kit::FarRows src;
    kit::FarRows dst;
    if (!src || !dst) GTEST_SKIP() << kit::FarRows::whyNot;
    // Turn 60 reduces by 2.
    constexpr size_t turn = 60;
    const bool reduces = filter.srcSize({8, 8}, turn).width > 8;
    Case<S, D> c(filter, {37, reduces ? kit::FarRows::count / 2 : kit::FarRows::count}, turn);
    filter.run(c.call(), turn);
    src.take(c.src);
    dst.take(c.expected);
    Call<S, D> far = c.call();
    far.src = src.rows<const S>();
    far.dst = dst.rows<D>();
    filter.run(far, turn);
    dst.expect(c.dst);
}

// Switching levels takes longer than a small call, so all cases run at one level before the next.
template <class S, class D>
void expectOracle(const Filter<S, D>& filter, int rounds = 1) {
    SCOPED_TRACE(filter.name);
    static size_t turn = 0;
    auto sizes = kit::sizes();
    sizes.insert(sizes.end(), {{530, 2}, {600, 1}});
    std::vector<Case<S, D>> cases;
    for (int round = 0; round < rounds; ++round) {
        for (const ZmoiSize size : sizes) {
            cases.emplace_back(filter, size, ++turn);
            cases.back().takeOracle(filter);
        }
    }
    kit::forEachLevel([&] {
        for (auto& c : cases) {
            SCOPED_TRACE(testing::Message()
                         << c.dst.size() << " border " << c.border << " turn " << c.turn);
            c.dst.fill([] { return 3; });
            filter.run(c.call(), c.turn);
            kit::expectPixels(c.dst, c.expected);
            c.src.expectUntouched("source");
        }
    });
    if (filter.isLarge) expectFarRows(filter);
}

}  // namespace filters
