#include <algorithm>
#include <cmath>

#include "anycall.h"
#include "zmocv.h"

namespace {

#define ROW(fn, ...) \
    { {#fn, fn}, __VA_ARGS__ }

double wrapped(double value) {
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<int64_t>(value)));
}

// ---- Tables of sums

struct Table {
    kit::Function function;
    bool tilted;
};

#define TABLES(types) \
    ROW(zmoiSqrIntegral_##types##_C1R, false), ROW(zmoiTiltedSqrIntegral_##types##_C1R, true)

const std::vector<Table> tables = {ROW(zmoiIntegral_8u32s_C1R, false),
                                   ROW(zmoiTiltedIntegral_8u32s_C1R, true),
                                   ROW(zmoiIntegral_8u32f_C1R, false),
                                   ROW(zmoiTiltedIntegral_8u32f_C1R, true),
                                   TABLES(8u32s),
                                   TABLES(8u32s64f),
                                   TABLES(8u32f64f),
                                   ROW(zmoiIntegral_32f_C1R, false)};

// One row and one column more than the source.
ZmoiSize asTable(size_t image) {
    return image == 0 ? ZmoiSize{0, 0} : ZmoiSize{1, 1};
}

class TableCase : public kit::AnyCall {
  public:
    TableCase(const Table& t, ZmoiSize size, kit::Layout layout, std::vector<double> values)
        : AnyCall(t.function, size, layout, asTable), table(t), starts(std::move(values)) {
        starts.resize(t.function.values().size());
        for (size_t i = 0; i < starts.size(); ++i) setValue(i, starts[i]);
    }

    // The definition, one cell and one pixel at a time.
    void expectOracle() {
        std::vector<kit::Image<double>> expected(starts.size(), kit::Image<double>(sizeOf(1)));
        for (size_t t = 0; t < starts.size(); ++t)
            expected[t].fill([&](int x, int y) { return cellOf(t, x, y); });
        kit::forEachLevel([&] {
            for (size_t t = 0; t < starts.size(); ++t) fill(t + 1, [] { return 77; });
            EXPECT_EQ(run(), zmoStsNoErr);
            for (size_t t = 0; t < starts.size(); ++t)
                expectTarget(t + 1, [&](int x, int y, int) { return expected[t].get(x, y); });
        });
    }

    const Table& table;
    std::vector<double> starts;

  private:
    double cellOf(size_t t, int x, int y) {
        if (function().isNamed("l_32f_")) return floatCell(x, y);
        double sum = 0;
        for (int j = 0; j < y; ++j) {
            // What of the row j the sum covers.
            const int reach = y - 1 - j;
            const int first = table.tilted ? std::max(x - 1 - reach, 0) : 0;
            const int last = table.tilted ? std::min(x - 1 + reach, roi().width - 1) : x - 1;
            for (int i = first; i <= last; ++i) {
                const double a = get(0, i, j);
                sum += t == 0 ? a : a * a;
            }
        }
        sum += starts[t];
        return std::holds_alternative<kit::Image<Zmo32s>>(image(t + 1)) ? wrapped(sum) : sum;
    }
    // Rounded to single precision in every row.
    double floatCell(int x, int y) const {
        double value = starts[0];
        for (int j = 0; j < y; ++j) {
            double row = 0;
            for (int i = 0; i < x; ++i) row += get(0, i, j);
            value = static_cast<float>(value + row);
        }
        return value;
    }
};

TEST(Integral, Oracle) {
    kit::Random random(71);
    auto sizes = kit::sizes();
    sizes.insert(sizes.end(), {{4, 30}, {521, 3}, {1030, 2}});
    size_t turn = 0;
    for (const Table& table : tables) {
        SCOPED_TRACE(table.function.name());
        const bool floats = table.function.isNamed("l_32f_");
        for (const ZmoiSize size : sizes) {
            SCOPED_TRACE(size);
            const double size32f = turn % 2 == 0 ? 100 : 1e30;
            TableCase c(table, size, kit::layouts()[turn % 4],
                        {random.pick<double>({0, -12345, 1000000}),
                         random.pick<double>({-7, 0, 123456789})});
            c.fill(0, [&]() -> double {
                if (floats) return random.uniform(-1, 1) * size32f;
                return turn % 5 == 0 ? 255 : static_cast<double>(random.between(0, 255));
            });
            c.expectOracle();
            ++turn;
        }
    }
}

// What an integer cannot hold, and 32s tables that wrap around, whose differences stay right.
TEST(Integral, ExtremeStarts) {
    kit::Random random(72);
    for (const Table& table : tables) {
        const bool wraps = table.function.isNamed("_8u32s_");
        if (!wraps && !table.function.isNamed("_8u32f")) continue;
        SCOPED_TRACE(table.function.name());
        using Starts = std::vector<std::vector<double>>;
        const Starts all = wraps ? Starts{{INT32_MAX - 100, INT32_MIN}}
                                 : Starts{{0x1p50, 1e300}, {-0x1p50, -0x1.fffp60}, {0.1F, -0.1}};
        for (const auto& starts : all) {
            TableCase c(table, {70, 9}, {}, starts);
            c.fill(0, [&] { return wraps ? 255 : random.between(0, 255); });
            c.expectOracle();
        }
    }
}

// Sums of more than 2^32 in 32f tables. All pixels are 0 or 255, so that the squares, which 64f holds
// exactly, are 255 times the values.
TEST(Integral, LongSumsAreExact) {
    const auto expectLong = [](auto function, ZmoiSize size) {
        std::vector<Zmo8u> src(static_cast<size_t>(size.width) * static_cast<size_t>(size.height),
                               255);
        for (size_t i = 0; i < src.size(); i += 997) src[i] = 0;
        const int columns = size.width + 1;
        std::vector<Zmo32f> sums(static_cast<size_t>(columns) *
                                 static_cast<size_t>(size.height + 1));
        std::vector<Zmo64f> squares(sums.size());
        kit::succeed([&] {
            return function(src.data(), size.width, sums.data(), columns * 4, squares.data(),
                            columns * 8, size, -5.5F, 0);
        });
        size_t wrong = 0;
        for (size_t i = 0; i < sums.size(); ++i)
            wrong += sums[i] != static_cast<float>(squares[i] / 255 - 5.5);
        EXPECT_EQ(wrong, 0U);
        EXPECT_GT(*std::ranges::max_element(sums), 0x1p32F);
    };
    kit::forEachLevel([&] {
        expectLong(zmoiSqrIntegral_8u32f64f_C1R, {4200, 4100});
        expectLong(zmoiTiltedSqrIntegral_8u32f64f_C1R, {3000, 6500});
    });
}

TEST(Integral, BadArguments) {
    for (const Table& table : tables) {
        SCOPED_TRACE(table.function.name());
        TableCase c(table, {12, 4}, {}, {1, 1});
        std::vector<kit::Wrong> wrong;
        if (table.function.isNamed("_8u32f")) {
            const kit::Function& f = table.function;
            std::vector<kit::Wrong::Argument> longRow = {
                {f.sizes()[0], ZmoiSize{(1 << 22) + 1, 1}}};
            for (const size_t i : f.images()) longRow.push_back({i + 1, 1 << 26});
            wrong = {{f.values()[0], {0x1.1p50, NAN}, zmoStsRangeErr},
                     {longRow, zmoStsTooLargeErr}};
        }
        kit::expectBadArguments(c.call(), wrong);
    }
}

// ---- Deviations

struct Deviation {
    kit::Function function;
    bool tilted;
    // Makes both tables of a picture.
    kit::Function tables;
};

#define DEVIATION(types, tilt, tilted, tables) \
    ROW(zmoi##tilt##RectStdDev_##types, tilted, {#tables, tables})
#define DEVIATIONS(types, tables)                              \
    DEVIATION(types, , false, zmoiSqrIntegral_##tables##_C1R), \
        DEVIATION(types, Tilted, true, zmoiTiltedSqrIntegral_##tables##_C1R)

const std::vector<Deviation> deviations = {
    DEVIATIONS(32s_C1RSfs, 8u32s), DEVIATIONS(32s32f_C1R, 8u32s64f), DEVIATIONS(32f_C1R, 8u32f64f)};

class DevCase : public kit::AnyCall {
  public:
    // A tilted rectangle is moved to the right by its height, by which it reaches to the left.
    DevCase(const Deviation& d, ZmoiSize size, ZmoiRect r, kit::Layout layout)
        : AnyCall(d.function, size, layout,
                  [&](size_t image) {
                      const int tilt = d.tilted ? 1 : 0;
                      return image == 2 ? ZmoiSize{0, 0}
                                        : ZmoiSize{r.x + r.width + tilt * r.height,
                                                   r.y + r.height + tilt * r.width};
                  }),
          deviation(d),
          rect(r) {
        if (d.tilted) rect.x += rect.height;
        picture = {size.width + rect.x + rect.width - 1,
                   size.height + rect.y + rect.height - 1 + (d.tilted ? rect.width : 0)};
        setValueTo(0, rect);
        setScale(0);
        // What the rectangle needs beyond the region is the rectangle's fault.
        for (const size_t table : {0U, 1U}) setRowNeeded(table, size.width);
    }

    bool scaled() const { return function().isNamed("Sfs"); }
    void setScale(int factor) {
        scale = scaled() ? factor : 0;
        if (scaled()) setValue(1, factor);
    }

    template <class Draw>
    void draw(Draw drawPixel, double start = 0, double sqrStart = 0) {
        AnyCall made(deviation.tables, picture, {}, asTable);
        made.fill(0, drawPixel);
        made.setValue(0, start);
        made.setValue(1, sqrStart);
        EXPECT_EQ(made.run(), zmoStsNoErr);
        for (const size_t table : {0U, 1U})
            fill(table, [&](int x, int y) { return made.get(table + 1, x, y); });
        pixels = kit::Image<double>(picture);
        pixels.fill([&](int x, int y) { return made.get(0, x, y); });
    }

    void expectOracle() {
        fill(2, [] { return 77; });
        EXPECT_EQ(run(), zmoStsNoErr);
        expectTarget(2, [&](int x, int y, int) { return expected(x, y); });
    }

    // Of the pixels themselves.
    double pixelDeviation(int x, int y) const {
        double n = 0;
        double sum = 0;
        double squares = 0;
        kit::forEachPixel(picture, [&](int i, int j) {
            if (!covers(i - x - rect.x, j - y - rect.y)) return;
            const double p = pixels.get(i, j);
            n += 1;
            sum += p;
            squares += p * p;
        });
        return std::sqrt(squares / n - sum / n * (sum / n));
    }

    const Deviation& deviation;
    ZmoiRect rect;
    int scale = 0;

  private:
    // The sum over the rectangle of the pixel (x, y).
    double cornerSum(size_t table, int x, int y) const {
        const int left = x + rect.x;
        const int top = y + rect.y;
        const int w = rect.width;
        const int h = rect.height;
        const auto at = [&](int column, int row) { return get(table, column, row); };
        return deviation.tilted ? (at(left + w - h, top + w + h) - at(left + w, top + w)) -
                                      (at(left - h, top + h) - at(left, top))
                                : (at(left + w, top + h) - at(left, top + h)) -
                                      (at(left + w, top) - at(left, top));
    }

    double expected(int x, int y) const {
        const bool wraps = !function().isNamed("Dev_32f_");
        const double n = (deviation.tilted ? 2.0 : 1.0) * rect.width * rect.height;
        double s = cornerSum(0, x, y);
        double r = cornerSum(1, x, y);
        if (wraps) s = wrapped(s);
        if (scaled()) r = static_cast<uint32_t>(static_cast<int64_t>(r));
        const double d = std::max(n * r - s * s, 0.0);
        if (!scaled()) return std::sqrt(static_cast<float>(d * (1 / (n * n))));
        return std::min(std::nearbyint(std::ldexp(std::sqrt(d) / n, -scale)), 2147483647.0);
    }

    // A pixel (i, j) from the rectangle's own corner. Tilted, it lies between two falling and two
    // rising diagonals; the corner itself is the cell of the triangle that stands on (-1, -1).
    bool covers(int i, int j) const {
        if (!deviation.tilted) return i >= 0 && i < rect.width && j >= 0 && j < rect.height;
        const int falling = (i + 1) + (j + 1);
        const int rising = (j + 1) - (i + 1);
        return falling > 0 && falling <= 2 * rect.width && rising > 0 && rising <= 2 * rect.height;
    }

    ZmoiSize picture{};
    kit::Image<double> pixels{{1, 1}};
};

TEST(RectStdDev, Oracle) {
    const std::vector<ZmoiRect> rects = {{0, 0, 1, 1}, {0, 0, 3, 3}, {2, 1, 5, 2}, {1, 3, 2, 7}};
    const auto expect = [&](kit::Random& random, const Deviation& deviation, ZmoiSize size,
                            kit::Layout layout, size_t turn) {
        DevCase c(deviation, size, random.pick(rects), layout);
        c.setScale(static_cast<int>(turn % 9) - 4);
        c.draw([&] { return random.between(0, 255); }, 1000, -1000);
        c.expectOracle();
        c.draw([] { return 200; });
        c.expectOracle();
    };
    kit::forEachRow(73, deviations, kit::sizes(), expect);
    kit::forEachRow(75, deviations, [](kit::Random& random, const Deviation& deviation) {
        DevCase c(deviation, {20, 20}, {1, 2, 9, 4}, {});
        c.draw([&] { return random.between(0, 1) * 255; });
        c.expectOracle();
        kit::forEachPixel(c.roi(), [&](int x, int y) {
            EXPECT_NEAR(c.get(2, x, y), c.pixelDeviation(x, y), c.scaled() ? 0.5 + 1e-9 : 1e-4);
        });
    });
}

// Sums of squares lie between 2^31 and 2^32 here.
TEST(RectStdDev, TablesOf32sMayWrapAround) {
    kit::forEachLevel([&] {
        for (const size_t i : {0U, 1U}) {
            const int side = deviations[i].tilted ? 150 : 200;
            DevCase c(deviations[i], {5, 5}, {0, 0, side, side}, {});
            kit::Random random(74);
            c.setScale(-10);
            c.draw([&] { return random.between(230, 255); }, INT32_MAX - 5000, INT32_MAX - 70000);
            c.expectOracle();
            EXPECT_NEAR(c.get(2, 2, 2) / 1024.0, c.pixelDeviation(2, 2), 1e-3);
        }
    });
}

// The sums of an even area pass 2^24: those of 32f are rounded, and what is left of the variance may
// lie below zero.
TEST(RectStdDev, RoundedTablesGiveNoNegativeVariance) {
    kit::forEachRow(76, deviations, [](kit::Random&, const Deviation& deviation) {
        const int side = deviation.tilted ? 150 : 300;
        DevCase c(deviation, {9, 9}, {0, 0, side, side}, {});
        if (c.scaled()) return;  // its tables of 32s are exact, and too short for this
        c.draw([] { return 253; });
        c.expectOracle();
        kit::forEachPixel(c.roi(), [&](int x, int y) { EXPECT_GE(c.get(2, x, y), 0); });
    });
}

TEST(RectStdDev, ScaledResultsRoundToEvenAndSaturate) {
    kit::forEachLevel([&] {
        DevCase c(deviations[0], {8, 1}, {0, 0, 2, 1}, {});
        // Deviations |a - b| / 2: 0.5, 1.5, 2.5, 127.5.
        const int values[] = {0, 1, 4, 9, 254, 255, 0, 255, 0};
        int next = 0;
        c.draw([&] { return values[next++]; });
        const auto at = [&](int x, int scale) {
            c.setScale(scale);
            c.expectOracle();
            return c.get(2, x, 0);
        };
        for (const int scale : {-31, -23, -1, 1, 2, 31}) at(0, scale);
        EXPECT_EQ(at(6, -24), 2139095040);
        EXPECT_EQ(at(6, -25), INT32_MAX);
        EXPECT_EQ(at(0, 0), 0);
        EXPECT_EQ(at(1, 0), 2);
        EXPECT_EQ(at(2, 0), 2);
    });
}

TEST(RectStdDev, BadArguments) {
    for (const Deviation& deviation : deviations) {
        SCOPED_TRACE(deviation.function.name());
        DevCase c(deviation, {12, 4}, {0, 1, 3, 2}, {});
        const auto [x, y, w, h] = c.rect;
        // Empty, above the tables, beside their first column, and beside their last.
        c.expectBadArguments(
            {{0,
              {ZmoiRect{x, y, 0, h}, ZmoiRect{x, y, w, -1}, ZmoiRect{x, -1, w, h},
               ZmoiRect{x - 1, y, w, h}, ZmoiRect{x + 1, y, w, h}, ZmoiRect{INT32_MAX, y, w, h}},
              zmoStsRectErr},
             {1, {32, -32}, zmoStsScaleErr}});
    }
}

}  // namespace
