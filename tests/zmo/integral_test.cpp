#include <algorithm>
#include <cmath>

#include "case.h"
#include "zmocv.h"

namespace {

#define ROW(fn, ...) \
    { ZMO(fn), __VA_ARGS__ }

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

// Tables have one row and one column more than the source.
kit::Case tableOf(const kit::Function& function, ZmoiSize size, kit::Layout layout = {},
                  double start = 0, double sqrStart = 0) {
    const ZmoiSize larger{size.width + 1, size.height + 1};
    return kit::Case(function, size, layout, {{"pDst", larger}, {"pDst2", larger}})
        .with({{"start", start}, {"sqrStart", sqrStart}});
}

double cellOf(const Table& table, const kit::AnyImage& src, int power, int x, int y) {
    double sum = 0;
    for (int j = 0; j < y; ++j) {
        // What of the row j the sum covers.
        const int reach = y - 1 - j;
        const int first = table.tilted ? std::max(x - 1 - reach, 0) : 0;
        const int last = table.tilted ? std::min(x - 1 + reach, src.size().width - 1) : x - 1;
        for (int i = first; i <= last; ++i) {
            const double a = src.get(i, j);
            sum += power == 1 ? a : a * a;
        }
    }
    return sum;
}

// Rounded to single precision in every row.
double floatCell(const kit::AnyImage& src, double start, int x, int y) {
    double value = start;
    for (int j = 0; j < y; ++j) {
        double row = 0;
        for (int i = 0; i < x; ++i) row += src.get(i, j);
        value = static_cast<float>(value + row);
    }
    return value;
}

// The definition, one cell and one pixel at a time.
kit::Case& wantTables(kit::Case& c, const Table& table, double start, double sqrStart) {
    for (int power = 1; power < static_cast<int>(c.imageCount()); ++power) {
        const kit::AnyImage& target = c.image(static_cast<size_t>(power));
        c.want(power == 1 ? "pDst" : "pDst2", [&](int x, int y) {
            if (table.function.isNamed("l_32f_")) return floatCell(c.src(), start, x, y);
            const double cell =
                cellOf(table, c.src(), power, x, y) + (power == 1 ? start : sqrStart);
            return target.type() == zmo32s ? wrapped(cell) : cell;
        });
    }
    return c;
}

TEST(Integral, Oracle) {
    kit::forEachCase(
        {71, 1, {{4, 30}, {521, 3}, {1030, 2}}}, tables,
        [](auto& random, const Table& table, ZmoiSize size, kit::Layout layout, size_t turn) {
            const bool floats = table.function.isNamed("l_32f_");
            const auto start = random.template pick<double>({0, -12345, 1000000});
            const auto sqrStart = random.template pick<double>({-7, 0, 123456789});
            kit::Case c = tableOf(table.function, size, layout, start, sqrStart);
            c.src().fill([&]() -> double {
                if (floats) return random.uniform(-1, 1) * (turn % 2 ? 1e30 : 100);
                return turn % 5 == 0 ? 255 : static_cast<double>(random.between(0, 255));
            });
            return wantTables(c, table, start, sqrStart);
        });
}

// What an integer cannot hold, and 32s tables that wrap around, whose differences stay right.
TEST(Integral, ExtremeStarts) {
    kit::Random random(72);
    for (const Table& table : tables) {
        const bool wraps = table.function.isNamed("_8u32s_");
        if (!wraps && !table.function.isNamed("_8u32f")) continue;
        using Starts = std::vector<std::pair<double, double>>;
        const Starts all = wraps ? Starts{{INT32_MAX - 100, INT32_MIN}}
                                 : Starts{{0x1p50, 1e300}, {-0x1p50, -0x1.fffp60}, {0.1F, -0.1}};
        for (const auto& [start, sqrStart] : all) {
            kit::Case c = tableOf(table.function, {70, 9}, {}, start, sqrStart);
            c.src().fill([&] { return wraps ? 255 : random.between(0, 255); });
            kit::expectAtAllLevels(wantTables(c, table, start, sqrStart));
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
        EXPECT_EQ(kit::watched([&] {
                      return function(src.data(), size.width, sums.data(), columns * 4,
                                      squares.data(), columns * 8, size, -5.5F, 0);
                  }),
                  zmoStsNoErr);
        size_t wrong = 0;
        for (size_t i = 0; i < sums.size(); ++i)
            wrong += sums[i] != static_cast<float>(squares[i] / 255 - 5.5);
        EXPECT_EQ(wrong, 0U);
        EXPECT_GT(*std::ranges::max_element(sums), 0x1p32F);
    };
    kit::forLevels([&] {
        expectLong(zmoiSqrIntegral_8u32f64f_C1R, {4200, 4100});
        expectLong(zmoiTiltedSqrIntegral_8u32f64f_C1R, {3000, 6500});
    });
}

TEST(Integral, BadArguments) {
    for (const Table& table : tables) {
        std::vector<kit::Wrong> wrong;
        if (table.function.isNamed("_8u32f")) {
            std::vector<kit::Wrong::Argument> longRow = {
                {"roi", ZmoiSize{(1 << 22) + 1, 1}}, {"srcStep", 1 << 26}, {"dstStep", 1 << 26}};
            if (table.function.has("dst2Step")) longRow.push_back({"dst2Step", 1 << 26});
            wrong = {{"start", {0x1.1p50, NAN}, zmoStsRangeErr}, {longRow, zmoStsTooLargeErr}};
        }
        tableOf(table.function, {12, 4}).expectBadArguments(wrong);
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
    ROW(zmoi##tilt##RectStdDev_##types, tilted, ZMO(tables))
#define DEVIATIONS(types, tables)                              \
    DEVIATION(types, , false, zmoiSqrIntegral_##tables##_C1R), \
        DEVIATION(types, Tilted, true, zmoiTiltedSqrIntegral_##tables##_C1R)

const std::vector<Deviation> deviations = {
    DEVIATIONS(32s_C1RSfs, 8u32s), DEVIATIONS(32s32f_C1R, 8u32s64f), DEVIATIONS(32f_C1R, 8u32f64f)};

class DevCase {
  public:
    // A tilted rectangle is moved to the right by its height, by which it reaches to the left.
    DevCase(const Deviation& d, ZmoiSize size, ZmoiRect r, kit::Layout layout = {}, int scaled = 0)
        : deviation(d),
          scale(d.function.has("scaleFactor") ? scaled : 0),
          rect{r.x + (d.tilted ? r.height : 0), r.y, r.width, r.height},
          below(rect.y + rect.height + (d.tilted ? rect.width : 0)),
          picture{size.width + rect.x + rect.width - 1, size.height + below - 1},
          c(d.function, size, layout,
            {{"pSrc", {picture.width + 1, picture.height + 1}},
             {"pSqr", {picture.width + 1, picture.height + 1}}}) {
        c.with({{"rect", rect}, {"scaleFactor", scale}});
        // What the rectangle needs beyond the region is the rectangle's fault.
        for (const char* const image : {"pSrc", "pSqr"}) c.setRowNeeded(image, size.width);
    }

    template <class Draw>
    DevCase& draw(Draw drawPixel, double start = 0, double sqrStart = 0) {
        kit::Case made = tableOf(deviation.tables, picture, {}, start, sqrStart);
        made.src().fill(drawPixel);
        EXPECT_EQ(made.run(), zmoStsNoErr);
        for (const size_t table : {0U, 1U}) {
            c.image(table).fill([&](int x, int y) { return made.image(table + 1).get(x, y); });
        }
        pixels.emplace(made.src());
        c.want("pDst", [&](int x, int y) { return expected(x, y); });
        return *this;
    }
    double at(int x, int y) const { return wanted().get(x, y); }
    kit::AnyImage wanted() const {
        return c.dst().alike([&](int x, int y) { return expected(x, y); });
    }

    // Of the pixels themselves.
    double pixelDeviation(int x, int y) const {
        double n = 0;
        double sum = 0;
        double squares = 0;
        kit::forEachPixel(picture, [&](int i, int j) {
            if (!covers(i - x - rect.x, j - y - rect.y)) return;
            const double p = pixels->get(i, j);
            n += 1;
            sum += p;
            squares += p * p;
        });
        return std::sqrt(squares / n - sum / n * (sum / n));
    }

    const Deviation& deviation;
    int scale;
    ZmoiRect rect;
    int below;
    ZmoiSize picture;
    kit::Case c;

  private:
    // The sum over the rectangle of the pixel (x, y).
    double cornerSum(size_t table, int x, int y) const {
        const int left = x + rect.x;
        const int top = y + rect.y;
        const int w = rect.width;
        const int h = rect.height;
        const auto at = [&](int column, int row) { return c.image(table).get(column, row); };
        return deviation.tilted ? (at(left + w - h, top + w + h) - at(left + w, top + w)) -
                                      (at(left - h, top + h) - at(left, top))
                                : (at(left + w, top + h) - at(left, top + h)) -
                                      (at(left + w, top) - at(left, top));
    }

    double expected(int x, int y) const {
        const bool wraps = !deviation.function.isNamed("Dev_32f_");
        const double n = (deviation.tilted ? 2.0 : 1.0) * rect.width * rect.height;
        double s = cornerSum(0, x, y);
        double r = cornerSum(1, x, y);
        const bool scaled = deviation.function.has("scaleFactor");
        if (wraps) s = wrapped(s);
        if (scaled) r = static_cast<uint32_t>(static_cast<int64_t>(r));
        const double d = std::max(n * r - s * s, 0.0);
        if (!scaled) return std::sqrt(static_cast<float>(d * (1 / (n * n))));
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

    std::optional<kit::AnyImage> pixels;
};

TEST(RectStdDev, Oracle) {
    const std::vector<ZmoiRect> rects = {{0, 0, 1, 1}, {0, 0, 3, 3}, {2, 1, 5, 2}, {1, 3, 2, 7}};
    kit::forEachCase({73, 2}, deviations,
                     [&](auto& random, const Deviation& deviation, ZmoiSize size,
                         kit::Layout layout, size_t turn) {
                         DevCase d(deviation, size, random.pick(rects), layout,
                                   static_cast<int>(turn % 9) - 4);
                         if (turn % 2 == 0) return d.draw([] { return 200; }).c;
                         return d.draw([&] { return random.between(0, 255); }, 1000, -1000).c;
                     });
    kit::Random random(75);
    for (const Deviation& deviation : deviations) {
        DevCase d(deviation, {20, 20}, {1, 2, 9, 4});
        kit::expectAtAllLevels(d.draw([&] { return random.between(0, 1) * 255; }).c);
        const double near = deviation.function.has("scaleFactor") ? 0.5 + 1e-9 : 1e-4;
        kit::forEachPixel(d.c.roi(), [&](int x, int y) {
            EXPECT_NEAR(d.at(x, y), d.pixelDeviation(x, y), near);
        });
    }
}

// Sums of squares lie between 2^31 and 2^32 here.
TEST(RectStdDev, TablesOf32sMayWrapAround) {
    kit::Random random(74);
    for (const size_t i : {0U, 1U}) {
        const int side = deviations[i].tilted ? 150 : 200;
        DevCase d(deviations[i], {5, 5}, {0, 0, side, side}, {}, -10);
        d.draw([&] { return random.between(230, 255); }, INT32_MAX - 5000, INT32_MAX - 70000);
        kit::expectAtAllLevels(d.c);
        EXPECT_NEAR(d.at(2, 2) / 1024.0, d.pixelDeviation(2, 2), 1e-3);
    }
}

// The sums of an even area pass 2^24: those of 32f are rounded, and what is left of the variance may
// lie below zero.
TEST(RectStdDev, RoundedTablesGiveNoNegativeVariance) {
    for (const Deviation& deviation : deviations) {
        const int side = deviation.tilted ? 150 : 300;
        // Tables of 32s are exact, and too short for this.
        if (deviation.function.has("scaleFactor")) continue;
        DevCase d(deviation, {9, 9}, {0, 0, side, side});
        kit::expectAtAllLevels(d.draw([] { return 253; }).c);
        kit::forEachPixel(d.c.roi(), [&](int x, int y) { EXPECT_GE(d.at(x, y), 0); });
    }
}

TEST(RectStdDev, ScaledResultsRoundToEvenAndSaturate) {
    // Deviations |a - b| / 2: 0.5, 1.5, 2.5, 127.5.
    const int values[] = {0, 1, 4, 9, 254, 255, 0, 255, 0};
    const auto at = [&](int x, int scale) {
        DevCase d(deviations[0], {8, 1}, {0, 0, 2, 1}, {}, scale);
        int next = 0;
        kit::expectAtAllLevels(d.draw([&] { return values[next++]; }).c);
        return d.at(x, 0);
    };
    for (const int scale : {-31, -23, -1, 1, 2, 31}) at(0, scale);
    EXPECT_EQ(at(6, -24), 2139095040);
    EXPECT_EQ(at(6, -25), INT32_MAX);
    EXPECT_EQ(at(0, 0), 0);
    EXPECT_EQ(at(1, 0), 2);
    EXPECT_EQ(at(2, 0), 2);
}

TEST(RectStdDev, BadArguments) {
    for (const Deviation& deviation : deviations) {
        DevCase d(deviation, {12, 4}, {0, 1, 3, 2});
        const auto [x, y, w, h] = d.rect;
        // Empty, above the tables, beside their first column, and beside their last.
        d.c.expectBadArguments(
            {{"rect",
              {ZmoiRect{x, y, 0, h}, ZmoiRect{x, y, w, -1}, ZmoiRect{x, -1, w, h},
               ZmoiRect{x - 1, y, w, h}, ZmoiRect{x + 1, y, w, h}, ZmoiRect{INT32_MAX, y, w, h}},
              zmoStsRectErr}});
    }
}

}  // namespace
