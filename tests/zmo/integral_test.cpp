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
kit::Case tableOf(const kit::Function& function, const kit::Turn& t, double start = 0,
                  double sqrStart = 0) {
    const ZmoiSize larger{t.size.width + 1, t.size.height + 1};
    return kit::Case(function, t, {{"pDst", larger}, {"pDst2", larger}})
        .with({{"start", start}, {"sqrStart", sqrStart}});
}

double cellOf(const Table& table, const kit::Image& src, bool squares, int x, int y) {
    double sum = 0;
    for (int j = 0; j < y; ++j) {
        // What of the row j the sum covers.
        const int reach = y - 1 - j;
        const int first = table.tilted ? std::max(x - 1 - reach, 0) : 0;
        const int last = table.tilted ? std::min(x - 1 + reach, src.size().width - 1) : x - 1;
        for (int i = first; i <= last; ++i) sum += squares ? src(i, j) * src(i, j) : src(i, j);
    }
    return sum;
}

// Rounded to single precision in every row.
double floatCell(const kit::Image& src, double start, int x, int y) {
    double value = start;
    for (int j = 0; j < y; ++j) {
        double row = 0;
        for (int i = 0; i < x; ++i) row += src(i, j);
        value = kit::single(value + row);
    }
    return value;
}

// The definition, one cell and one pixel at a time.
kit::Case& wantTables(kit::Case& c, const Table& table, double start, double sqrStart) {
    const kit::Image src = c.src().numbers();
    for (const bool squares : {false, true}) {
        if (squares && !table.function.has("pDst2")) continue;
        const bool wraps = c.image(squares ? 2 : 1).type() == zmo32s;
        c.want(squares ? "pDst2" : "pDst", [&](int x, int y) {
            if (!c.src().isWhole()) return floatCell(src, start, x, y);
            const double cell = cellOf(table, src, squares, x, y) + (squares ? sqrStart : start);
            return wraps ? wrapped(cell) : cell;
        });
    }
    return c;
}

// Starts of usual sizes, starts that an integer cannot hold, and such that 32s tables wrap around,
// whose differences stay right.
double startOf(kit::Turn& t, const kit::Image& table) {
    if (table.type() == zmo32s) return t.pick<double>({0, -12345, INT32_MAX - 100, INT32_MIN});
    if (table.type() == zmo32f) return t.pick<double>({0, -12345, 0.1F, 0x1p50, -0x1p50});
    return t.pick<double>({-7, 123456789, -0.1, 1e300, -0x1.fffp60});
}

TEST(Integral, Oracle) {
    kit::forEachCase({71, 1, {{4, 30}, {521, 3}, {1030, 2}}}, tables,
                     [](kit::Turn& t, const Table& table) {
                         kit::Case c = tableOf(table.function, t);
                         const double start = startOf(t, c.image(1));
                         const double sqrStart = startOf(t, c.dst());
                         c.with({{"start", start}, {"sqrStart", sqrStart}});
                         c.src().fill([&] {
                             if (!c.src().isWhole())
                                 return t.uniform(-1, 1) * (t.number % 2 ? 1e30 : 100);
                             return t.number % 5 == 0 ? 255.0 : t.between(0, 255);
                         });
                         return wantTables(c, table, start, sqrStart);
                     });
}

// Sums of more than 2^32 in 32f tables. All pixels are 0 or 255, so that the squares, which 64f
// holds exactly, are 255 times the values.
TEST(Integral, LongSumsAreExact) {
    const auto expectLong = [](auto function, ZmoiSize size) {
        std::vector<Zmo8u> src(kit::indexIn(size, 0, size.height), 255);
        for (size_t i = 0; i < src.size(); i += 997) src[i] = 0;
        const int columns = size.width + 1;
        std::vector<Zmo32f> sums(kit::indexIn({columns, 0}, 0, size.height + 1));
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
        tableOf(table.function, kit::Turn(76, {12, 4})).expectBadArguments(wrong);
    }
}

// ---- Deviations

struct Deviation {
    kit::Function function;
    bool tilted;
    // Makes both tables of a picture.
    kit::Function tables;

    bool scales() const { return function.has("scaleFactor"); }
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
    DevCase(const Deviation& d, const kit::Turn& t, ZmoiRect r, int scaled = 0)
        : deviation(d),
          scale(d.scales() ? scaled : 0),
          rect{r.x + (d.tilted ? r.height : 0), r.y, r.width, r.height},
          picture{t.size.width + rect.x + rect.width - 1,
                  t.size.height + rect.y + rect.height + (d.tilted ? rect.width : 0) - 1},
          c(d.function, t,
            {{"pSrc", {picture.width + 1, picture.height + 1}},
             {"pSqr", {picture.width + 1, picture.height + 1}}}) {
        c.with({{"rect", rect}, {"scaleFactor", scale}});
        // What the rectangle needs beyond the region is the rectangle's fault.
        for (const char* const image : {"pSrc", "pSqr"}) c.setRowNeeded(image, t.size.width);
    }

    DevCase& draw(const kit::Pixels& drawn, double start = 0, double sqrStart = 0) {
        kit::Case made = tableOf(deviation.tables, kit::Turn(0, picture), start, sqrStart);
        made.src().fill(drawn);
        EXPECT_EQ(made.run(), zmoStsNoErr);
        for (const size_t table : {0U, 1U}) c.image(table).fill(made.image(table + 1));
        c.want([&](int x, int y) { return at(x, y); });
        return *this;
    }

    double at(int x, int y) const {
        const bool wraps = !deviation.function.isNamed("Dev_32f_");
        const double n = (deviation.tilted ? 2.0 : 1.0) * rect.width * rect.height;
        double s = cornerSum(0, x, y);
        double r = cornerSum(1, x, y);
        if (wraps) s = wrapped(s);
        if (deviation.scales()) r = static_cast<uint32_t>(static_cast<int64_t>(r));
        const double d = std::max(n * r - s * s, 0.0);
        if (deviation.scales()) return c.dst().stored(std::ldexp(std::sqrt(d) / n, -scale));
        return std::sqrt(static_cast<float>(d * (1 / (n * n))));
    }

    const Deviation& deviation;
    int scale;
    ZmoiRect rect;
    ZmoiSize picture;
    kit::Case c;

  private:
    // The sum over the rectangle of the pixel (x, y).
    double cornerSum(size_t table, int x, int y) const {
        const int w = rect.width;
        const int h = rect.height;
        const auto sum = [&](int i, int j) {
            return c.image(table)(x + rect.x + i, y + rect.y + j);
        };
        return deviation.tilted ? (sum(w - h, w + h) - sum(w, w)) - (sum(-h, h) - sum(0, 0))
                                : (sum(w, h) - sum(0, h)) - (sum(w, 0) - sum(0, 0));
    }
};

TEST(RectStdDev, Oracle) {
    // Deviations of two pixels often lie between two integers.
    const std::vector<ZmoiRect> rects = {
        {0, 0, 1, 1}, {0, 0, 2, 1}, {0, 0, 3, 3}, {2, 1, 5, 2}, {1, 3, 2, 7}};
    const std::vector<int> scales = {0, -1, 0, 1, -4, 2, 31, -24, -25, -31};
    kit::forEachCase({73, 2}, deviations, [&](kit::Turn& t, const Deviation& deviation) {
        DevCase d(deviation, t, t.pick(rects), t.pick(scales));
        if (t.number % 2 == 0) return d.draw(200).c;
        return d.draw([&] { return t.between(0, 255); }, 1000, -1000).c;
    });
}

// Sums of squares in 32s tables lie between 2^31 and 2^32. Those of an even area in other tables
// pass 2^24: in 32f they are rounded, and what is left of the variance may lie below zero.
TEST(RectStdDev, LargeAreas) {
    kit::Turn t(74, {9, 9});
    for (const Deviation& deviation : deviations) {
        const int side = deviation.tilted ? 150 : deviation.scales() ? 200 : 300;
        DevCase d(deviation, t, {0, 0, side, side}, -10);
        const double start = deviation.scales() ? INT32_MAX - 70000 : 0;
        d.draw([&] { return deviation.scales() ? t.between(230, 255) : 253; }, start, start);
        kit::expectAtAllLevels(d.c);
    }
}

TEST(RectStdDev, BadArguments) {
    for (const Deviation& deviation : deviations) {
        DevCase d(deviation, kit::Turn(79, {12, 4}), {0, 1, 3, 2});
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
