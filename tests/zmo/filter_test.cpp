// Filters: separable, Gaussian, with fixed masks, between rows of the caller's; and pyramid layers.
#include "oracle/filter.h"

#include "kit.h"
#include "zmoi.h"

namespace {

constexpr int margin = 12;

template <class S, class D>
struct Call {
    const S* pSrc;
    int64_t srcStep;
    ZmoiSize srcRoi;
    D* pDst;
    int64_t dstStep;
    ZmoiSize roi;
    ZmoiBorderType border;
    const S* pValue;

    const S* srcRow(int y) const {
        return reinterpret_cast<const S*>(reinterpret_cast<const char*>(pSrc) + y * srcStep);
    }
    D* dstRow(int y) const {
        return reinterpret_cast<D*>(reinterpret_cast<char*>(pDst) + y * dstStep);
    }
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

// Kernels of changing sizes, anchors and weights; from time to time sums exceed 32 bits. Products with
// the rounded inverse of 98 miss many halves.
oracle::Taps tapsOf(size_t turn, bool wide) {
    static constexpr int widths[] = {1, 3, 5, 7, 2, 11, 6};
    static constexpr int heights[] = {5, 1, 3, 8, 7, 2, 12, 9};
    static constexpr int divisors[] = {1, 16, 6, 49, 1000, 2, 4096, 3, 98};
    static constexpr int sizes[] = {1, 2, 20, 100, 2700};
    kit::Random random(1000 + turn);
    const int size = sizes[turn % (wide ? 5 : 4)];
    oracle::Taps taps;
    for (int i = 0; i < widths[turn % 7]; ++i) {
        taps.row.push_back(static_cast<Zmo16s>(random.between(-size, size)));
    }
    for (int j = 0; j < heights[turn % 8]; ++j) {
        taps.column.push_back(static_cast<Zmo16s>(random.between(-size / 2, size)));
    }
    taps.anchor = {static_cast<int>(random.between(0, taps.size().width - 1)),
                   static_cast<int>(random.between(0, taps.size().height - 1))};
    taps.divisor = divisors[turn % 9];
    return taps;
}
std::vector<float> floats(const std::vector<Zmo16s>& weights) {
    std::vector<float> result;
    for (const Zmo16s weight : weights) result.push_back(static_cast<float>(weight) * 0.0137F);
    return result;
}

template <class T>
constexpr ZmoDataType typeOf = std::is_same_v<T, Zmo8u>    ? zmo8u
                               : std::is_same_v<T, Zmo16u> ? zmo16u
                               : std::is_same_v<T, Zmo16s> ? zmo16s
                                                           : zmo32f;

// State and buffer as a caller has them, of the sizes that the query told.
struct Prepared {
    template <class Query>
    explicit Prepared(Query query) {
        int64_t sizes[2] = {};
        EXPECT_EQ(query(&sizes[0], &sizes[1]), zmoStsNoErr);
        state = kit::Buffer(static_cast<int>(sizes[0]));
        buffer = kit::Buffer(static_cast<int>(sizes[1]));
    }
    template <class State>
    State* as() {
        return reinterpret_cast<State*>(state.ptr());
    }
    template <class Run>
    void call(Run run) {
        kit::succeed(run);
        state.expectSurroundingsUntouched();
        buffer.expectSurroundingsUntouched();
    }
    kit::Buffer state{64};
    kit::Buffer buffer{64};
};

// For functions without a state, whose query tells an int.
template <class Query>
Prepared preparedBuffer(Query query) {
    return Prepared([&](int64_t*, int64_t* pSize) {
        int bytes = 0;
        const ZmoStatus status = query(&bytes);
        *pSize = bytes;
        return status;
    });
}

template <class S, class D>
Prepared prepareSeparable(const oracle::Taps& taps, ZmoiSizeL roi, int channels) {
    Prepared p([&](int64_t* pState, int64_t* pBuffer) {
        return zmoiFilterSeparableGetSize_L(roi, taps.size(), typeOf<S>, typeOf<D>, channels,
                                            pState, pBuffer);
    });
    auto* const state = p.as<ZmoiSeparableState>();
    const auto row = floats(taps.row);
    const auto column = floats(taps.column);
    kit::succeed([&] {
        return std::is_same_v<S, float>
                   ? zmoiFilterSeparableInit_32f_L(row.data(), column.data(), taps.size(),
                                                   taps.anchor, channels, state)
                   : zmoiFilterSeparableInit_16s_L(taps.row.data(), taps.column.data(), taps.size(),
                                                   taps.anchor, taps.divisor, typeOf<S>, typeOf<D>,
                                                   channels, state);
    });
    return p;
}

constexpr int gaussianTaps[] = {5, 3, 11, 1, 7};
constexpr float sigmas[] = {1.0F, 0.05F, 2.5F, 0.7F};

template <class T>
Prepared prepareGaussian(size_t turn, ZmoiSizeL roi, int channels) {
    const int taps = gaussianTaps[turn % 5];
    Prepared p([&](int64_t* pState, int64_t* pBuffer) {
        return zmoiFilterGaussianGetSize_L(roi, taps, typeOf<T>, channels, pState, pBuffer);
    });
    auto* const state = p.as<ZmoiGaussianState>();
    kit::succeed(
        [&] { return zmoiFilterGaussianInit(taps, sigmas[turn % 4], typeOf<T>, channels, state); });
    return p;
}

// Separable and Gaussian filters: what differs is the state.
template <class S, class D, class Step, class Size, class State>
Filter<S, D> kernelFilter(const char* name, int channels,
                          ZmoStatus (*run)(const S*, Step, D*, Step, Size, ZmoiBorderType, const S*,
                                           const State*, Zmo8u*)) {
    constexpr bool isGaussian = std::is_same_v<State, ZmoiGaussianState>;
    Filter<S, D> f{name, channels};
    f.isLarge = sizeof(Step) == 8;
    f.run = [=](const auto& c, size_t turn) {
        const ZmoiSizeL roi{c.roi.width, c.roi.height};
        Prepared p = isGaussian ? prepareGaussian<S>(turn, roi, channels)
                                : prepareSeparable<S, D>(tapsOf(turn, true), roi, channels);
        p.call([&] {
            return run(c.pSrc, static_cast<Step>(c.srcStep), c.pDst, static_cast<Step>(c.dstStep),
                       Size{c.roi.width, c.roi.height}, c.border, c.pValue, p.template as<State>(),
                       p.buffer.ptr());
        });
    };
    f.pixel = [](const auto& a, int x, int y, size_t turn) {
        const oracle::Taps taps = tapsOf(turn, true);
        if constexpr (isGaussian) {
            const auto weights = oracle::gaussian(gaussianTaps[turn % 5], sigmas[turn % 4]);
            const int anchor = static_cast<int>(weights.size()) / 2;
            return oracle::fromFloat<D>(
                oracle::separable32f(a, x, y, weights, weights, {anchor, anchor}));
        } else if constexpr (std::is_same_v<S, float>) {
            return oracle::separable32f(a, x, y, floats(taps.row), floats(taps.column),
                                        taps.anchor);
        } else {
            return oracle::separable<D>(a, x, y, taps);
        }
    };
    return f;
}

ZmoiMaskSize maskOf(size_t turn) {
    return turn / 4 % 2 == 0 ? zmoiMask3x3 : zmoiMask5x5;
}

template <class S, class D, class Query>
Filter<S, D> fixedMask(const char* name, oracle::Mask kind, Query query,
                       ZmoStatus (*run)(const S*, int, D*, int, ZmoiSize, ZmoiMaskSize,
                                        ZmoiBorderType, const S*, Zmo8u*)) {
    Filter<S, D> f{name, 1};
    f.run = [=](const auto& c, size_t turn) {
        Prepared p = preparedBuffer(
            [&](int* pSize) { return query(c.roi, maskOf(turn), typeOf<S>, 1, pSize); });
        p.call([&] {
            return run(c.pSrc, static_cast<int>(c.srcStep), c.pDst, static_cast<int>(c.dstStep),
                       c.roi, maskOf(turn), c.border, c.pValue, p.buffer.ptr());
        });
    };
    f.pixel = [=](const auto& a, int x, int y, size_t turn) {
        return static_cast<D>(oracle::mask(a, x, y, maskOf(turn) / 2, kind));
    };
    return f;
}

// A pipeline is a separable filter with one tap in the other direction.
template <bool rows>
oracle::Taps pipelineTaps(size_t turn) {
    oracle::Taps taps = tapsOf(turn, false);
    (rows ? taps.column : taps.row) = {1};
    (rows ? taps.anchor.y : taps.anchor.x) = 0;
    return taps;
}

// _Low: the sum saturates at every tap.
template <bool rows, bool low, class S, class D>
D pipelinePixel(const oracle::Extended<S>& a, int x, int y, size_t turn) {
    const oracle::Taps taps = pipelineTaps<rows>(turn);
    if constexpr (std::is_same_v<S, float>) {
        const auto weights = floats(rows ? taps.row : taps.column);
        return rows ? oracle::separable32f(a, x, y, weights, {1}, taps.anchor)
                    : oracle::separable32f(a, x, y, {1}, weights, taps.anchor);
    } else if constexpr (low) {
        const auto& weights = rows ? taps.row : taps.column;
        int64_t sum = 0;
        for (int i = 0; i < static_cast<int>(weights.size()); ++i) {
            const S pixel = rows ? a(x + i - taps.anchor.x, y) : a(x, y + i - taps.anchor.y);
            sum = oracle::saturated<Zmo16s>(sum + weights[static_cast<size_t>(i)] * pixel);
        }
        return static_cast<D>(sum);
    } else {
        return oracle::separable<D>(a, x, y, taps);
    }
}

template <bool rows, bool divided, class S, class D, class Run>
Filter<S, D> pipeline(const char* name, int channels, Run run) {
    Filter<S, D> f{name, channels};
    if (!rows) f.borders = {zmoiBorderInMem};
    f.pixel = pipelinePixel<rows, !divided, S, D>;
    f.run = [=](const auto& c, size_t turn) {
        const oracle::Taps taps = pipelineTaps<rows>(turn);
        const auto& integers = rows ? taps.row : taps.column;
        const auto weights = [&] {
            if constexpr (std::is_same_v<S, float>)
                return floats(integers);
            else
                return integers;
        }();
        const int count = static_cast<int>(weights.size());
        Prepared p = preparedBuffer([&](int* pSize) {
            return (rows ? zmoiFilterRowBorderPipelineGetBufferSize
                         : zmoiFilterColumnPipelineGetBufferSize)(c.roi, count, typeOf<S>, channels,
                                                                  pSize);
        });
        std::vector<const S*> from;
        std::vector<D*> to;
        for (int y = 0; y < c.roi.height; ++y) to.push_back(c.dstRow(y));
        for (int y = 0; y < c.roi.height + count - 1; ++y)
            from.push_back(c.srcRow(y - taps.anchor.y));
        // Not all functions have a divisor.
        const auto call = [&](auto... divisor) {
            if constexpr (rows) {
                return run(c.pSrc, static_cast<int>(c.srcStep), to.data(), c.roi, weights.data(),
                           count, taps.anchor.x, divisor..., c.border, c.pValue, p.buffer.ptr());
            } else {
                return run(from.data(), c.pDst, static_cast<int>(c.dstStep), c.roi, weights.data(),
                           count, divisor..., p.buffer.ptr());
            }
        };
        p.call([&] {
            if constexpr (divided)
                return call(taps.divisor);
            else
                return call();
        });
    };
    return f;
}

const struct {
    std::vector<Zmo16s> kernel;
    int rate;
    bool isUsual = false;  // what a null kernel stands for
} pyramids[] = {{{1, 4, 6, 4, 1}, 2, true},
                {{1, 5, 8, 5, 1}, 2},
                {{-1, 3, 20, 30, 20, 9, 2}, 3},
                {{1, 2, 1}, 2},
                {{9, 8, 7, 6, 5, 4, 3, 2, 1}, 8}};

template <class T, class Step, class Size>
Filter<T, T> layer(const char* name, int channels, bool up,
                   ZmoStatus (*run)(const T*, Step, Size, T*, Step, Size, const ZmoiPyramidState*,
                                    Zmo8u*)) {
    Filter<T, T> f{name, channels};
    f.isLarge = sizeof(Step) == 8;
    f.borders = {zmoiBorderReplicate, zmoiBorderConst, zmoiBorderMirror};
    // Every third turn, a side of the larger layer is no multiple of the rate.
    f.srcSize = [=](ZmoiSize roi, size_t turn) {
        const int rate = pyramids[turn % 5].rate;
        const auto side = [=](int n) {
            return up ? (n + rate - 1) / rate : n * rate - (turn % 3 == 2 ? rate - 1 : 0);
        };
        return ZmoiSize{side(roi.width), side(roi.height)};
    };
    f.run = [=](const auto& c, size_t turn) {
        const auto& chosen = pyramids[turn % 5];
        const ZmoiSize large = up ? c.roi : c.srcRoi;
        Zmo32f values[4] = {};
        for (int i = 0; i < channels && c.pValue != nullptr; ++i)
            values[i] = static_cast<Zmo32f>(c.pValue[i]);
        Prepared p([&](int64_t* pState, int64_t* pBuffer) {
            return zmoiPyramidGetSize_L({large.width, large.height}, typeOf<T>, channels, pState,
                                        pBuffer);
        });
        auto* const state = p.as<ZmoiPyramidState>();
        kit::succeed([&] {
            return zmoiPyramidInit(chosen.isUsual ? nullptr : chosen.kernel.data(),
                                   static_cast<int>(chosen.kernel.size()), chosen.rate, c.border,
                                   values, typeOf<T>, channels, state);
        });
        p.call([&] {
            return run(c.pSrc, static_cast<Step>(c.srcStep), Size{c.srcRoi.width, c.srcRoi.height},
                       c.pDst, static_cast<Step>(c.dstStep), Size{c.roi.width, c.roi.height}, state,
                       p.buffer.ptr());
        });
    };
    f.pixel = [=](const auto& a, int x, int y, size_t turn) {
        const auto& chosen = pyramids[turn % 5];
        return oracle::layer(a, oracle::met(chosen.kernel, chosen.rate, up, x),
                             oracle::met(chosen.kernel, chosen.rate, up, y));
    };
    return f;
}

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
        for (int y = 0; y < expected.size().height; ++y) {
            for (int x = 0; x < expected.size().width; ++x) {
                for (int c = 0; c < filter.channels; ++c) {
                    expected.set(
                        x, y, c,
                        filter.pixel(oracle::Extended<S>{src, border, value[c], c}, x, y, turn));
                }
            }
        }
    }
    Call<S, D> call() {
        return {src.ptr(),  src.step(), src.size(), dst.ptr(),
                dst.step(), dst.size(), border,     border == zmoiBorderConst ? value : nullptr};
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
    far.pSrc = src.first<S>();
    far.pDst = dst.first<D>();
    far.srcStep = far.dstStep = kit::FarRows::step;
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
            kit::expectPixels(c.dst, [&](int x, int y, int i) { return c.expected.get(x, y, i); });
            c.dst.expectSurroundingsUntouched("destination");
            c.src.expectUntouched("source");
        }
    });
    if (filter.isLarge) expectFarRows(filter);
}

#define EXPECT_KERNEL(fn, channels) expectOracle(kernelFilter(#fn, channels, fn))
#define EXPECT_SEPARABLE(types)                            \
    EXPECT_KERNEL(zmoiFilterSeparable_##types##_C1R_L, 1); \
    EXPECT_KERNEL(zmoiFilterSeparable_##types##_C3R_L, 3); \
    EXPECT_KERNEL(zmoiFilterSeparable_##types##_C4R_L, 4)
#define EXPECT_GAUSSIAN(type)                                \
    EXPECT_KERNEL(zmoiFilterGaussianBorder_##type##_C1R, 1); \
    EXPECT_KERNEL(zmoiFilterGaussianBorder_##type##_C3R, 3); \
    EXPECT_KERNEL(zmoiFilterGaussian_##type##_C1R_L, 1);     \
    EXPECT_KERNEL(zmoiFilterGaussian_##type##_C3R_L, 3)
#define EXPECT_MASK(Base, types, kind)                                                     \
    expectOracle(                                                                          \
        fixedMask(#Base #types, oracle::Mask::kind, zmoiFilter##Base##BorderGetBufferSize, \
                  zmoiFilter##Base##Border_##types##_C1R),                                 \
        3)
#define EXPECT_PIPELINE(Base, rows, divided, S, D, types)                               \
    expectOracle(pipeline<rows, divided, S, D>(#Base #types, 1, Base##_##types##_C1R)); \
    expectOracle(pipeline<rows, divided, S, D>(#Base #types, 3, Base##_##types##_C3R))
#define EXPECT_ROWS(...) EXPECT_PIPELINE(zmoiFilterRowBorderPipeline, true, __VA_ARGS__)
#define EXPECT_COLUMNS(...) EXPECT_PIPELINE(zmoiFilterColumnPipeline, false, __VA_ARGS__)
#define EXPECT_LAYERS(types)                                                           \
    expectOracle(layer("down " #types, 1, false, zmoiPyramidLayerDown_##types##_C1R)); \
    expectOracle(layer("down " #types, 3, false, zmoiPyramidLayerDown_##types##_C3R)); \
    expectOracle(layer("up " #types, 1, true, zmoiPyramidLayerUp_##types##_C1R));      \
    expectOracle(layer("up " #types, 3, true, zmoiPyramidLayerUp_##types##_C3R))

TEST(Filters, Separable) {
    EXPECT_SEPARABLE(8u);
    EXPECT_SEPARABLE(8u16s);
    EXPECT_SEPARABLE(16s);
    EXPECT_SEPARABLE(16u);
    EXPECT_SEPARABLE(32f);
}

TEST(Filters, Gaussian) {
    EXPECT_GAUSSIAN(8u);
    EXPECT_GAUSSIAN(16u);
    EXPECT_GAUSSIAN(16s);
    EXPECT_GAUSSIAN(32f);
}

TEST(Filters, FixedMasks) {
    EXPECT_MASK(SobelVert, 8u16s, vert);
    EXPECT_MASK(SobelHoriz, 8u16s, horiz);
    EXPECT_MASK(Laplacian, 8u16s, laplacian);
    EXPECT_MASK(Lowpass, 8u, lowpass);
    EXPECT_MASK(SobelVert, 32f, vert);
    EXPECT_MASK(SobelHoriz, 32f, horiz);
    EXPECT_MASK(SobelCross, 32f, cross);
    EXPECT_MASK(Laplacian, 32f, laplacian);
    EXPECT_MASK(Lowpass, 32f, lowpass);
}

TEST(Filters, Pipelines) {
    EXPECT_ROWS(true, Zmo8u, Zmo16s, 8u16s);
    EXPECT_ROWS(true, Zmo16u, Zmo16u, 16u);
    EXPECT_ROWS(true, Zmo16s, Zmo16s, 16s);
    EXPECT_ROWS(false, Zmo32f, Zmo32f, 32f);
    EXPECT_ROWS(false, Zmo16s, Zmo16s, Low_16s);
    EXPECT_COLUMNS(true, Zmo16u, Zmo16u, 16u);
    EXPECT_COLUMNS(true, Zmo16s, Zmo16s, 16s);
    EXPECT_COLUMNS(true, Zmo16s, Zmo8u, 16s8u);
    EXPECT_COLUMNS(true, Zmo16s, Zmo8s, 16s8s);
    EXPECT_COLUMNS(false, Zmo32f, Zmo32f, 32f);
    EXPECT_COLUMNS(false, Zmo16s, Zmo16s, Low_16s);
}

TEST(Filters, PyramidLayers) {
    EXPECT_LAYERS(8u);
    EXPECT_LAYERS(16u);
    EXPECT_LAYERS(32f);
    expectOracle(layer("down _L", 1, false, zmoiPyramidLayerDown_32f_C1R_L));
    expectOracle(layer("up _L", 1, true, zmoiPyramidLayerUp_32f_C1R_L));
}

// Everything that the checks of these functions look at.
struct Args {
    const Zmo16s* pSrc;
    int step;
    Zmo16s* pDst;
    int dstStep;
    ZmoiSizeL roi;
    ZmoiBorderType border;
    const Zmo16s* pValue;
    Zmo8u* pState;
    Zmo8u* pBuffer;
    Zmo16s** rows;
    const Zmo16s* kernel;
    int taps;
    ZmoiSize mask;
    ZmoiPoint anchor;
    int number;  // divisor or rate
    Zmo32f sigma;
    ZmoiMaskSize fixed;
    ZmoDataType type;
    int channels;
    int64_t* pSize;

    ZmoiSize small() const { return {static_cast<int>(roi.width), static_cast<int>(roi.height)}; }
    template <class State>
    State* as() const {
        return reinterpret_cast<State*>(pState);
    }
};

using Faults = std::vector<kit::Fault<Args>>;
#define CALL(...) [&](const Args& a) { return __VA_ARGS__; }
#define FAULT(code, ...)                                                \
    {                                                                   \
#__VA_ARGS__, zmoSts##code##Err, [&](Args & a) { __VA_ARGS__; } \
    }

Faults operator+(Faults a, const Faults& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

TEST(Filters, BadArguments) {
    kit::Image<Zmo16s> src({20, 3}, {}, 6, 3);
    src.fill([] { return 5; });
    kit::Image<Zmo16s> dst({20, 3}, {}, 0, 3);
    const auto rowOf = [](auto& image, int y) {
        return reinterpret_cast<Zmo16s*>(reinterpret_cast<char*>(image.ptr()) + y * image.step());
    };
    Zmo16s* rows[] = {rowOf(dst, 0), rowOf(dst, 1), rowOf(dst, 2)};
    const Zmo16s* from[] = {rowOf(src, 0), rowOf(src, 1), rowOf(src, 2), nullptr};
    Prepared gauss = prepareGaussian<Zmo16s>(0, {20, 3}, 3);
    Prepared grey = prepareGaussian<Zmo16s>(0, {20, 3}, 1);
    Prepared floating = prepareGaussian<Zmo32f>(0, {20, 3}, 3);
    Prepared separable = prepareSeparable<Zmo16s, Zmo16s>(tapsOf(0, false), {20, 3}, 3);
    kit::Buffer state(4096);
    kit::Buffer buffer(100000);
    const Zmo16s kernel[31] = {10, 20, 30, 20, 10, 100, 0, 32000, 800};
    const Zmo16s value[3] = {};
    int64_t size = -1;
    int64_t ignored = 0;
    Args good{src.ptr(),
              src.step(),
              dst.ptr(),
              dst.step(),
              {20, 3},
              zmoiBorderMirror,
              value,
              gauss.state.ptr(),
              buffer.ptr(),
              rows,
              kernel,
              5,
              {5, 5},
              {2, 2},
              2,
              1.0F,
              zmoiMask5x5,
              zmo16u,
              3,
              &size};
    const auto expect = [&](auto call, const Faults& faults) {
        dst.snapshot();
        size = -1;
        kit::expectFaults(good, call, faults, [&] {
            dst.expectUntouched("destination");
            state.expectUntouched();
            EXPECT_EQ(size, -1);
        });
        const bool inUse = good.pState == state.ptr();
        state = kit::Buffer(4096);
        if (inUse) good.pState = state.ptr();
    };
    const Faults source = {FAULT(NullPtr, a.pSrc = nullptr)};
    const Faults target = {FAULT(NullPtr, a.pDst = nullptr)};
    const Faults work = {FAULT(NullPtr, a.pBuffer = nullptr)};
    const Faults noState = {FAULT(NullPtr, a.pState = nullptr)};
    const Faults noValue = {FAULT(NullPtr, a.border = zmoiBorderConst, a.pValue = nullptr)};
    const Faults empty = {FAULT(Size, a.roi.width = 0), FAULT(Size, a.roi.height = -1)};
    const Faults steps = {FAULT(Step, a.step = 118), FAULT(Step, a.step |= 1)};
    const Faults dstSteps = {FAULT(Step, a.dstStep = 118)};
    const Faults border = {FAULT(Border, a.border = static_cast<ZmoiBorderType>(4))};
    const Faults usual =
        source + target + work + noState + noValue + empty + steps + dstSteps + border;
    expect(CALL(zmoiFilterGaussianBorder_16s_C3R(a.pSrc, a.step, a.pDst, a.dstStep, a.small(),
                                                 a.border, a.pValue, a.as<ZmoiGaussianState>(),
                                                 a.pBuffer)),
           usual + Faults{FAULT(State, a.pState = grey.state.ptr()),
                          FAULT(State, a.pState = floating.state.ptr())});
    good.pState = separable.state.ptr();
    expect(CALL(zmoiFilterSeparable_16s_C3R_L(a.pSrc, a.step, a.pDst, a.dstStep, a.roi, a.border,
                                              a.pValue, a.as<ZmoiSeparableState>(), a.pBuffer)),
           usual + Faults{FAULT(State, a.pState = gauss.state.ptr())});
    const Faults unknownMask = {FAULT(MaskSize, a.fixed = static_cast<ZmoiMaskSize>(4))};
    const auto bytes = [](const Zmo16s* p) { return reinterpret_cast<const Zmo8u*>(p); };
    expect(CALL(zmoiFilterLaplacianBorder_8u16s_C1R(bytes(a.pSrc), a.step, a.pDst, a.dstStep,
                                                    a.small(), a.fixed, a.border, bytes(a.pValue),
                                                    a.pBuffer)),
           source + target + work + noValue + empty +
               Faults{FAULT(Step, a.step = 19), FAULT(Step, a.dstStep |= 1)} + unknownMask +
               border);
    const Faults taps = {FAULT(MaskSize, a.taps = 0)};
    const Faults ranges = {FAULT(Range, a.number = 0), FAULT(Range, a.taps = 9)};
    const Faults lists = {FAULT(NullPtr, a.kernel = nullptr), FAULT(NullPtr, a.rows = nullptr)};
    expect(CALL(zmoiFilterRowBorderPipeline_16s_C3R(a.pSrc, a.step, a.rows, a.small(), a.kernel,
                                                    a.taps, a.anchor.x, a.number, a.border,
                                                    a.pValue, a.pBuffer)),
           lists + source + work + noValue + empty + steps + taps +
               Faults{FAULT(Anchor, a.anchor.x = -1), FAULT(Anchor, a.anchor.x = 9)} + ranges +
               border);
    good.taps = 1;
    expect(
        CALL(zmoiFilterColumnPipeline_16s_C3R(a.rows == nullptr ? nullptr : from, a.pDst, a.dstStep,
                                              a.small(), a.kernel, a.taps, a.number, a.pBuffer)),
        lists + target + work + Faults{FAULT(NullPtr, a.roi = {20, 3}, a.taps = 2)} + empty +
            dstSteps + taps + Faults{ranges[0]});
    good.taps = 5;
    good.pState = state.ptr();
    const Faults type = {FAULT(DataType, a.type = zmo64f)};
    const Faults channels = {FAULT(Channels, a.channels = 2)};
    const Faults even = {FAULT(MaskSize, a.taps = 4)};
    expect(CALL(zmoiFilterGaussianInit_L(a.taps, a.sigma, a.type, a.channels,
                                         a.as<ZmoiGaussianState>())),
           noState + even + Faults{FAULT(Range, a.sigma = 0)} + type + channels);
    const Faults masks = {FAULT(MaskSize, a.mask.width = 256), FAULT(MaskSize, a.mask.height = 0)};
    const Faults anchor = {FAULT(Anchor, a.anchor.y = 300)};
    expect(
        CALL(zmoiFilterSeparableInit_16s_L(a.kernel, a.kernel, a.mask, a.anchor, a.number, a.type,
                                           a.type, a.channels, a.as<ZmoiSeparableState>())),
        noState + Faults{lists[0]} + masks + anchor +
            Faults{FAULT(Range, a.number = 0), FAULT(Range, a.mask.width = 9)} + type + channels);
    const Zmo32f floatKernel[] = {1, 2, 3, 2, 1, HUGE_VALF};
    expect(CALL(zmoiFilterSeparableInit_32f_L(floatKernel, floatKernel, a.mask, a.anchor,
                                              a.channels, a.as<ZmoiSeparableState>())),
           noState + masks + anchor + Faults{FAULT(Range, a.mask.width = 6)} + channels);
    const Faults rates = {FAULT(Range, a.number = 1), FAULT(Range, a.number = 6),
                          FAULT(Range, a.taps = 7)};
    expect(CALL(zmoiPyramidInit_L(a.kernel, a.taps, a.number, a.border, nullptr, a.type, a.channels,
                                  a.as<ZmoiPyramidState>())),
           noState + even + rates + Faults{FAULT(Border, a.border = zmoiBorderInMem)} + type +
               channels);
    const Faults noSize = {FAULT(NullPtr, a.pSize = nullptr), empty[0]};
    const Faults large = type + channels + Faults{FAULT(TooLarge, a.roi.width = INT64_MAX / 4)};
    expect(CALL(zmoiFilterGaussianGetSize_L(a.roi, a.taps, a.type, a.channels, &ignored, a.pSize)),
           noSize + even + large);
    expect(CALL(zmoiFilterSeparableGetSize_L(a.roi, a.mask, a.type, a.type, a.channels, &ignored,
                                             a.pSize)),
           noSize + masks + large);
    expect(CALL(zmoiPyramidGetSize_L(a.roi, a.type, a.channels, &ignored, a.pSize)),
           noSize + large);
    int told = 0;
    good.channels = 1;
    for (auto* const query :
         {zmoiFilterSobelVertBorderGetBufferSize, zmoiFilterSobelHorizBorderGetBufferSize,
          zmoiFilterSobelCrossBorderGetBufferSize, zmoiFilterLaplacianBorderGetBufferSize,
          zmoiFilterLowpassBorderGetBufferSize}) {
        good.type = query == zmoiFilterSobelCrossBorderGetBufferSize ? zmo32f : zmo8u;
        const Faults wrong = {FAULT(DataType, a.type = good.type == zmo32f ? zmo8u : zmo16s)};
        expect(CALL(query(a.small(), a.fixed, a.type, a.channels,
                          a.pSize == nullptr ? nullptr : &told)),
               noSize + unknownMask + wrong + channels +
                   Faults{FAULT(TooLarge, a.roi.width = INT32_MAX)});
    }
}

// The layers must fit each other, down and up.
TEST(Filters, PyramidRegions) {
    kit::Buffer state(256);
    kit::Buffer buffer(10000);
    kit::Image<Zmo8u> a({20, 20});
    kit::Image<Zmo8u> b({20, 20});
    auto* const pyramid = reinterpret_cast<ZmoiPyramidState*>(state.ptr());
    const struct {
        ZmoiSize large;
        ZmoiSize small;
        int step;
        ZmoStatus status;
    } cases[] = {{{8, 5}, {4, 3}, 20, zmoStsNoErr},   {{7, 6}, {4, 3}, 20, zmoStsNoErr},
                 {{8, 5}, {4, 2}, 20, zmoStsSizeErr}, {{8, 5}, {5, 3}, 20, zmoStsSizeErr},
                 {{8, 5}, {4, 3}, 3, zmoStsStepErr},  {{8, 0}, {4, 3}, 20, zmoStsSizeErr}};
    EXPECT_EQ(
        zmoiPyramidLayerUp_8u_C1R(a.ptr(), 20, {4, 3}, b.ptr(), 20, {8, 5}, pyramid, buffer.ptr()),
        zmoStsStateErr);
    ASSERT_EQ(zmoiPyramidInit(nullptr, 0, 2, zmoiBorderMirror, nullptr, zmo8u, 1, pyramid),
              zmoStsNoErr);
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.large << " and " << c.small << " step " << c.step);
        EXPECT_EQ(zmoiPyramidLayerDown_8u_C1R(a.ptr(), c.step, c.large, b.ptr(), c.step, c.small,
                                              pyramid, buffer.ptr()),
                  c.status);
        EXPECT_EQ(zmoiPyramidLayerUp_8u_C1R(a.ptr(), c.step, c.small, b.ptr(), c.step, c.large,
                                            pyramid, buffer.ptr()),
                  c.status);
    }
}

}  // namespace
