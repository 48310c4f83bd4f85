// Corners from the structure tensor: MinEigenVal, EigenValsVecs, both with a border, and HarrisCorner.
#include <algorithm>
#include <cmath>

#include "kit.h"
#include "oracle/mask.h"
#include "zmocv.h"

namespace {

// All arguments that any of the functions takes.
template <class T>
struct Args {
    const T* pSrc;
    int srcStep;
    Zmo32f* pDst;
    int dstStep;
    ZmoiSize roi;
    int kernel;
    int kernelSize;
    int windowSize;
    float k;
    float scale;
    ZmoiBorderType border;
    const T* pValue;
    Zmo8u* pBuffer;
};

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

// One of the three forms of a function is there.
template <class T>
struct Function {
    const char* name;
    int floats;
    ZmoStatus (*bufferSize)(ZmoiSize, int, int, ZmoDataType, int, int*);
    ZmoStatus (*plain)(const T*, int, Zmo32f*, int, ZmoiSize, ZmoiKernelType, int, int, Zmo8u*);
    ZmoStatus (*border)(const T*, int, Zmo32f*, int, ZmoiSize, ZmoiKernelType, int, int,
                        ZmoiBorderType, const T*, Zmo8u*);
    ZmoStatus (*harris)(const T*, int, Zmo32f*, int, ZmoiSize, ZmoiDifferentialKernel, int, int,
                        float, float, ZmoiBorderType, const T*, Zmo8u*);

    ZmoStatus operator()(const Args<T>& a) const {
        if (harris) {
            return harris(a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi,
                          static_cast<ZmoiDifferentialKernel>(a.kernel), a.kernelSize, a.windowSize,
                          a.k, a.scale, a.border, a.pValue, a.pBuffer);
        }
        const auto kernel = static_cast<ZmoiKernelType>(a.kernel);
        return plain ? plain(a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi, kernel, a.kernelSize,
                             a.windowSize, a.pBuffer)
                     : border(a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi, kernel, a.kernelSize,
                              a.windowSize, a.border, a.pValue, a.pBuffer);
    }

    double result(const Tensor& t, int i, const Args<T>& a) const {
        if (!harris) return eigenResult(t, floats == 1 ? 1 : i);
        const double trace = t.a + t.c;
        return a.scale * ((t.a * t.c - t.b * t.b) - a.k * (trace * trace));
    }
};

#define FUNCTIONS(types)                                                                         \
    {                                                                                            \
        {"MinEigenVal", 1, zmoiMinEigenValGetBufferSize, zmoiMinEigenVal_##types##_C1R, {}, {}}, \
            {"EigenValsVecs",                                                                    \
             6,                                                                                  \
             zmoiEigenValsVecsGetBufferSize,                                                     \
             zmoiEigenValsVecs_##types##_C1R,                                                    \
             {},                                                                                 \
             {}},                                                                                \
            {"MinEigenValBorder",                                                                \
             1,                                                                                  \
             zmoiMinEigenValBorderGetBufferSize,                                                 \
             {},                                                                                 \
             zmoiMinEigenValBorder_##types##_C1R,                                                \
             {}},                                                                                \
            {"EigenValsVecsBorder",                                                              \
             6,                                                                                  \
             zmoiEigenValsVecsBorderGetBufferSize,                                               \
             {},                                                                                 \
             zmoiEigenValsVecsBorder_##types##_C1R,                                              \
             {}},                                                                                \
        {                                                                                        \
            "HarrisCorner", 1, zmoiHarrisCornerGetBufferSize, {}, {},                            \
                zmoiHarrisCorner_##types##_C1R                                                   \
        }                                                                                        \
    }
template <class T>
constexpr Function<T> functions[1] = {};
template <>
constexpr Function<Zmo8u> functions<Zmo8u>[5] = FUNCTIONS(8u32f);
template <>
constexpr Function<Zmo32f> functions<Zmo32f>[5] = FUNCTIONS(32f);

// A picture, and arguments that differ from turn to turn.
template <class T>
struct Case {
    template <class Draw>
    Case(ZmoiSize size, size_t turn, Draw draw)
        : layout(kit::layouts()[turn % 4]), src(size, layout, 10) {
        static constexpr int windows[] = {3, 1, 5, 15, 7};
        static constexpr int kernels[][2] = {{0, 3}, {0, 5}, {1, 3}};
        src.fill(draw);
        value = static_cast<T>(draw());
        args = {src.ptr(),
                src.step(),
                nullptr,
                0,
                size,
                kernels[turn % 3][0],
                kernels[turn % 3][1],
                windows[turn % 5],
                turn % 2 != 0 ? 0.04F : 0.25F,
                turn % 2 != 0 ? 1.0F : 1e-6F,
                static_cast<ZmoiBorderType>(turn / 3 % 4),
                &value,
                nullptr};
    }
    Case(const Case&) = delete;

    kit::Layout layout;
    kit::Image<T> src;
    T value;
    Args<T> args;
};

// The tensors of all pixels, each window summed anew.
template <class T>
std::vector<Tensor> tensors(const kit::Image<T>& src, const Args<T>& a) {
    using oracle::Mask;
    const int radius = a.windowSize / 2;
    const int around = a.border == zmoiBorderInMem ? radius : 0;
    const oracle::Extended<T> picture{src, a.border, *a.pValue};
    const auto derived = [&](Mask sobel, Mask scharr) {
        const Mask mask = a.kernel == zmoiKernelSobel ? sobel : scharr;
        kit::Image<double> image(a.roi, {}, around);
        for (int y = -around; y < a.roi.height + around; ++y) {
            for (int x = -around; x < a.roi.width + around; ++x) {
                const auto value = oracle::mask(picture, x, y, a.kernelSize / 2, mask);
                image.set(x, y, static_cast<double>(value));
            }
        }
        return image;
    };
    const kit::Image<double> dx = derived(Mask::vert, Mask::scharrVert);
    const kit::Image<double> dy = derived(Mask::horiz, Mask::scharrHoriz);
    const oracle::Extended<double> alongX{dx, a.border, 0};
    const oracle::Extended<double> alongY{dy, a.border, 0};
    std::vector<Tensor> all;
    for (int y = 0; y < a.roi.height; ++y) {
        for (int x = 0; x < a.roi.width; ++x) {
            Tensor t = {0, 0, 0};
            for (int j = y - radius; j <= y + radius; ++j) {
                for (int i = x - radius; i <= x + radius; ++i) {
                    const double p = alongX(i, j);
                    const double q = alongY(i, j);
                    t = {t.a + p * p, t.b + p * q, t.c + q * q};
                }
            }
            all.push_back(t);
        }
    }
    return all;
}

template <class T>
constexpr ZmoDataType typeOf = std::is_same_v<T, Zmo8u> ? zmo8u : zmo32f;

template <class T>
kit::Image<Zmo32f> run(const Function<T>& function, Args<T> a, kit::Layout layout = {}) {
    int size = 0;
    EXPECT_EQ(function.bufferSize(a.roi, a.kernelSize, a.windowSize, typeOf<T>, 1, &size), 0);
    kit::Image<Zmo32f> dst(a.roi, layout, 0, function.floats);
    kit::Buffer buffer(size, layout.misalign);
    a.pDst = dst.ptr();
    a.dstStep = dst.step();
    a.pBuffer = buffer.ptr();
    kit::succeed([&] { return function(a); });
    dst.expectSurroundingsUntouched("results");
    buffer.expectSurroundingsUntouched();
    return dst;
}

// Every function gives the bits of the formulas.
template <class T>
void expectOracle(Case<T>& c) {
    const Args<T>& a = c.args;
    SCOPED_TRACE(testing::Message()
                 << a.roi << " " << c.layout << " kernel " << a.kernel << " " << a.kernelSize
                 << " window " << a.windowSize << " border " << a.border);
    for (const bool plain : {false, true}) {
        if (plain) c.args.border = zmoiBorderReplicate;
        const std::vector<Tensor> expected = tensors(c.src, a);
        for (const Function<T>& function : functions<T>) {
            if (plain != (function.plain != nullptr)) continue;
            SCOPED_TRACE(function.name);
            kit::expectPixels(run(function, a, c.layout), [&](int x, int y, int i) {
                return function.result(expected[static_cast<size_t>(y * a.roi.width + x)], i, a);
            });
        }
    }
    c.src.expectUntouched("source");
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
    widest.args.windowSize = 255;
    for (const ZmoiBorderType border : {zmoiBorderConst, zmoiBorderMirror}) {
        widest.args.border = border;
        expectOracle(widest);
    }
}

// Behind a bright part of the picture only rounding is left in the running sums.
TEST(Corner, RunningSumsOfFloats) {
    kit::Random random(93);
    Case<Zmo32f> c({90, 60}, 3, [&] { return random.uniform(-1, 1); });
    for (int x = 0; x < 90; ++x) c.src.set(x, 10, 12345.678F);
    const std::vector<Tensor> expected = tensors(c.src, c.args);
    double largest = 0;
    for (const Tensor& t : expected) largest = std::max({largest, t.a, t.c});
    const kit::Image<Zmo32f> dst = run(functions<Zmo32f>[3], c.args);
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 90; ++x) {
            const double want = eigenResult(expected[static_cast<size_t>(y * 90 + x)], 0);
            EXPECT_NEAR(dst.get(x, y), want, 2e-7 * want + (90 + 60) * 0x1p-52 * largest);
        }
    }
}

// Whatever comes of it, it is the same at all levels.
TEST(Corner, NotANumber) {
    kit::Random random(95);
    Case<Zmo32f> c({90, 20}, 3, [&] { return random.uniform(-1, 1); });
    c.src.set(40, 5, std::numeric_limits<float>::quiet_NaN());
    c.src.set(50, 8, -std::numeric_limits<float>::quiet_NaN());
    c.src.set(20, 14, std::numeric_limits<float>::infinity());
    kit::Buffer buffer(1 << 16);
    for (const Function<Zmo32f>& function : functions<Zmo32f>) {
        std::vector<kit::Image<Zmo32f>> results;
        kit::forEachLevel([&] {
            results.emplace_back(c.args.roi, kit::Layout{}, 0, function.floats);
            c.args.pDst = results.back().ptr();
            c.args.dstStep = results.back().step();
            c.args.pBuffer = buffer.ptr();
            EXPECT_EQ(function(c.args), zmoStsNoErr);
            kit::expectPixels(results.back(),
                              [&](int x, int y, int i) { return results[0].get(x, y, i); });
        });
    }
}

template <class T>
void expectArguments(const Function<T>& function) {
    using A = Args<T>;
    SCOPED_TRACE(function.name);
    kit::Random random(94);
    Case<T> c({17, 13}, 3, [&] { return random.between(1, 255); });
    const T other = 0;
    std::vector<std::function<void(A&)>> changes = {
        [](A& a) { a.kernel = 1; }, [](A& a) { a.kernelSize = 5; }, [](A& a) { a.windowSize = 5; }};
    std::vector<kit::Fault<A>> faults = {
        {"null source", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }},
        {"null results", zmoStsNullPtrErr, [](A& a) { a.pDst = nullptr; }},
        {"null buffer", zmoStsNullPtrErr, [](A& a) { a.pBuffer = nullptr; }},
        {"width", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }},
        {"height", zmoStsSizeErr, [](A& a) { a.roi.height = -1; }},
        {"source step", zmoStsStepErr, [](A& a) { a.srcStep = 17 * int{sizeof(T)} - 1; }},
        {"results step", zmoStsStepErr, [](A& a) { a.dstStep -= 4; }},
        {"odd results step", zmoStsStepErr, [](A& a) { a.dstStep += 2; }},
        {"kernel", zmoStsFlagErr, [](A& a) { a.kernel = 2; }},
        {"Scharr 5", zmoStsMaskSizeErr, [](A& a) { a.kernel |= 1, a.kernelSize = 5; }},
        {"kernel size", zmoStsMaskSizeErr, [](A& a) { a.kernelSize = 4; }},
        {"even window", zmoStsMaskSizeErr, [](A& a) { a.windowSize = 4; }},
        {"large window", zmoStsMaskSizeErr, [](A& a) { a.windowSize = 257; }},
    };
    if (function.harris) {
        constexpr float nan = std::numeric_limits<float>::quiet_NaN();
        constexpr float infinity = std::numeric_limits<float>::infinity();
        changes.push_back([](A& a) { a.k = 0.1F; });
        changes.push_back([](A& a) { a.scale = 0.5F; });
        faults.push_back({"k", zmoStsRangeErr, [](A& a) { a.k = 0.26F; }});
        faults.push_back({"k no number", zmoStsRangeErr, [](A& a) { a.k = nan; }});
        faults.push_back({"scale 0", zmoStsRangeErr, [](A& a) { a.scale = 0; }});
        faults.push_back({"scale", zmoStsRangeErr, [](A& a) { a.scale = infinity; }});
    }
    if (!function.plain) {
        for (const int border : {0, 2, 3}) {
            changes.push_back([=](A& a) { a.border = static_cast<ZmoiBorderType>(border); });
        }
        changes.push_back([&](A& a) { a.pValue = &other; });
        faults.push_back(
            {"border", zmoStsBorderErr, [](A& a) { a.border = static_cast<ZmoiBorderType>(4); }});
        faults.insert(faults.begin(), {"null value", zmoStsNullPtrErr, [](A& a) {
                                           a.pValue = nullptr, a.border = zmoiBorderConst;
                                       }});
    }
    kit::expectEachMatters(
        c.args, [&](const A& a) { return run(function, a); }, changes);

    kit::Image<Zmo32f> dst(c.args.roi, {}, 0, function.floats);
    kit::Buffer buffer(1 << 14);
    c.args.pDst = dst.ptr();
    c.args.dstStep = dst.step();
    c.args.pBuffer = buffer.ptr();
    kit::expectFaults(c.args, function, faults,
                      [&] { dst.expectUntouched("results"), buffer.expectUntouched(); });

    const auto query = function.bufferSize;
    int size = -1;
    EXPECT_EQ(query({0, 4}, 3, 3, typeOf<T>, 1, nullptr), zmoStsNullPtrErr);
    EXPECT_EQ(query({0, 4}, 4, 3, typeOf<T>, 1, &size), zmoStsSizeErr);
    EXPECT_EQ(query({4, 4}, 4, 3, zmo16u, 1, &size), zmoStsMaskSizeErr);
    EXPECT_EQ(query({4, 4}, 5, 2, zmo16u, 1, &size), zmoStsMaskSizeErr);
    EXPECT_EQ(query({4, 4}, 5, 3, zmo16u, 3, &size), zmoStsDataTypeErr);
    EXPECT_EQ(query({4, 4}, 5, 3, typeOf<T>, 3, &size), zmoStsChannelsErr);
    EXPECT_EQ(query({INT32_MAX, 4}, 5, 3, typeOf<T>, 1, &size), zmoStsTooLargeErr);
    EXPECT_EQ(size, -1);
}

TEST(Corner, EachArgumentMattersAndIsChecked) {
    for (const auto& function : functions<Zmo8u>) expectArguments(function);
    for (const auto& function : functions<Zmo32f>) expectArguments(function);
}

}  // namespace
