// Conversion and rotation.
#include <cmath>

#include "case.h"
#include "oracle/rotate.h"
#include "zmoi.h"

namespace {

TEST(Convert, EveryPixelExactly) {
    kit::forEachCase({10, 4}, ZMO(zmoiConvert_8u32f_C1R),
                     [](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t) {
                         kit::Case c(ZMO(zmoiConvert_8u32f_C1R), size, layout);
                         c.src().fill([&] { return random.between(0, 255); });
                         return c.want("pDst", [&](int x, int y) { return c.src().get(x, y); });
                     });
}

TEST(RotateGetShift, LeavesTheCentreInPlace) {
    for (const double angle : {0.0, 10.0, 90.0, -33.0, 180.0, 725.0}) {
        const oracle::Turn t = oracle::turn(angle);
        double xShift = 0;
        double yShift = 0;
        EXPECT_EQ(zmoiRotateGetShift(320, 240.5, angle, &xShift, &yShift), zmoStsNoErr);
        EXPECT_NEAR(t.c * 320 + t.s * 240.5 + xShift, 320, 1e-10) << angle;
        EXPECT_NEAR(-t.s * 320 + t.c * 240.5 + yShift, 240.5, 1e-10) << angle;
    }
}

struct Rotation {
    ZmoiSize srcSize;
    ZmoiSize dstSize;
    double angle;
    double xShift;
    double yShift;
};

// Of a picture with any content; tells how many pixels are written.
kit::Case rotated(const Rotation& r, kit::Random& random, kit::Layout layout, int& written) {
    kit::Case c(ZMO(zmoiRotate_8u_C1R), r.dstSize, layout, {{"pSrc", r.srcSize}});
    const auto any = [&] { return random.between(0, 255); };
    c.fillAll(any, any);
    c.with({{"angle", r.angle}, {"xShift", r.xShift}, {"yShift", r.yShift}});
    written = 0;
    return c.want("pDst", [&](int x, int y) -> double {
        const auto pixel = oracle::rotated(c.src().as<Zmo8u>(), x, y, r.angle, r.xShift, r.yShift);
        written += pixel ? 1 : 0;
        return pixel ? *pixel : c.dst().get(x, y);
    });
}

// Around the centre; whole turns copy and quarter turns permute, so that rounding loses no pixel.
TEST(Rotate, AroundTheCentre) {
    constexpr double angles[] = {0.0, 10.0, 45.0, 90.0, -180.0, 270.0, 359.5, 1000.0};
    const kit::Walk walk{11, 8, {{21, 21}}};
    kit::forEachCase(walk, ZMO(zmoiRotate_8u_C1R),
                     [&](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t turn) {
                         Rotation r{size, size, angles[turn % 8], 0, 0};
                         zmoiRotateGetShift((size.width - 1) / 2.0, (size.height - 1) / 2.0,
                                            r.angle, &r.xShift, &r.yShift);
                         int written = 0;
                         kit::Case c = rotated(r, random, layout, written);
                         if (size.width == 21 && std::fmod(r.angle, 90) == 0) {
                             EXPECT_EQ(written, 21 * 21) << r.angle;
                         }
                         return c;
                     });
}

TEST(Rotate, RegionsAndShiftsThatDiffer) {
    const std::pair<Rotation, int> parts[] = {
        {{{20, 10}, {20, 10}, 0, 0, 0}, 200},    {{{20, 10}, {20, 10}, 0, 5.25, 0}, 140},
        {{{20, 10}, {20, 10}, 0, 0, 2.5}, 140},  {{{10, 10}, {20, 10}, 0, 0, 0}, 100},
        {{{20, 10}, {8, 30}, 0, 0, 0}, 80},      {{{20, 10}, {20, 10}, 0, 1e9, -1e9}, 0},
        {{{20, 10}, {20, 10}, 180, 19, 9}, 200},
    };
    kit::Random random(12);
    for (const auto& [rotation, pixels] : parts) {
        int written = 0;
        kit::expectAtAllLevels(rotated(rotation, random, {1, 3}, written));
        EXPECT_EQ(written, pixels);
    }
}

TEST(Geometry, BadArguments) {
    kit::Case(ZMO(zmoiConvert_8u32f_C1R)).expectBadArguments();
    kit::Case(ZMO(zmoiRotateGetShift))
        .with({{"xCenter", 1}, {"yCenter", 2}, {"angle", 3}})
        .expectBadArguments({{"xCenter", NAN, zmoStsRangeErr},
                             {"yCenter", HUGE_VAL, zmoStsRangeErr},
                             {"angle", -HUGE_VAL, zmoStsRangeErr}});
    kit::Case(ZMO(zmoiRotate_8u_C1R), {6, 5}, {}, {{"pSrc", {8, 4}}})
        .with({{"angle", 10}, {"xShift", 1}, {"yShift", 1}})
        .expectBadArguments({{"angle", NAN, zmoStsRangeErr},
                             {"xShift", 1.1e9, zmoStsRangeErr},
                             {"yShift", -1.1e9, zmoStsRangeErr}});
}

}  // namespace
