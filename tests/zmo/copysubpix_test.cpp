#include <cmath>

#include "case.h"
#include "oracle/sample.h"
#include "zmocv.h"

namespace {

struct Row {
    kit::Function function;
};

#define ROWS(base)                                                                \
    {                                                                             \
        {ZMO(base##_8u_C1R)}, {ZMO(base##_16u_C1R)}, {ZMO(base##_8u16u_C1R_Sfs)}, \
            {ZMO(base##_8u32f_C1R)}, {ZMO(base##_16u32f_C1R)}, {                  \
            ZMO(base##_32f_C1R)                                                   \
        }                                                                         \
    }

// From a fraction of a pixel, and from anywhere.
const std::vector<Row> shifting = ROWS(zmoiCopySubpix);
const std::vector<Row> intersecting = ROWS(zmoiCopySubpixIntersect);

kit::Case caseOf(const Row& row, ZmoiSize image, ZmoiSize window, kit::Layout layout,
                 ZmoiPoint32f corner, int scale = 0) {
    kit::Case c(row.function, window, layout, {{"pSrc", image}});
    if (row.function.has("corner")) return c.with({{"corner", corner}, {"scaleFactor", scale}});
    return c.with({{"dx", corner.x}, {"dy", corner.y}, {"scaleFactor", scale}});
}

void draw(kit::AnyImage& image, kit::Random& random, bool extreme) {
    image.fill([&, most = image.most()]() -> double {
        if (most == 0) return extreme && random.between(0, 1) ? 3e38 : random.uniform(-1000, 1000);
        return extreme ? static_cast<double>(random.between(0, 1)) * most
                       : std::floor(random.uniform(0, most + 1));
    });
}

kit::Case& wantOracle(kit::Case& c, ZmoiPoint32f corner, int scale) {
    const oracle::Coordinate left(corner.x);
    const oracle::Coordinate top(corner.y);
    const ZmoiSize image = c.src().size();
    c.want("pDst", [&](int x, int y) {
        const auto pixel = [&](int i, int j) { return c.src().get(i, j); };
        return oracle::stored(oracle::subpixel(image, pixel, left, top, x, y),
                              c.function().has("scaleFactor") ? scale : 0, c.dst().most());
    });
    if (!c.function().has("corner")) return c;
    // The window's part that lies in the image.
    ZmoiPoint first{0, 0};
    ZmoiPoint last{-1, -1};
    kit::forEachPixel(c.roi(), [&](int x, int y) {
        if (!left.valid(x, image.width) || !top.valid(y, image.height)) return;
        if (last.x < 0) first = {x, y};
        last = {x, y};
    });
    return c.wantResult("pFirst", first).wantResult("pLast", last);
}

const std::vector<int> scaleFactors = {0, 1, -3, 5, -31, 31};

TEST(CopySubpix, Oracle) {
    constexpr float lastFraction = 0x1.fffffep-1F;
    const ZmoiPoint32f shifts[] = {{0, 0},       {0.25F, 0}, {0, 0.75F},          {0.5F, 0.5F},
                                   {0.3F, 0.1F}, {0.3F, 0},  {lastFraction, 0.3F}};
    kit::forEachCase(
        {71, 8, {{513, 3}, {1030, 2}}}, shifting,
        [&](auto& random, const Row& row, ZmoiSize size, kit::Layout layout, size_t turn) {
            const ZmoiPoint32f shift = shifts[turn % 7];
            const int scale = random.pick(scaleFactors);
            // Just what may be read: the step ends with the row, and guards follow the last one.
            kit::Case c = caseOf(row, {size.width + (shift.x > 0), size.height + (shift.y > 0)},
                                 size, layout, shift, scale);
            draw(c.src(), random, turn % 5 == 4);
            return wantOracle(c, shift, scale);
        });
}

TEST(CopySubpixIntersect, Oracle) {
    const ZmoiSize images[] = {{1, 1}, {1, 9}, {40, 1}, {33, 7}, {70, 30}};
    kit::forEachCase(
        {72, 12, {{530, 2}}}, intersecting,
        [&](auto& random, const Row& row, ZmoiSize window, kit::Layout layout, size_t turn) {
            const ZmoiSize image = images[turn / 12 % 5];
            const auto right = static_cast<float>(image.width);
            const auto below = static_cast<float>(image.height);
            const auto anywhere = [&](int length, int own) {
                return static_cast<float>(random.uniform(-own - 1, length + 1));
            };
            const ZmoiPoint32f somewhere{anywhere(image.width, window.width),
                                         anywhere(image.height, window.height)};
            // Inside, over each side, touching from outside, anywhere, and far away.
            const ZmoiPoint32f corners[] = {
                {0, 0},        {0.5F, 0.25F},          {-0.5F, -0.75F},
                {-1, -1},      {right - 1, below - 1}, {right - 1.25F, below - 1.5F},
                {right, 0.5F}, {-1e-9F, -1e-30F},      somewhere,
                somewhere,     {3e38F, -3e38F},        {-4e9F, 5e9F}};
            const ZmoiPoint32f corner = corners[turn % 12];
            const int scale = random.pick(scaleFactors);
            kit::Case c = caseOf(row, image, window, layout, corner, scale);
            draw(c.src(), random, false);
            return wantOracle(c, corner, scale);
        });
}

// A NaN and an infinity reach the pixels that they contribute to, and no other.
TEST(CopySubpix, OddFloatsStayWhereTheyAre) {
    for (const float shift : {0.0F, 0.25F}) {
        kit::Case c = caseOf(shifting.back(), {41, 6}, {40, 5}, {}, {shift, shift});
        c.src().set(20, 3, 0, NAN);
        c.src().set(30, 3, 0, HUGE_VAL);
        kit::forEachLevel([&] {
            const kit::AnyImage made = c.tried();
            const int reach = shift > 0 ? 1 : 0;
            kit::forEachPixel(c.roi(), [&](int x, int y) {
                const bool near = y <= 3 && y >= 3 - reach;
                const bool odd = near && x <= 20 && x >= 20 - reach;
                EXPECT_EQ(std::isnan(made.get(x, y)), odd) << x << ", " << y;
                if (odd) return;
                EXPECT_EQ(made.get(x, y), near && x <= 30 && x >= 30 - reach ? HUGE_VAL : 1);
            });
        });
    }
}

TEST(CopySubpix, BadArguments) {
    // The fraction needs a row and a column more than the window has.
    for (const Row& row : shifting) {
        caseOf(row, {13, 5}, {12, 4}, {}, {0.5F, 0.5F})
            .expectBadArguments(
                {{"dx", 1, zmoStsRangeErr}, {"dy", {-0x1p-30, NAN}, zmoStsRangeErr}});
    }
    const ZmoiPoint32f nowhere[] = {{NAN, 1}, {1, -HUGE_VALF}};
    for (const Row& row : intersecting) {
        caseOf(row, {13, 5}, {12, 4}, {}, {0.5F, 0.5F})
            .expectBadArguments({{"corner", {nowhere[0], nowhere[1]}, zmoStsRangeErr}});
    }
}

}  // namespace
