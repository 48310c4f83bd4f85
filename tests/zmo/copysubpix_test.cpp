#include <cmath>

#include "anycall.h"
#include "oracle/sample.h"
#include "zmocv.h"

namespace {

struct Row {
    kit::Function function;
    bool intersect;
};

#define ROWS(types)                                                                \
    {{"zmoiCopySubpix_" #types, zmoiCopySubpix_##types}, false}, {                 \
        {"zmoiCopySubpixIntersect_" #types, zmoiCopySubpixIntersect_##types}, true \
    }

const std::vector<Row> rows = {ROWS(8u_C1R),    ROWS(16u_C1R),    ROWS(8u16u_C1R_Sfs),
                               ROWS(8u32f_C1R), ROWS(16u32f_C1R), ROWS(32f_C1R)};

struct Valid {
    ZmoiPoint first{0, 0};
    ZmoiPoint last{-1, -1};
};

// A window of the size roi at `corner` of an image.
class Case : public kit::AnyCall {
  public:
    Case(const Row& row, ZmoiSize image, ZmoiSize window, kit::Layout layout, ZmoiPoint32f corner)
        : AnyCall(row.function, window, layout,
                  [&](size_t i) {
                      return i == 0 ? ZmoiSize{image.width - window.width,
                                               image.height - window.height}
                                    : ZmoiSize{0, 0};
                  }),
          left(corner.x),
          top(corner.y),
          intersect(row.intersect) {
        if (intersect) {
            setSize(0, image);
            setValueTo(0, corner);
        } else {
            setValue(0, corner.x);
            setValue(1, corner.y);
        }
        setScale(0);
    }

    // Where the scale factor stands among the values, if there is one.
    size_t scaleAt() const { return intersect ? 1 : 2; }
    bool scaled() const { return function().values().size() > scaleAt(); }
    void setScale(int factor) {
        scale = scaled() ? factor : 0;
        if (scaled()) setValue(scaleAt(), factor);
    }

    void draw(kit::Random& random, bool extreme) {
        const double most = kit::mostOf(image(0));
        fill(0, [&]() -> double {
            if (most == 0)
                return random.uniform(-1, 1) < 0 || !extreme ? random.uniform(-1000, 1000) : 3e38;
            return extreme ? static_cast<double>(random.between(0, 1)) * most
                           : std::floor(random.uniform(0, most + 1));
        });
    }

    void expectOracle() {
        fill(1, [] { return 77; });
        EXPECT_EQ(run(), zmoStsNoErr);
        const double most = kit::mostOf(image(1));
        const auto pixel = [&](int x, int y) { return get(0, x, y); };
        expectTarget(1, [&](int x, int y, int) {
            return oracle::stored(oracle::subpixel(sizeOf(0), pixel, left, top, x, y), scale, most);
        });
        if (!intersect) return;
        const Valid valid = validPart();
        EXPECT_EQ(results()[0], kit::Slot::of(valid.first));
        EXPECT_EQ(results()[1], kit::Slot::of(valid.last));
    }

  private:
    Valid validPart() const {
        Valid part;
        kit::forEachPixel(roi(), [&](int x, int y) {
            if (!left.valid(x, sizeOf(0).width) || !top.valid(y, sizeOf(0).height)) return;
            if (part.last.x < 0) part.first = {x, y};
            part.last = {x, y};
        });
        return part;
    }

    oracle::Coordinate left;
    oracle::Coordinate top;
    bool intersect;
    int scale = 0;
};

const std::vector<int> scaleFactors = {0, 1, -3, 5, -31, 31};

TEST(CopySubpix, Oracle) {
    auto sizes = kit::sizes();
    sizes.insert(sizes.end(), {{513, 3}, {1030, 2}});
    constexpr float lastFraction = 0x1.fffffep-1F;
    const ZmoiPoint32f shifts[] = {{0, 0},       {0.25F, 0}, {0, 0.75F},          {0.5F, 0.5F},
                                   {0.3F, 0.1F}, {0.3F, 0},  {lastFraction, 0.3F}};
    kit::forEachRow(
        71, rows, sizes,
        [&](kit::Random& random, const Row& row, ZmoiSize size, kit::Layout layout, size_t turn) {
            if (row.intersect) return;
            for (const ZmoiPoint32f shift : shifts) {
                SCOPED_TRACE(testing::Message() << shift.x << ", " << shift.y);
                // Just what may be read: the step ends with the row, and guards follow the last one.
                Case c(row, {size.width + (shift.x > 0), size.height + (shift.y > 0)}, size, layout,
                       shift);
                c.setScale(random.pick(scaleFactors));
                c.draw(random, turn++ % 5 == 4);
                c.expectOracle();
            }
        });
}

TEST(CopySubpixIntersect, Oracle) {
    const std::vector<ZmoiSize> images = {{1, 1}, {1, 9}, {40, 1}, {33, 7}, {70, 30}};
    const ZmoiSize windows[] = {{1, 1}, {9, 5}, {16, 3}, {67, 9}, {530, 2}};
    kit::forEachRow(
        72, rows, images,
        [&](kit::Random& random, const Row& row, ZmoiSize image, kit::Layout layout, size_t) {
            if (!row.intersect) return;
            for (const ZmoiSize window : windows) {
                const auto right = static_cast<float>(image.width);
                const auto below = static_cast<float>(image.height);
                const auto anywhere = [&](int length, int own) {
                    return static_cast<float>(random.uniform(-own - 1, length + 1));
                };
                // Inside, over each side, touching from outside, anywhere, and far away.
                const ZmoiPoint32f corners[] = {
                    {0, 0},
                    {0.5F, 0.25F},
                    {-0.5F, -0.75F},
                    {-1, -1},
                    {right - 1, below - 1},
                    {right - 1.25F, below - 1.5F},
                    {right, 0.5F},
                    {-1e-9F, -1e-30F},
                    {anywhere(image.width, window.width), anywhere(image.height, window.height)},
                    {anywhere(image.width, window.width), anywhere(image.height, window.height)},
                    {3e38F, -3e38F},
                    {-4e9F, 5e9F}};
                for (const ZmoiPoint32f corner : corners) {
                    SCOPED_TRACE(testing::Message()
                                 << window << " at " << corner.x << ", " << corner.y);
                    Case c(row, image, window, layout, corner);
                    c.setScale(random.pick(scaleFactors));
                    c.draw(random, false);
                    c.expectOracle();
                }
            }
        });
}

// A NaN and an infinity reach the pixels that they contribute to, and no other.
TEST(CopySubpix, OddFloatsStayWhereTheyAre) {
    kit::forEachLevel([&] {
        for (const float shift : {0.0F, 0.25F}) {
            Case c(rows[10], {41, 6}, {40, 5}, {}, {shift, shift});
            c.set(0, 20, 3, 0, NAN);
            c.set(0, 30, 3, 0, HUGE_VAL);
            EXPECT_EQ(c.run(), zmoStsNoErr);
            const int reach = shift > 0 ? 1 : 0;
            c.expectTarget(1, [&](int x, int y, int) {
                const bool near = y <= 3 && y >= 3 - reach;
                const bool odd = near && x <= 20 && x >= 20 - reach;
                EXPECT_EQ(std::isnan(c.get(1, x, y)), odd) << x << ", " << y;
                if (odd) return c.get(1, x, y);
                return near && x <= 30 && x >= 30 - reach ? HUGE_VAL : 1;
            });
        }
    });
}

TEST(CopySubpix, BadArguments) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.function.name());
        // The fraction needs a row and a column more than the window has.
        Case c(row, {13, 5}, {12, 4}, {}, {0.5F, 0.5F});
        const kit::Wrong scale = {c.scaleAt(), {-32, 32}, zmoStsScaleErr};
        if (row.intersect) {
            const ZmoiPoint32f corners[] = {{NAN, 1}, {1, -HUGE_VALF}};
            c.expectBadArguments({{0, {corners[0], corners[1]}, zmoStsRangeErr}, scale});
        } else {
            c.expectBadArguments(
                {{0, 1, zmoStsRangeErr}, {1, {-0x1p-30, NAN}, zmoStsRangeErr}, scale});
        }
    }
}

}  // namespace
