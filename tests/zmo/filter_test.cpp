// Separable and Gaussian filters, pipelines and pyramid layers.
#include "oracle/filter.h"

#include <sys/mman.h>

#include "kit.h"
#include "zmoi.h"

namespace {

constexpr int margin = 12;

// A function with its arguments chosen by the number of the turn, and its oracle.
template <class S, class D>
struct Filter {
    const char* name;
    int channels;
    std::function<void(const kit::Image<S>&, kit::Image<D>&, ZmoiBorderType, const S*, size_t turn)>
        run;
    std::function<D(const oracle::Extended<S>&, int x, int y, size_t turn)> pixel;
    bool hasBorder = true;
};

// Kernels of changing sizes, anchors and weights; from time to time sums exceed 32 bits.
oracle::Taps tapsOf(size_t turn, bool wide) {
    static constexpr int widths[] = {1, 3, 5, 7, 2, 11, 6};
    static constexpr int heights[] = {5, 1, 3, 8, 7, 2, 12, 9};
    static constexpr int divisors[] = {1, 16, 6, 49, 1000, 2, 4096, 3, 30};
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

// State and buffer as a caller has them.
struct Prepared {
    Prepared(int64_t stateSize, int64_t bufferSize)
        : state(static_cast<int>(stateSize)), buffer(static_cast<int>(bufferSize)) {}
    template <class State>
    State* as() {
        return reinterpret_cast<State*>(state.ptr());
    }
    void expectSurroundingsUntouched() const {
        state.expectSurroundingsUntouched();
        buffer.expectSurroundingsUntouched();
    }
    kit::Buffer state;
    kit::Buffer buffer;
};

template <class S, class D>
Prepared prepareSeparable(const oracle::Taps& taps, ZmoiSizeL roi, int channels) {
    int64_t state = 0;
    int64_t buffer = 0;
    EXPECT_EQ(zmoiFilterSeparableGetSize_L(roi, taps.size(), typeOf<S>, typeOf<D>, channels, &state,
                                           &buffer),
              zmoStsNoErr);
    Prepared p(state, buffer);
    auto* const filled = p.as<ZmoiSeparableState>();
    if constexpr (std::is_same_v<S, float>) {
        EXPECT_EQ(zmoiFilterSeparableInit_32f_L(floats(taps.row).data(), floats(taps.column).data(),
                                                taps.size(), taps.anchor, channels, filled),
                  zmoStsNoErr);
    } else {
        EXPECT_EQ(zmoiFilterSeparableInit_16s_L(taps.row.data(), taps.column.data(), taps.size(),
                                                taps.anchor, taps.divisor, typeOf<S>, typeOf<D>,
                                                channels, filled),
                  zmoStsNoErr);
    }
    return p;
}

template <class S, class D>
Filter<S, D> separable(const char* name, int channels,
                       ZmoStatus (*run)(const S*, int64_t, D*, int64_t, ZmoiSizeL, ZmoiBorderType,
                                        const S*, const ZmoiSeparableState*, Zmo8u*)) {
    return {name, channels,
            [=](const auto& src, auto& dst, ZmoiBorderType border, const S* value, size_t turn) {
                const ZmoiSizeL roi{src.size().width, src.size().height};
                Prepared p = prepareSeparable<S, D>(tapsOf(turn, true), roi, channels);
                kit::succeed([&] {
                    return run(src.ptr(), src.step(), dst.ptr(), dst.step(), roi, border, value,
                               p.as<ZmoiSeparableState>(), p.buffer.ptr());
                });
                p.expectSurroundingsUntouched();
            },
            [](const auto& a, int x, int y, size_t turn) {
                const oracle::Taps taps = tapsOf(turn, true);
                if constexpr (std::is_same_v<S, float>) {
                    return oracle::separable32f(a, x, y, floats(taps.row), floats(taps.column),
                                                taps.anchor);
                } else {
                    return oracle::separable<D>(a, x, y, taps);
                }
            }};
}

constexpr int gaussianTaps[] = {5, 3, 11, 1, 7};
constexpr float sigmas[] = {1.0F, 0.05F, 2.5F, 0.7F};

template <class T>
Prepared prepareGaussian(size_t turn, ZmoiSizeL roi, int channels) {
    int64_t state = 0;
    int64_t buffer = 0;
    const int taps = gaussianTaps[turn % 5];
    EXPECT_EQ(zmoiFilterGaussianGetSize_L(roi, taps, typeOf<T>, channels, &state, &buffer),
              zmoStsNoErr);
    Prepared p(state, buffer);
    kit::succeed([&] {
        return zmoiFilterGaussianInit(taps, sigmas[turn % 4], typeOf<T>, channels,
                                      p.as<ZmoiGaussianState>());
    });
    return p;
}

template <class T, class Step, class Size>
Filter<T, T> gaussian(const char* name, int channels,
                      ZmoStatus (*run)(const T*, Step, T*, Step, Size, ZmoiBorderType, const T*,
                                       const ZmoiGaussianState*, Zmo8u*)) {
    return {name, channels,
            [=](const auto& src, auto& dst, ZmoiBorderType border, const T* value, size_t turn) {
                const ZmoiSize size = src.size();
                Prepared p = prepareGaussian<T>(turn, {size.width, size.height}, channels);
                kit::succeed([&] {
                    return run(src.ptr(), src.step(), dst.ptr(), dst.step(),
                               Size{size.width, size.height}, border, value,
                               p.as<ZmoiGaussianState>(), p.buffer.ptr());
                });
                p.expectSurroundingsUntouched();
            },
            [](const auto& a, int x, int y, size_t turn) {
                const auto weights = oracle::gaussian(gaussianTaps[turn % 5], sigmas[turn % 4]);
                const int anchor = static_cast<int>(weights.size()) / 2;
                return oracle::fromFloat<T>(
                    oracle::separable32f(a, x, y, weights, weights, {anchor, anchor}));
            }};
}

// The weights of a pipeline, as integers or floats; the kernel of the other direction is one tap.
oracle::Taps pipelineTaps(size_t turn, bool rows) {
    oracle::Taps taps = tapsOf(turn, false);
    if (rows) {
        taps.column = {1};
        taps.anchor.y = 0;
    } else {
        taps.row = {1};
        taps.anchor.x = 0;
    }
    return taps;
}
template <class K>
std::vector<K> weightsOf(const std::vector<Zmo16s>& weights) {
    if constexpr (std::is_same_v<K, float>)
        return floats(weights);
    else
        return weights;
}

template <bool rows, bool low, class S, class D>
D pipelinePixel(const oracle::Extended<S>& a, int x, int y, size_t turn) {
    const oracle::Taps taps = pipelineTaps(turn, rows);
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

// Not all functions have a divisor.
template <bool divided, class S, class D, class K, class Run>
Filter<S, D> rowPipeline(const char* name, int channels, Run run) {
    return {name, channels,
            [=](const auto& src, auto& dst, ZmoiBorderType border, const S* value, size_t turn) {
                const oracle::Taps taps = pipelineTaps(turn, true);
                const auto weights = weightsOf<K>(taps.row);
                int size = 0;
                EXPECT_EQ(zmoiFilterRowBorderPipelineGetBufferSize(src.size(), taps.size().width,
                                                                   typeOf<S>, channels, &size),
                          zmoStsNoErr);
                kit::Buffer buffer(size);
                std::vector<D*> to;
                for (int y = 0; y < src.size().height; ++y) {
                    to.push_back(
                        reinterpret_cast<D*>(reinterpret_cast<char*>(dst.ptr()) + y * dst.step()));
                }
                kit::succeed([&] {
                    const auto call = [&](auto... divisor) {
                        return run(src.ptr(), src.step(), to.data(), src.size(), weights.data(),
                                   taps.size().width, taps.anchor.x, divisor..., border, value,
                                   buffer.ptr());
                    };
                    if constexpr (divided)
                        return call(taps.divisor);
                    else
                        return call();
                });
                buffer.expectSurroundingsUntouched();
            },
            pipelinePixel<true, !divided, S, D>};
}

template <bool divided, class S, class D, class K, class Run>
Filter<S, D> columnPipeline(const char* name, int channels, Run run) {
    return {
        name, channels,
        [=](const auto& src, auto& dst, ZmoiBorderType, const S*, size_t turn) {
            const oracle::Taps taps = pipelineTaps(turn, false);
            const auto weights = weightsOf<K>(taps.column);
            const int count = taps.size().height;
            int size = 0;
            EXPECT_EQ(zmoiFilterColumnPipelineGetBufferSize(src.size(), count, typeOf<S>, channels,
                                                            &size),
                      zmoStsNoErr);
            kit::Buffer buffer(size);
            std::vector<const S*> from;
            for (int y = 0; y < src.size().height + count - 1; ++y) {
                from.push_back(reinterpret_cast<const S*>(reinterpret_cast<const char*>(src.ptr()) +
                                                          (y - taps.anchor.y) * src.step()));
            }
            kit::succeed([&] {
                const auto call = [&](auto... divisor) {
                    return run(from.data(), dst.ptr(), dst.step(), src.size(), weights.data(),
                               count, divisor..., buffer.ptr());
                };
                if constexpr (divided)
                    return call(taps.divisor);
                else
                    return call();
            });
            buffer.expectSurroundingsUntouched();
        },
        pipelinePixel<false, !divided, S, D>, false};
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
void expectOracle(const Filter<S, D>& filter) {
    SCOPED_TRACE(filter.name);
    static size_t turn = 0;
    kit::Random random(60);
    auto sizes = kit::sizes();
    sizes.push_back({530, 2});
    for (const ZmoiSize size : sizes) {
        ++turn;
        const auto border =
            filter.hasBorder ? static_cast<ZmoiBorderType>(turn % 4) : zmoiBorderInMem;
        const kit::Layout layout = kit::layouts()[turn / 4 % 4];
        SCOPED_TRACE(testing::Message() << size << " border " << border << " turn " << turn);
        kit::Image<S> src(size, layout, margin, filter.channels);
        src.fill([&] { return drawn<S>(random, turn); });
        S value[4];
        for (S& v : value) v = drawn<S>(random, turn);
        kit::Image<D> expected(size, {}, 0, filter.channels);
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                for (int c = 0; c < filter.channels; ++c) {
                    expected.set(
                        x, y, c,
                        filter.pixel(oracle::Extended<S>{src, border, value[c], c}, x, y, turn));
                }
            }
        }
        kit::forEachLevel([&] {
            kit::Image<D> dst(size, layout, 0, filter.channels);
            filter.run(src, dst, border, border == zmoiBorderConst ? value : nullptr, turn);
            kit::expectPixels(dst, [&](int x, int y, int c) { return expected.get(x, y, c); });
            dst.expectSurroundingsUntouched("destination");
        });
        src.expectUntouched("source");
    }
}

#define FILTER(make, fn, channels) make(#fn, channels, fn)
#define EXPECT_SEPARABLE(types)                                              \
    expectOracle(FILTER(separable, zmoiFilterSeparable_##types##_C1R_L, 1)); \
    expectOracle(FILTER(separable, zmoiFilterSeparable_##types##_C3R_L, 3)); \
    expectOracle(FILTER(separable, zmoiFilterSeparable_##types##_C4R_L, 4))

TEST(Filters, Separable) {
    EXPECT_SEPARABLE(8u);
    EXPECT_SEPARABLE(8u16s);
    EXPECT_SEPARABLE(16s);
    EXPECT_SEPARABLE(16u);
    EXPECT_SEPARABLE(32f);
}

#define EXPECT_GAUSSIAN(type)                                                 \
    expectOracle(FILTER(gaussian, zmoiFilterGaussianBorder_##type##_C1R, 1)); \
    expectOracle(FILTER(gaussian, zmoiFilterGaussianBorder_##type##_C3R, 3)); \
    expectOracle(FILTER(gaussian, zmoiFilterGaussian_##type##_C1R_L, 1));     \
    expectOracle(FILTER(gaussian, zmoiFilterGaussian_##type##_C3R_L, 3))

TEST(Filters, Gaussian) {
    EXPECT_GAUSSIAN(8u);
    EXPECT_GAUSSIAN(16u);
    EXPECT_GAUSSIAN(16s);
    EXPECT_GAUSSIAN(32f);
}

#define EXPECT_PIPELINE(make, Base, divided, S, D, K, types)               \
    expectOracle(make<divided, S, D, K>(#types, 1, Base##_##types##_C1R)); \
    expectOracle(make<divided, S, D, K>(#types, 3, Base##_##types##_C3R))
#define EXPECT_ROWS(...) EXPECT_PIPELINE(rowPipeline, zmoiFilterRowBorderPipeline, __VA_ARGS__)
#define EXPECT_COLUMNS(...) EXPECT_PIPELINE(columnPipeline, zmoiFilterColumnPipeline, __VA_ARGS__)

TEST(Filters, Pipelines) {
    EXPECT_ROWS(true, Zmo8u, Zmo16s, Zmo16s, 8u16s);
    EXPECT_ROWS(true, Zmo16u, Zmo16u, Zmo16s, 16u);
    EXPECT_ROWS(true, Zmo16s, Zmo16s, Zmo16s, 16s);
    EXPECT_ROWS(false, Zmo32f, Zmo32f, Zmo32f, 32f);
    EXPECT_ROWS(false, Zmo16s, Zmo16s, Zmo16s, Low_16s);
    EXPECT_COLUMNS(true, Zmo16u, Zmo16u, Zmo16s, 16u);
    EXPECT_COLUMNS(true, Zmo16s, Zmo16s, Zmo16s, 16s);
    EXPECT_COLUMNS(true, Zmo16s, Zmo8u, Zmo16s, 16s8u);
    EXPECT_COLUMNS(true, Zmo16s, Zmo8s, Zmo16s, 16s8s);
    EXPECT_COLUMNS(false, Zmo32f, Zmo32f, Zmo32f, 32f);
    EXPECT_COLUMNS(false, Zmo16s, Zmo16s, Zmo16s, Low_16s);
}

const struct {
    std::vector<Zmo16s> kernel;
    int rate;
} pyramids[] = {{{}, 2},
                {{1, 5, 8, 5, 1}, 2},
                {{-1, 3, 20, 30, 20, 9, 2}, 3},
                {{1, 2, 1}, 2},
                {{9, 8, 7, 6, 5, 4, 3, 2, 1}, 8}};

template <class T, class Step, class Size>
void expectLayers(const char* name, int channels, bool up,
                  ZmoStatus (*run)(const T*, Step, Size, T*, Step, Size, const ZmoiPyramidState*,
                                   Zmo8u*)) {
    SCOPED_TRACE(name);
    kit::Random random(61);
    size_t turn = 0;
    for (const ZmoiSize large : kit::sizes()) {
        const auto& chosen = pyramids[++turn % 5];
        const auto border = static_cast<ZmoiBorderType>(turn % 3);
        const auto kernel =
            chosen.kernel.empty() ? std::vector<Zmo16s>{1, 4, 6, 4, 1} : chosen.kernel;
        const int rate = chosen.rate;
        const ZmoiSize small{(large.width + rate - 1) / rate, (large.height + rate - 1) / rate};
        const ZmoiSize srcSize = up ? small : large;
        const ZmoiSize dstSize = up ? large : small;
        const kit::Layout layout = kit::layouts()[turn / 4 % 4];
        SCOPED_TRACE(testing::Message() << large << " border " << border << " turn " << turn);
        kit::Image<T> src(srcSize, layout, 0, channels);
        src.fill([&] { return drawn<T>(random, turn); });
        const Zmo32f values[] = {7, 99, 3};
        int state = 0;
        int bytes = 0;
        ASSERT_EQ(zmoiPyramidGetSize(large, typeOf<T>, channels, &state, &bytes), zmoStsNoErr);
        Prepared p(state, bytes);
        kit::succeed([&] {
            return zmoiPyramidInit(chosen.kernel.empty() ? nullptr : kernel.data(),
                                   static_cast<int>(kernel.size()), rate, border, values, typeOf<T>,
                                   channels, p.as<ZmoiPyramidState>());
        });
        kit::forEachLevel([&] {
            kit::Image<T> dst(dstSize, layout, 0, channels);
            kit::succeed([&] {
                return run(src.ptr(), src.step(), Size{srcSize.width, srcSize.height}, dst.ptr(),
                           dst.step(), Size{dstSize.width, dstSize.height},
                           p.as<ZmoiPyramidState>(), p.buffer.ptr());
            });
            kit::expectPixels(dst, [&](int x, int y, int c) {
                return oracle::layer(oracle::Extended<T>{src, border, static_cast<T>(values[c]), c},
                                     oracle::met(kernel, rate, up, x),
                                     oracle::met(kernel, rate, up, y));
            });
            dst.expectSurroundingsUntouched("destination");
            p.expectSurroundingsUntouched();
        });
        src.expectUntouched("source");
    }
}

#define EXPECT_LAYERS(types, channels)                                                            \
    expectLayers("down " #types, channels, false, zmoiPyramidLayerDown_##types##_C##channels##R); \
    expectLayers("up " #types, channels, true, zmoiPyramidLayerUp_##types##_C##channels##R)

TEST(Filters, PyramidLayers) {
    EXPECT_LAYERS(8u, 1);
    EXPECT_LAYERS(8u, 3);
    EXPECT_LAYERS(16u, 1);
    EXPECT_LAYERS(16u, 3);
    EXPECT_LAYERS(32f, 1);
    EXPECT_LAYERS(32f, 3);
    expectLayers("down _L", 1, false, zmoiPyramidLayerDown_32f_C1R_L);
    expectLayers("up _L", 1, true, zmoiPyramidLayerUp_32f_C1R_L);
}

// Rows half a gigabyte apart, in a mapping of which only the rows are ever touched.
TEST(Filters, ImageBeyondTwoGigabytes) {
    const ZmoiSize size{300, 6};
    constexpr int64_t step = int64_t{1} << 29;
    constexpr size_t bytes = size_t{6} << 29;
    void* const maps[] = {mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                               MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0),
                          mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                               MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)};
    if (maps[0] == MAP_FAILED || maps[1] == MAP_FAILED) {
        GTEST_SKIP() << "no address space for two images of 3 GB";
    }
    const auto at = [&](int map, int x, int y) {
        return reinterpret_cast<Zmo16u*>(static_cast<char*>(maps[map]) + y * step) + x;
    };
    kit::Random random(62);
    kit::Image<Zmo16u> src(size);
    src.fill([&] { return random.between(0, 65535); });
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) *at(0, x, y) = src.get(x, y);
    }
    kit::Image<Zmo16u> near(size);
    Prepared p = prepareGaussian<Zmo16u>(0, {size.width, size.height}, 1);
    const auto filter = [&](const Zmo16u* from, int64_t fromStep, Zmo16u* to, int64_t toStep) {
        kit::succeed([&] {
            return zmoiFilterGaussian_16u_C1R_L(from, fromStep, to, toStep,
                                                {size.width, size.height}, zmoiBorderMirror,
                                                nullptr, p.as<ZmoiGaussianState>(), p.buffer.ptr());
        });
    };
    filter(src.ptr(), src.step(), near.ptr(), near.step());
    filter(at(0, 0, 0), step, at(1, 0, 0), step);
    kit::expectPixels(near, [&](int x, int y) { return *at(1, x, y); });
    for (void* const map : maps) munmap(map, bytes);
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
    expect(
        [](const Args& a) {
            return zmoiFilterGaussianBorder_16s_C3R(a.pSrc, a.step, a.pDst, a.dstStep, a.small(),
                                                    a.border, a.pValue, a.as<ZmoiGaussianState>(),
                                                    a.pBuffer);
        },
        source + target + work + noState + noValue + empty + steps + dstSteps + border +
            Faults{FAULT(State, a.pState = grey.state.ptr()),
                   FAULT(State, a.pState = floating.state.ptr())});
    const Faults taps = {FAULT(MaskSize, a.taps = 0)};
    const Faults ranges = {FAULT(Range, a.number = 0), FAULT(Range, a.taps = 9)};
    const Faults lists = {FAULT(NullPtr, a.kernel = nullptr), FAULT(NullPtr, a.rows = nullptr)};
    expect(
        [](const Args& a) {
            return zmoiFilterRowBorderPipeline_16s_C3R(a.pSrc, a.step, a.rows, a.small(), a.kernel,
                                                       a.taps, a.anchor.x, a.number, a.border,
                                                       a.pValue, a.pBuffer);
        },
        lists + source + work + noValue + empty + steps + taps +
            Faults{FAULT(Anchor, a.anchor.x = -1), FAULT(Anchor, a.anchor.x = 9)} + ranges +
            border);
    good.taps = 1;
    expect(
        [&](const Args& a) {
            return zmoiFilterColumnPipeline_16s_C3R(a.rows == nullptr ? nullptr : from, a.pDst,
                                                    a.dstStep, a.small(), a.kernel, a.taps,
                                                    a.number, a.pBuffer);
        },
        lists + target + work + Faults{FAULT(NullPtr, a.roi = {20, 3}, a.taps = 2)} + empty +
            dstSteps + taps + Faults{ranges[0]});
    good.taps = 5;
    good.pState = state.ptr();
    const Faults type = {FAULT(DataType, a.type = zmo64f)};
    const Faults channels = {FAULT(Channels, a.channels = 2)};
    const Faults even = {FAULT(MaskSize, a.taps = 4)};
    expect(
        [](const Args& a) {
            return zmoiFilterGaussianInit_L(a.taps, a.sigma, a.type, a.channels,
                                            a.as<ZmoiGaussianState>());
        },
        noState + even + Faults{FAULT(Range, a.sigma = 0)} + type + channels);
    const Faults masks = {FAULT(MaskSize, a.mask.width = 256), FAULT(MaskSize, a.mask.height = 0)};
    const Faults anchor = {FAULT(Anchor, a.anchor.y = 300)};
    expect(
        [](const Args& a) {
            return zmoiFilterSeparableInit_16s_L(a.kernel, a.kernel, a.mask, a.anchor, a.number,
                                                 a.type, a.type, a.channels,
                                                 a.as<ZmoiSeparableState>());
        },
        noState + Faults{lists[0]} + masks + anchor +
            Faults{FAULT(Range, a.number = 0), FAULT(Range, a.mask.width = 9)} + type + channels);
    const Zmo32f floatKernel[] = {1, 2, 3, 2, 1, HUGE_VALF};
    expect(
        [&](const Args& a) {
            return zmoiFilterSeparableInit_32f_L(floatKernel, floatKernel, a.mask, a.anchor,
                                                 a.channels, a.as<ZmoiSeparableState>());
        },
        noState + masks + anchor + Faults{FAULT(Range, a.mask.width = 6)} + channels);
    const Faults rates = {FAULT(Range, a.number = 1), FAULT(Range, a.number = 6),
                          FAULT(Range, a.taps = 7)};
    expect(
        [](const Args& a) {
            return zmoiPyramidInit_L(a.kernel, a.taps, a.number, a.border, nullptr, a.type,
                                     a.channels, a.as<ZmoiPyramidState>());
        },
        noState + even + rates + Faults{FAULT(Border, a.border = zmoiBorderInMem)} + type +
            channels);
    const Faults noSize = {FAULT(NullPtr, a.pSize = nullptr), empty[0]};
    const Faults large = type + channels + Faults{FAULT(TooLarge, a.roi.width = INT64_MAX / 4)};
    expect(
        [&](const Args& a) {
            return zmoiFilterGaussianGetSize_L(a.roi, a.taps, a.type, a.channels, &ignored,
                                               a.pSize);
        },
        noSize + even + large);
    expect(
        [&](const Args& a) {
            return zmoiFilterSeparableGetSize_L(a.roi, a.mask, a.type, a.type, a.channels, &ignored,
                                                a.pSize);
        },
        noSize + masks + large);
    expect(
        [&](const Args& a) {
            return zmoiPyramidGetSize_L(a.roi, a.type, a.channels, &ignored, a.pSize);
        },
        noSize + large);
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
