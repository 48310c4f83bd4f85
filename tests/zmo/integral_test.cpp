#include <algorithm>
#include <cmath>

#include "kit.h"
#include "zmocv.h"

namespace {

// ---- Tables of sums

// Q is not looked at by the functions that make one table.
template <class T, class D, class Q>
struct Args {
    const T* pSrc;
    int srcStep;
    D* pDst;
    int dstStep;
    Q* pDst2;
    int dst2Step;
    ZmoiSize roi;
    D start;
    Q sqrStart;
};

template <class T, class D, class Q>
struct Function {
    const char* name;
    bool tilted;
    bool squares;
    std::function<ZmoStatus(const Args<T, D, Q>&)> run;
};

#define TABLE(fn, tilted)                                                                          \
    {                                                                                              \
#fn, tilted, false,                                                                        \
            [](const auto& a) { return fn(a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi, a.start); } \
    }
#define TWO_TABLES(fn, tilted)                                                             \
    {                                                                                      \
#fn, tilted, true, [](const auto& a) {                                                   \
            return fn(a.pSrc, a.srcStep, a.pDst, a.dstStep, a.pDst2, a.dst2Step, a.roi,  \
                      a.start, a.sqrStart);                                              \
        } \
    }

using From8uTo32s = Function<Zmo8u, Zmo32s, Zmo32s>;
using From8uTo32s64f = Function<Zmo8u, Zmo32s, Zmo64f>;
using From8uTo32f64f = Function<Zmo8u, Zmo32f, Zmo64f>;
using From32fTo32f = Function<Zmo32f, Zmo32f, Zmo64f>;

const std::vector<From8uTo32s> to32s = {TABLE(zmoiIntegral_8u32s_C1R, false),
                                        TABLE(zmoiTiltedIntegral_8u32s_C1R, true),
                                        TWO_TABLES(zmoiSqrIntegral_8u32s_C1R, false),
                                        TWO_TABLES(zmoiTiltedSqrIntegral_8u32s_C1R, true)};
const std::vector<From8uTo32s64f> to32s64f = {TWO_TABLES(zmoiSqrIntegral_8u32s64f_C1R, false),
                                              TWO_TABLES(zmoiTiltedSqrIntegral_8u32s64f_C1R, true)};
const std::vector<From8uTo32f64f> to32f64f = {TABLE(zmoiIntegral_8u32f_C1R, false),
                                              TABLE(zmoiTiltedIntegral_8u32f_C1R, true),
                                              TWO_TABLES(zmoiSqrIntegral_8u32f64f_C1R, false),
                                              TWO_TABLES(zmoiTiltedSqrIntegral_8u32f64f_C1R, true)};
const std::vector<From32fTo32f> from32f = {TABLE(zmoiIntegral_32f_C1R, false)};

bool inside(bool tilted, int x, int y, int i, int j) {
    return tilted ? j < y && std::abs(i - (x - 1)) <= y - 1 - j : i < x && j < y;
}

template <class D>
D tableValue(int64_t sum, D start) {
    if constexpr (std::is_same_v<D, Zmo32s>) {
        return static_cast<Zmo32s>(static_cast<uint32_t>(sum) + static_cast<uint32_t>(start));
    } else {
        return static_cast<D>(static_cast<double>(start) + static_cast<double>(sum));
    }
}

// The table's definition, one cell and one pixel at a time.
template <class D>
D expectedCell(const kit::Image<Zmo8u>& src, bool tilted, bool square, int x, int y, D start) {
    int64_t sum = 0;
    for (int j = 0; j < y; ++j) {
        for (int i = 0; i < src.size().width; ++i) {
            if (!inside(tilted, x, y, i, j)) continue;
            const int64_t a = src.get(i, j);
            sum += square ? a * a : a;
        }
    }
    return tableValue(sum, start);
}

// Rounded to single precision in every row.
float expectedCell(const kit::Image<Zmo32f>& src, bool, bool, int x, int y, float start) {
    float value = start;
    for (int j = 0; j < y; ++j) {
        double row = 0;
        for (int i = 0; i < x; ++i) row += src.get(i, j);
        value = static_cast<float>(value + row);
    }
    return value;
}

template <class T, class D, class Q>
struct Case {
    Case(ZmoiSize size, kit::Layout layout)
        : src(size, layout),
          dst({size.width + 1, size.height + 1}, {layout.misalign * 5 % 64, layout.padding}),
          dst2({size.width + 1, size.height + 1}, {layout.misalign * 3 % 64, layout.padding + 1}) {}

    Args<T, D, Q> args(D start, Q sqrStart) {
        return {src.ptr(),   src.step(), dst.ptr(), dst.step(), dst2.ptr(),
                dst2.step(), src.size(), start,     sqrStart};
    }

    template <class E>
    kit::Image<E> expected(const Function<T, D, Q>& function, bool square, E start) const {
        kit::Image<E> table(dst.size());
        for (int y = 0; y < table.size().height; ++y) {
            for (int x = 0; x < table.size().width; ++x) {
                table.set(x, y, expectedCell(src, function.tilted, square, x, y, start));
            }
        }
        return table;
    }

    void expectOracle(const Function<T, D, Q>& function, D start, Q sqrStart) {
        const auto sums = expected(function, false, start);
        const auto squares = [&] {
            if constexpr (std::is_same_v<T, Zmo8u>) return expected(function, true, sqrStart);
            return kit::Image<Q>({1, 1});
        }();
        kit::forEachLevel([&] {
            dst.fill([] { return 77; });
            dst2.fill([] { return 77; });
            kit::succeed([&] { return function.run(args(start, sqrStart)); });
            kit::expectPixels(dst, [&](int x, int y) { return sums.get(x, y); });
            dst.expectSurroundingsUntouched("table");
            dst2.expectSurroundingsUntouched("table of squares");
            if (!function.squares) return;
            kit::expectPixels(dst2, [&](int x, int y) { return squares.get(x, y); });
        });
        src.expectUntouched("source");
    }

    kit::Image<T> src;
    kit::Image<D> dst;
    kit::Image<Q> dst2;
};

std::vector<ZmoiSize> tableSizes() {
    auto sizes = kit::sizes();
    sizes.insert(sizes.end(), {{4, 30}, {521, 3}, {1030, 2}});
    return sizes;
}

template <class T, class D, class Q, class Draw>
void expectOracle(const std::vector<Function<T, D, Q>>& functions, Draw draw) {
    const auto layouts = kit::layouts();
    const D starts[] = {D(0), D(-12345), D(1000000.25)};
    const Q sqrStarts[] = {Q(-7.75), Q(0), Q(123456789)};
    size_t turn = 0;
    for (const auto& function : functions) {
        for (const ZmoiSize size : tableSizes()) {
            const kit::Layout layout = layouts[turn % layouts.size()];
            SCOPED_TRACE(testing::Message() << function.name << " " << size << " " << layout);
            Case<T, D, Q> c(size, layout);
            c.src.fill(draw);
            c.expectOracle(function, starts[turn % 3], sqrStarts[turn / 2 % 3]);
            ++turn;
        }
    }
}

TEST(Integral, Oracle) {
    kit::Random random(71);
    const auto any = [&] { return random.between(0, 255); };
    const auto white = [] { return 255; };
    expectOracle(to32s, any);
    expectOracle(to32s64f, any);
    expectOracle(to32f64f, any);
    expectOracle(to32f64f, white);
    expectOracle(from32f, [&] { return random.uniform(-100, 100); });
    expectOracle(from32f, [&] { return random.uniform(-1, 1) * 1e30; });
}

TEST(Integral, StartsThatAnIntegerCannotHold) {
    kit::Random random(72);
    for (const auto& function : to32f64f) {
        SCOPED_TRACE(function.name);
        Case<Zmo8u, Zmo32f, Zmo64f> c({70, 9}, {});
        c.src.fill([&] { return random.between(0, 255); });
        c.expectOracle(function, 0x1p50F, 1e300);
        c.expectOracle(function, -0x1p50F, -0x1.fffp60);
        c.expectOracle(function, 0.1F, -0.1);
    }
}

// Differences of a wrapped 32s table are right.
TEST(Integral, TablesOf32sWrapAround) {
    for (const auto& function : to32s) {
        SCOPED_TRACE(function.name);
        Case<Zmo8u, Zmo32s, Zmo32s> c({40, 20}, {});
        c.src.fill([] { return 255; });
        c.expectOracle(function, INT32_MAX - 100, INT32_MIN);
    }
}

// Sums of more than 2^32 in 32f tables. All pixels are 0 or 255, so that the squares, which 64f holds
// exactly, are 255 times the values.
void expectLongSums(const From8uTo32f64f& function, ZmoiSize size) {
    SCOPED_TRACE(function.name);
    const auto width = static_cast<size_t>(size.width);
    const auto height = static_cast<size_t>(size.height);
    std::vector<Zmo8u> src(width * height, 255);
    for (size_t i = 0; i < src.size(); i += 997) src[i] = 0;
    std::vector<Zmo32f> sums((width + 1) * (height + 1));
    std::vector<Zmo64f> squares(sums.size());
    const int columns = size.width + 1;
    kit::forEachLevel([&] {
        const Args<Zmo8u, Zmo32f, Zmo64f> args{src.data(),  size.width,     sums.data(),
                                               columns * 4, squares.data(), columns * 8,
                                               size,        -5.5F,          0};
        kit::succeed([&] { return function.run(args); });
        size_t wrong = 0;
        for (size_t i = 0; i < sums.size(); ++i) {
            wrong += sums[i] != static_cast<float>(squares[i] / 255 - 5.5);
        }
        EXPECT_EQ(wrong, 0U);
        EXPECT_GT(*std::max_element(sums.begin(), sums.end()), 0x1p32F);
    });
}

TEST(Integral, LongSumsAreExact) {
    expectLongSums(to32f64f[2], {4200, 4100});
    expectLongSums(to32f64f[3], {3000, 6500});
}

template <class T, class D, class Q>
void expectBadArguments(const std::vector<Function<T, D, Q>>& functions) {
    using A = Args<T, D, Q>;
    for (const auto& function : functions) {
        SCOPED_TRACE(function.name);
        std::vector<kit::Fault<A>> faults = {
            {"null source", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }},
            {"null table", zmoStsNullPtrErr, [](A& a) { a.pDst = nullptr; }}};
        const auto add = [&](bool applies, kit::Fault<A> fault) {
            if (applies) faults.push_back(std::move(fault));
        };
        add(function.squares, {"null squares", zmoStsNullPtrErr, [](A& a) { a.pDst2 = nullptr; }});
        add(true, {"width 0", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }});
        add(true, {"height 0", zmoStsSizeErr, [](A& a) { a.roi.height = 0; }});
        add(true, {"source step short", zmoStsStepErr, [](A& a) { a.srcStep = 11 * sizeof(T); }});
        add(true, {"table without its last column", zmoStsStepErr,
                   [](A& a) { a.dstStep = 12 * sizeof(D); }});
        add(true, {"table step odd", zmoStsStepErr, [](A& a) { a.dstStep += 1; }});
        add(function.squares, {"squares without their last column", zmoStsStepErr,
                               [](A& a) { a.dst2Step = 12 * sizeof(Q); }});
        if constexpr (std::is_same_v<T, Zmo8u> && std::is_same_v<D, Zmo32f>) {
            add(true, {"start large", zmoStsRangeErr, [](A& a) { a.start = 0x1.1p50F; }});
            add(true, {"start no number", zmoStsRangeErr, [](A& a) { a.start = NAN; }});
            add(true, {"row too long", zmoStsTooLargeErr, [](A& a) {
                           a.roi = {(1 << 22) + 1, 1};
                           a.srcStep = a.dstStep = a.dst2Step = 1 << 26;
                       }});
        }
        Case<T, D, Q> c({12, 4}, {0, 2});
        c.src.fill([] { return 9; });
        kit::expectFaults(c.args(1, 1), function.run, faults, [&] {
            c.dst.expectUntouched("table");
            c.dst2.expectUntouched("table of squares");
        });
    }
}

TEST(Integral, BadArguments) {
    expectBadArguments(to32s);
    expectBadArguments(to32s64f);
    expectBadArguments(to32f64f);
    expectBadArguments(from32f);
}

// ---- Deviations

template <class T, class Q, class D>
struct DevArgs {
    const T* pSrc;
    int srcStep;
    const Q* pSqr;
    int sqrStep;
    D* pDst;
    int dstStep;
    ZmoiSize roi;
    ZmoiRect rect;
    int scaleFactor;
};

template <class T, class Q, class D>
struct DevFunction {
    const char* name;
    bool tilted;
    std::function<ZmoStatus(const DevArgs<T, Q, D>&)> run;
    // Makes both tables of a picture.
    ZmoStatus (*tables)(const Zmo8u*, int, T*, int, Q*, int, ZmoiSize, T, Q);
};

#define DEVIATION(fn, tilted, tables, ...)                                                         \
    {                                                                                              \
#fn, tilted, [](const auto& a) {                                                                 \
            return fn(a.pSrc, a.srcStep, a.pSqr, a.sqrStep, a.pDst, a.dstStep, a.roi,            \
                      a.rect __VA_OPT__(, ) __VA_ARGS__);                                        \
        }, tables \
    }

const std::vector<DevFunction<Zmo32s, Zmo32s, Zmo32s>> scaled = {
    DEVIATION(zmoiRectStdDev_32s_C1RSfs, false, zmoiSqrIntegral_8u32s_C1R, a.scaleFactor),
    DEVIATION(zmoiTiltedRectStdDev_32s_C1RSfs, true, zmoiTiltedSqrIntegral_8u32s_C1R,
              a.scaleFactor)};
const std::vector<DevFunction<Zmo32s, Zmo64f, Zmo32f>> from32s = {
    DEVIATION(zmoiRectStdDev_32s32f_C1R, false, zmoiSqrIntegral_8u32s64f_C1R),
    DEVIATION(zmoiTiltedRectStdDev_32s32f_C1R, true, zmoiTiltedSqrIntegral_8u32s64f_C1R)};
const std::vector<DevFunction<Zmo32f, Zmo64f, Zmo32f>> fromFloat = {
    DEVIATION(zmoiRectStdDev_32f_C1R, false, zmoiSqrIntegral_8u32f64f_C1R),
    DEVIATION(zmoiTiltedRectStdDev_32f_C1R, true, zmoiTiltedSqrIntegral_8u32f64f_C1R)};

double difference(double left, double right, double) {
    return left - right;
}
// Of wrapped numbers.
Zmo32s difference(Zmo32s left, Zmo32s right, Zmo32s) {
    return static_cast<Zmo32s>(static_cast<uint32_t>(left) - static_cast<uint32_t>(right));
}

// The sum over the rectangle of the pixel (x, y).
template <class T>
double cornerSum(const kit::Image<T>& table, bool tilted, int x, int y, ZmoiRect r, bool square) {
    const int left = x + r.x;
    const int top = y + r.y;
    const int w = r.width;
    const int h = r.height;
    const auto at = [&](int column, int row) { return table.get(column, row); };
    using W = std::conditional_t<std::is_same_v<T, Zmo32s>, Zmo32s, double>;
    const auto minus = [](W a, W b) { return difference(a, b, W()); };
    const W sum = tilted ? minus(minus(at(left + w - h, top + w + h), at(left + w, top + w)),
                                 minus(at(left - h, top + h), at(left, top)))
                         : minus(minus(at(left + w, top + h), at(left, top + h)),
                                 minus(at(left + w, top), at(left, top)));
    if constexpr (std::is_same_v<T, Zmo32s>) {
        if (square) return static_cast<uint32_t>(sum);
    }
    return sum;
}

template <class T, class Q, class D>
struct DevCase {
    DevCase(const DevFunction<T, Q, D>& f, ZmoiSize size, ZmoiRect r, kit::Layout layout)
        : function(f),
          rect(r),
          picture({size.width + r.x + r.width - 1,
                   size.height + r.y + r.height - 1 + (f.tilted ? r.width : 0)}),
          sums(larger(picture.size()), layout),
          squares(larger(picture.size()), {layout.misalign * 5 % 64, layout.padding + 1}),
          dst(size, {layout.misalign * 3 % 64, layout.padding}) {}

    static ZmoiSize larger(ZmoiSize size) { return {size.width + 1, size.height + 1}; }

    template <class Draw>
    void fill(Draw draw, T start = 0, Q sqrStart = 0) {
        picture.fill(draw);
        EXPECT_EQ(function.tables(picture.ptr(), picture.step(), sums.ptr(), sums.step(),
                                  squares.ptr(), squares.step(), picture.size(), start, sqrStart),
                  zmoStsNoErr);
        sums.snapshot();
        squares.snapshot();
    }

    DevArgs<T, Q, D> args(int scaleFactor) {
        return {sums.ptr(), sums.step(), squares.ptr(), squares.step(), dst.ptr(),
                dst.step(), dst.size(),  rect,          scaleFactor};
    }

    D expected(int x, int y, int scaleFactor) const {
        const double n = (function.tilted ? 2.0 : 1.0) * rect.width * rect.height;
        const double s = cornerSum(sums, function.tilted, x, y, rect, false);
        const double r = cornerSum(squares, function.tilted, x, y, rect, true);
        const double d = std::max(n * r - s * s, 0.0);
        if constexpr (std::is_same_v<D, Zmo32f>) {
            return std::sqrt(static_cast<float>(d * (1 / (n * n))));
        } else {
            const double value = std::nearbyint(std::ldexp(std::sqrt(d) / n, -scaleFactor));
            return static_cast<D>(std::min(value, 2147483647.0));
        }
    }

    void expectOracle(int scaleFactor) {
        kit::forEachLevel([&] {
            dst.fill([] { return 77; });
            kit::succeed([&] { return function.run(args(scaleFactor)); });
            kit::expectPixels(dst, [&](int x, int y) { return expected(x, y, scaleFactor); });
            dst.expectSurroundingsUntouched("result");
        });
        sums.expectUntouched("sums");
        squares.expectUntouched("squares");
    }

    // Of the pixels themselves.
    double pixelDeviation(int x, int y) const {
        std::vector<double> pixels;
        for (int j = 0; j < picture.size().height; ++j) {
            for (int i = 0; i < picture.size().width; ++i) {
                if (covers(i - x - rect.x, j - y - rect.y)) pixels.push_back(picture.get(i, j));
            }
        }
        double mean = 0;
        for (const double p : pixels) mean += p / static_cast<double>(pixels.size());
        double variance = 0;
        for (const double p : pixels) {
            variance += (p - mean) * (p - mean) / static_cast<double>(pixels.size());
        }
        return std::sqrt(variance);
    }

    // A pixel (i, j) from the rectangle's own corner. Tilted, it lies between two falling and two
    // rising diagonals; the corner itself is the cell of the triangle that stands on (-1, -1).
    bool covers(int i, int j) const {
        if (!function.tilted) return i >= 0 && i < rect.width && j >= 0 && j < rect.height;
        const int falling = (i + 1) + (j + 1);
        const int rising = (j + 1) - (i + 1);
        return falling > 0 && falling <= 2 * rect.width && rising > 0 && rising <= 2 * rect.height;
    }

    const DevFunction<T, Q, D>& function;
    ZmoiRect rect;
    kit::Image<Zmo8u> picture;
    kit::Image<T> sums;
    kit::Image<Q> squares;
    kit::Image<D> dst;
};

// Tilted rectangles reach to the left by their height.
ZmoiRect placed(ZmoiRect rect, bool tilted) {
    if (tilted) rect.x += rect.height;
    return rect;
}

const std::vector<ZmoiRect> rects = {{0, 0, 1, 1}, {0, 0, 3, 3}, {2, 1, 5, 2}, {1, 3, 2, 7}};

template <class T, class Q, class D>
void expectDeviations(const std::vector<DevFunction<T, Q, D>>& functions) {
    kit::Random random(73);
    const auto layouts = kit::layouts();
    size_t turn = 0;
    for (const auto& function : functions) {
        for (const ZmoiSize size : kit::sizes()) {
            const ZmoiRect rect = placed(rects[turn % rects.size()], function.tilted);
            const int scaleFactor = static_cast<int>(turn % 9) - 4;
            const kit::Layout layout = layouts[turn / 2 % layouts.size()];
            ++turn;
            SCOPED_TRACE(testing::Message()
                         << function.name << " " << size << " " << layout << " width " << rect.width
                         << " height " << rect.height << " scale " << scaleFactor);
            DevCase<T, Q, D> c(function, size, rect, layout);
            c.fill([&] { return random.between(0, 255); }, T(1000), Q(-1000));
            c.expectOracle(scaleFactor);
            c.fill([&] { return 200; });
            c.expectOracle(scaleFactor);
        }
        const ZmoiRect rect = placed({1, 2, 9, 4}, function.tilted);
        DevCase<T, Q, D> c(function, {20, 20}, rect, {});
        c.fill([&] { return random.between(0, 1) * 255; });
        kit::succeed([&] { return function.run(c.args(0)); });
        const double tolerance = std::is_same_v<D, Zmo32f> ? 1e-4 : 0.5 + 1e-9;
        for (int y = 0; y < 20; ++y) {
            for (int x = 0; x < 20; ++x) {
                EXPECT_NEAR(c.dst.get(x, y), c.pixelDeviation(x, y), tolerance);
            }
        }
    }
}

TEST(RectStdDev, Oracle) {
    expectDeviations(scaled);
    expectDeviations(from32s);
    expectDeviations(fromFloat);
}

// Sums of squares lie between 2^31 and 2^32 here.
TEST(RectStdDev, TablesOf32sMayWrapAround) {
    for (const auto& function : scaled) {
        SCOPED_TRACE(function.name);
        const int side = function.tilted ? 150 : 200;
        DevCase<Zmo32s, Zmo32s, Zmo32s> c(function, {5, 5},
                                          placed({0, 0, side, side}, function.tilted), {});
        kit::Random random(74);
        c.fill([&] { return random.between(230, 255); }, INT32_MAX - 5000, INT32_MAX - 70000);
        c.expectOracle(-10);
        EXPECT_NEAR(c.dst.get(2, 2) / 1024.0, c.pixelDeviation(2, 2), 1e-3);
    }
}

TEST(RectStdDev, ScaledResultsRoundToEvenAndSaturate) {
    const auto& function = scaled[0];
    DevCase<Zmo32s, Zmo32s, Zmo32s> c(function, {8, 1}, {0, 0, 2, 1}, {});
    // Deviations |a - b| / 2: 0.5, 1.5, 2.5, 127.5.
    const Zmo8u values[] = {0, 1, 4, 9, 254, 255, 0, 255, 0};
    int next = 0;
    c.fill([&] { return values[next++]; });
    for (const int scaleFactor : {-31, -24, -23, -1, 0, 1, 2, 31}) c.expectOracle(scaleFactor);
    kit::succeed([&] { return function.run(c.args(-24)); });
    EXPECT_EQ(c.dst.get(6, 0), 2139095040);
    kit::succeed([&] { return function.run(c.args(-25)); });
    EXPECT_EQ(c.dst.get(6, 0), INT32_MAX);
    kit::succeed([&] { return function.run(c.args(0)); });
    EXPECT_EQ(c.dst.get(0, 0), 0);
    EXPECT_EQ(c.dst.get(1, 0), 2);
    EXPECT_EQ(c.dst.get(2, 0), 2);
}

template <class T, class Q, class D>
void expectBadDeviations(const std::vector<DevFunction<T, Q, D>>& functions) {
    using A = DevArgs<T, Q, D>;
    for (const auto& function : functions) {
        SCOPED_TRACE(function.name);
        const ZmoiRect rect = placed({0, 1, 3, 2}, function.tilted);
        std::vector<kit::Fault<A>> faults = {
            {"null sums", zmoStsNullPtrErr, [](A& a) { a.pSrc = nullptr; }},
            {"null squares", zmoStsNullPtrErr, [](A& a) { a.pSqr = nullptr; }},
            {"null result", zmoStsNullPtrErr, [](A& a) { a.pDst = nullptr; }},
            {"width 0", zmoStsSizeErr, [](A& a) { a.roi.width = 0; }},
            {"height 0", zmoStsSizeErr, [](A& a) { a.roi.height = 0; }},
            {"sums step short", zmoStsStepErr, [](A& a) { a.srcStep = 11 * sizeof(T); }},
            {"squares step odd", zmoStsStepErr, [](A& a) { a.sqrStep += 1; }},
            {"result step short", zmoStsStepErr, [](A& a) { a.dstStep = 11 * sizeof(D); }},
            {"rectangle without width", zmoStsRectErr, [](A& a) { a.rect.width = 0; }},
            {"rectangle without height", zmoStsRectErr, [](A& a) { a.rect.height = -1; }},
            {"rectangle above", zmoStsRectErr, [](A& a) { a.rect.y = -1; }},
            {"rectangle beside the first column", zmoStsRectErr, [](A& a) { a.rect.x = -1; }},
            {"rectangle beside the last column", zmoStsRectErr,
             [=](A& a) { a.rect.x = rect.x + 1; }},
            {"rectangle far away", zmoStsRectErr, [](A& a) { a.rect.x = INT32_MAX; }},
        };
        if (function.tilted) {
            faults.push_back({"tilted rectangle beside the first column", zmoStsRectErr,
                              [=](A& a) { a.rect.x = rect.x - 1; }});
        }
        if constexpr (std::is_same_v<D, Zmo32s>) {
            faults.push_back({"scale 32", zmoStsScaleErr, [](A& a) { a.scaleFactor = 32; }});
            faults.push_back({"scale -32", zmoStsScaleErr, [](A& a) { a.scaleFactor = -32; }});
        }
        DevCase<T, Q, D> c(function, {12, 4}, rect, {});
        c.fill([] { return 9; });
        kit::expectFaults(c.args(1), function.run, faults,
                          [&] { c.dst.expectUntouched("result"); });
    }
}

TEST(RectStdDev, BadArguments) {
    expectBadDeviations(scaled);
    expectBadDeviations(from32s);
    expectBadDeviations(fromFloat);
}

}  // namespace
