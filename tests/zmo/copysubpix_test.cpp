#include <cmath>

#include "case.h"
#include "oracle/sample.h"
#include "zmocv.h"

namespace {

#define FUNCTIONS(base)                                                                            \
    {                                                                                              \
        ZMO(base##_8u_C1R), ZMO(base##_16u_C1R), ZMO(base##_8u16u_C1R_Sfs), ZMO(base##_8u32f_C1R), \
            ZMO(base##_16u32f_C1R), ZMO(base##_32f_C1R)                                            \
    }

// From a fraction of a pixel, and from anywhere.
const std::vector<kit::Function> shifting = FUNCTIONS(zmoiCopySubpix);
const std::vector<kit::Function> intersecting = FUNCTIONS(zmoiCopySubpixIntersect);

kit::Case caseOf(const kit::Function& function, const kit::Turn& t, ZmoiSize image,
                 ZmoiPoint32f corner, int scale = 0) {
    return kit::Case(function, t, {{"pSrc", image}})
        .with({{"corner", corner}, {"dx", corner.x}, {"dy", corner.y}, {"scaleFactor", scale}});
}

kit::Case& wantOracle(kit::Case& c, ZmoiPoint32f corner, int scale) {
    const oracle::Coordinate left(corner.x);
    const oracle::Coordinate top(corner.y);
    const ZmoiSize image = c.src().size();
    const int shift = c.function().has("scaleFactor") ? -scale : 0;
    c.want([&](int x, int y) {
        return c.dst().stored(std::ldexp(oracle::subpixel(c.src(), left, top, x, y), shift));
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
        {71, 8, {{513, 3}, {1030, 2}}}, shifting, [&](kit::Turn& t, const auto& function) {
            const ZmoiPoint32f shift = shifts[t.number % 7];
            const int scale = t.pick(scaleFactors);
            // Just what may be read: the step ends with the row, and guards follow the last one.
            const ZmoiSize image{t.size.width + (shift.x > 0), t.size.height + (shift.y > 0)};
            kit::Case c = caseOf(function, t, image, shift, scale);
            draw(t, c.src(), t.number % 5 == 4 ? kit::Draw::ends : kit::Draw::any);
            // A NaN or an infinity reaches the pixels that it contributes to, and no other.
            const double odd = t.number % 2 == 0 ? NAN : HUGE_VAL;
            if (!c.src().isWhole()) c.src().set(image.width / 2, image.height / 2, odd);
            return wantOracle(c, shift, scale);
        });
}

TEST(CopySubpixIntersect, Oracle) {
    const ZmoiSize images[] = {{1, 1}, {1, 9}, {40, 1}, {33, 7}, {70, 30}};
    kit::forEachCase({72, 12, {{530, 2}}}, intersecting, [&](kit::Turn& t, const auto& function) {
        const ZmoiSize image = images[t.number / 12 % 5];
        const auto right = static_cast<float>(image.width);
        const auto below = static_cast<float>(image.height);
        const ZmoiPoint32f somewhere{
            static_cast<float>(t.uniform(-t.size.width - 1, image.width + 1)),
            static_cast<float>(t.uniform(-t.size.height - 1, image.height + 1))};
        // Inside, over each side, touching from outside, anywhere, and far away.
        const ZmoiPoint32f corners[] = {
            {0, 0},        {0.5F, 0.25F},          {-0.5F, -0.75F},
            {-1, -1},      {right - 1, below - 1}, {right - 1.25F, below - 1.5F},
            {right, 0.5F}, {-1e-9F, -1e-30F},      somewhere,
            somewhere,     {3e38F, -3e38F},        {-4e9F, 5e9F}};
        const ZmoiPoint32f corner = corners[t.number % 12];
        const int scale = t.pick(scaleFactors);
        kit::Case c = caseOf(function, t, image, corner, scale);
        draw(t, c.src(), kit::Draw::any);
        return wantOracle(c, corner, scale);
    });
}

TEST(CopySubpix, BadArguments) {
    // The fraction needs a row and a column more than the window has.
    const auto good = [](const kit::Function& function) {
        return caseOf(function, kit::Turn(74, {12, 4}), {13, 5}, {0.5F, 0.5F});
    };
    for (const auto& function : shifting) {
        good(function).expectBadArguments(
            {{"dx", 1, zmoStsRangeErr}, {"dy", {-0x1p-30, NAN}, zmoStsRangeErr}});
    }
    for (const auto& function : intersecting) {
        good(function).expectBadArguments(
            {{"corner", {ZmoiPoint32f{NAN, 1}, ZmoiPoint32f{1, -HUGE_VALF}}, zmoStsRangeErr}});
    }
}

}  // namespace
