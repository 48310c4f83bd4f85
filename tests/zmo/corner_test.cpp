// Corners from the structure tensor: MinEigenVal, EigenValsVecs, both with a border, and HarrisCorner.
#include <algorithm>
#include <cmath>

#include "call.h"
#include "oracle/mask.h"
#include "zmocv.h"

namespace {

struct Tensor {
    double a, b, c;
};

double eigenResult(const Tensor& t, int i) {
    const double m = (t.a + t.c) / 2;
    const double d = (t.a - t.c) / 2;
    const double r = std::sqrt(d * d + t.b * t.b);
    if (i == 0) return m + r;
    if (i == 1) return m - r < m * 0x1p-48 ? 0 : m - r;
    if (i >= 4) return i == 4 ? 0 - eigenResult(t, 3) : eigenResult(t, 2);
    if (r == 0) return i == 2 ? 1 : 0;
    const double u = d >= 0 ? d + r : t.b;
    const double v = d >= 0 ? t.b : r - d;
    return (i == 2 ? u : v) * (1 / std::sqrt(u * u + v * v));
}

// The arguments between the region and the buffer.
template <class T>
struct Own {
    int kernel;
    int kernelSize;
    int windowSize;
    float k;
    float scale;
    ZmoiBorderType border;
    T value;
};

template <class T>
using Plain = ZmoStatus (*)(const T*, int, Zmo32f*, int, ZmoiSize, ZmoiKernelType, int, int,
                            Zmo8u*);
template <class T>
using Border = ZmoStatus (*)(const T*, int, Zmo32f*, int, ZmoiSize, ZmoiKernelType, int, int,
                             ZmoiBorderType, const T*, Zmo8u*);
template <class T>
using Harris = ZmoStatus (*)(const T*, int, Zmo32f*, int, ZmoiSize, ZmoiDifferentialKernel, int,
                             int, float, float, ZmoiBorderType, const T*, Zmo8u*);

// One of the three forms of a function is there.
template <class T>
struct Function {
    const char* name;
    int floats;
    ZmoStatus (*bufferSize)(ZmoiSize, int, int, ZmoDataType, int, int*);
    Plain<T> plain;
    Border<T> border;
    Harris<T> harris;

    // call(function, those of its own arguments that it has)
    template <class Call>
    ZmoStatus with(const Own<T>& own, Call call) const {
        const auto kernel = static_cast<ZmoiKernelType>(own.kernel);
        const auto value = kit::exempt(&own.value);
        if (plain) return call(plain, kernel, own.kernelSize, own.windowSize);
        if (border) {
            return call(border, kernel, own.kernelSize, own.windowSize, own.border, value);
        }
        return call(harris, static_cast<ZmoiDifferentialKernel>(own.kernel), own.kernelSize,
                    own.windowSize, own.k, own.scale, own.border, value);
    }

    double result(const Tensor& t, int i, const Own<T>& own) const {
        if (!harris) return eigenResult(t, floats == 1 ? 1 : i);
        const double trace = t.a + t.c;
        return own.scale * ((t.a * t.c - t.b * t.b) - own.k * (trace * trace));
    }
};

template <class T>
std::vector<Function<T>> listOf(Plain<T> least, Plain<T> all, Border<T> leastBorder,
                                Border<T> allBorder, Harris<T> harris) {
    return {{"MinEigenVal", 1, zmoiMinEigenValGetBufferSize, least, {}, {}},
            {"EigenValsVecs", 6, zmoiEigenValsVecsGetBufferSize, all, {}, {}},
            {"MinEigenValBorder", 1, zmoiMinEigenValBorderGetBufferSize, {}, leastBorder, {}},
            {"EigenValsVecsBorder", 6, zmoiEigenValsVecsBorderGetBufferSize, {}, allBorder, {}},
            {"HarrisCorner", 1, zmoiHarrisCornerGetBufferSize, {}, {}, harris}};
}
template <class T>
const std::vector<Function<T>> functions;
template <>
const std::vector<Function<Zmo8u>> functions<Zmo8u> = listOf<Zmo8u>(
    zmoiMinEigenVal_8u32f_C1R, zmoiEigenValsVecs_8u32f_C1R, zmoiMinEigenValBorder_8u32f_C1R,
    zmoiEigenValsVecsBorder_8u32f_C1R, zmoiHarrisCorner_8u32f_C1R);
template <>
const std::vector<Function<Zmo32f>> functions<Zmo32f> = listOf<Zmo32f>(
    zmoiMinEigenVal_32f_C1R, zmoiEigenValsVecs_32f_C1R, zmoiMinEigenValBorder_32f_C1R,
    zmoiEigenValsVecsBorder_32f_C1R, zmoiHarrisCorner_32f_C1R);

// A picture, and arguments that differ from turn to turn.
template <class T>
struct Case {
    template <class Draw>
    Case(ZmoiSize size, size_t turn, Draw draw)
        : layout(kit::layouts()[turn % 4]), src(size, layout, 10) {
        static constexpr int windows[] = {3, 1, 5, 15, 7};
        static constexpr int kernels[][2] = {{0, 3}, {0, 5}, {1, 3}};
        src.fill(draw);
        own = {kernels[turn % 3][0],
               kernels[turn % 3][1],
               windows[turn % 5],
               turn % 2 != 0 ? 0.04F : 0.25F,
               turn / 2 % 2 != 0 ? 1.0F : 1e-6F,
               static_cast<ZmoiBorderType>(turn / 3 % 4),
               static_cast<T>(draw())};
    }

    kit::Image<Zmo32f> results(const Function<T>& function, bool isWatched = true) const {
        kit::Buffer buffer = kit::bufferOf(function.bufferSize, src.size(), own.kernelSize,
                                           own.windowSize, kit::typeOf<T>, 1);
        kit::Image<Zmo32f> dst(src.size(), layout, 0, function.floats);
        const auto call = [&](auto run, auto... rest) {
            return isWatched ? kit::run(run, src, dst, src.size(), rest..., buffer)
                             : kit::runUnwatched(run, src, dst, src.size(), rest..., buffer);
        };
        EXPECT_EQ(function.with(own, call), zmoStsNoErr);
        return dst;
    }

    kit::Layout layout;
    kit::Image<T> src;
    Own<T> own;
};

// The tensors of all pixels, each window summed anew.
template <class T>
std::vector<Tensor> tensors(const kit::Image<T>& src, const Own<T>& own) {
    using oracle::Mask;
    const int radius = own.windowSize / 2;
    const oracle::Extended<T> picture{src, own.border, own.value};
    const auto derived = [&](Mask sobel, Mask scharr) {
        const Mask mask = own.kernel == zmoiKernelSobel ? sobel : scharr;
        kit::Image<double> image(src.size(), {}, own.border == zmoiBorderInMem ? radius : 0);
        image.fill(
            [&](int x, int y) { return oracle::mask(picture, x, y, own.kernelSize / 2, mask); });
        return image;
    };
    const kit::Image<double> dx = derived(Mask::vert, Mask::scharrVert);
    const kit::Image<double> dy = derived(Mask::horiz, Mask::scharrHoriz);
    const oracle::Extended<double> alongX{dx, own.border, 0};
    const oracle::Extended<double> alongY{dy, own.border, 0};
    std::vector<Tensor> all;
    kit::forEachPixel(src.size(), [&](int x, int y) {
        Tensor t = {0, 0, 0};
        for (int j = y - radius; j <= y + radius; ++j) {
            for (int i = x - radius; i <= x + radius; ++i) {
                const double p = alongX(i, j);
                const double q = alongY(i, j);
                t = {t.a + p * p, t.b + p * q, t.c + q * q};
            }
        }
        all.push_back(t);
    });
    return all;
}

// Every function gives the bits of the formulas.
template <class T>
void expectOracle(Case<T>& c) {
    SCOPED_TRACE(testing::Message() << c.src.size() << " " << c.layout << " kernel " << c.own.kernel
                                    << " " << c.own.kernelSize << " window " << c.own.windowSize
                                    << " border " << c.own.border);
    for (const bool plain : {false, true}) {
        if (plain) c.own.border = zmoiBorderReplicate;
        const std::vector<Tensor> expected = tensors(c.src, c.own);
        for (const Function<T>& function : functions<T>) {
            if (plain != (function.plain != nullptr)) continue;
            SCOPED_TRACE(function.name);
            kit::expectPixels(c.results(function), [&](int x, int y, int i) {
                return function.result(expected[kit::indexIn(c.src.size(), x, y)], i, c.own);
            });
        }
    }
}

template <class T, class Draw>
void expectOracleEverywhere(Draw draw) {
    kit::forEachCase(90, [&](kit::Random& random, ZmoiSize size, kit::Layout, size_t turn) {
        Case<T> c(size, turn, [&] { return draw(random); });
        expectOracle(c);
    });
}

// Integers, and eighths, whose products and sums are exact in double precision.
TEST(Corner, Oracle) {
    const auto blackOrWhite = [](kit::Random& random) { return random.between(0, 1) * 255; };
    expectOracleEverywhere<Zmo8u>([](kit::Random& random) { return random.between(0, 255); });
    expectOracleEverywhere<Zmo8u>(blackOrWhite);
    expectOracleEverywhere<Zmo32f>(
        [](kit::Random& random) { return static_cast<float>(random.between(-8000, 8000)) / 8; });
    kit::Random random(91);
    Case<Zmo8u> widest({17, 5}, 1, [&] { return blackOrWhite(random); });
    widest.own.windowSize = 255;
    for (const ZmoiBorderType border : {zmoiBorderConst, zmoiBorderMirror}) {
        widest.own.border = border;
        expectOracle(widest);
    }
}

// Behind a bright part of the picture only rounding is left in the running sums.
TEST(Corner, RunningSumsOfFloats) {
    kit::Random random(93);
    Case<Zmo32f> c({90, 60}, 3, [&] { return random.uniform(-1, 1); });
    for (int x = 0; x < 90; ++x) c.src.set(x, 10, 12345.678F);
    const std::vector<Tensor> expected = tensors(c.src, c.own);
    double largest = 0;
    for (const Tensor& t : expected) largest = std::max({largest, t.a, t.c});
    const kit::Image<Zmo32f> dst = c.results(functions<Zmo32f>[3]);
    kit::forEachPixel(dst.size(), [&](int x, int y) {
        const double want = eigenResult(expected[kit::indexIn(dst.size(), x, y)], 0);
        EXPECT_NEAR(dst.get(x, y), want, 2e-7 * want + (90 + 60) * 0x1p-52 * largest);
    });
}

// Whatever comes of it, it is the same at all levels.
TEST(Corner, NotANumber) {
    kit::Random random(95);
    Case<Zmo32f> c({90, 20}, 3, [&] { return random.uniform(-1, 1); });
    c.src.set(40, 5, std::numeric_limits<float>::quiet_NaN());
    c.src.set(50, 8, -std::numeric_limits<float>::quiet_NaN());
    c.src.set(20, 14, std::numeric_limits<float>::infinity());
    for (const Function<Zmo32f>& function : functions<Zmo32f>) {
        kit::atAllLevels([&] { return c.results(function, false); });
    }
}

template <class T>
void expectBadArguments(const Function<T>& function) {
    SCOPED_TRACE(function.name);
    kit::Image<T> src({17, 13});
    src.fill([] { return 5; });
    kit::Image<Zmo32f> dst(src.size(), {}, 0, function.floats);
    kit::Buffer buffer(1 << 14);
    std::vector<kit::Wrong> wrong = {{5, 2, zmoStsFlagErr},
                                     {{{5, 1}, {6, 5}}, zmoStsMaskSizeErr},
                                     {6, 4, zmoStsMaskSizeErr},
                                     {7, {4, 257}, zmoStsMaskSizeErr}};
    if (function.harris) {
        for (const float k : {0.26F, NAN}) wrong.push_back({8, k, zmoStsRangeErr});
        for (const float scale : {0.0F, INFINITY}) wrong.push_back({9, scale, zmoStsRangeErr});
    }
    if (!function.plain) {
        const size_t border = function.harris ? 10 : 8;
        wrong.push_back({border, 4, zmoStsBorderErr});
        wrong.push_back({{{border, zmoiBorderConst}, {border + 1, nullptr}}, zmoStsNullPtrErr});
    }
    function.with({0, 3, 3, 0.04F, 1, zmoiBorderMirror, 0}, [&](auto run, auto... own) {
        kit::expectBadArguments(run, wrong, src, dst, src.size(), own..., buffer);
        return ZmoStatus{};
    });
    int size = -1;
    kit::expectBadArguments(function.bufferSize,
                            {{1, 4, zmoStsMaskSizeErr},
                             {2, 2, zmoStsMaskSizeErr},
                             {3, zmo16u, zmoStsDataTypeErr},
                             {4, 3, zmoStsChannelsErr},
                             {0, ZmoiSize{INT32_MAX, 4}, zmoStsTooLargeErr}},
                            ZmoiSize{4, 4}, 5, 3, kit::typeOf<T>, 1, &size);
}

TEST(Corner, BadArguments) {
    for (const auto& function : functions<Zmo8u>) expectBadArguments(function);
    for (const auto& function : functions<Zmo32f>) expectBadArguments(function);
}

}  // namespace
