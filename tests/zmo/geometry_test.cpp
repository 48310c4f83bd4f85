#include <cmath>

#include "case.h"
#include "oracle/rotate.h"
#include "zmoi.h"

namespace {

TEST(Convert, EveryPixelExactly) {
    kit::forEachCase({10, 4}, 1, [](kit::Turn& t, size_t) {
        kit::Case c(ZMO(zmoiConvert_8u32f_C1R), t);
        draw(t, c.src(), kit::Draw::any);
        return c.want(c.src());
    });
}

TEST(RotateGetShift, LeavesTheCentreInPlace) {
    for (const double angle : {0.0, 10.0, 90.0, -33.0, 180.0, 725.0}) {
        const auto [c, s] = oracle::turn(angle);
        double xShift = 0;
        double yShift = 0;
        EXPECT_EQ(zmoiRotateGetShift(320, 240.5, angle, &xShift, &yShift), zmoStsNoErr);
        EXPECT_NEAR(c * 320 + s * 240.5 + xShift, 320, 1e-10) << angle;
        EXPECT_NEAR(-s * 320 + c * 240.5 + yShift, 240.5, 1e-10) << angle;
    }
}

// Around the centre, with other shifts, and of sources of other sizes.
TEST(Rotate, Oracle) {
    constexpr double angles[] = {0.0, 10.0, 45.0, 90.0, -180.0, 270.0, 359.5, 1000.0};
    constexpr double shifts[] = {0, 5.25, 2.5, -19, 1e9, -1e9};
    kit::forEachCase({11, 16, {{21, 21}}}, 1, [&](kit::Turn& t, size_t) {
        const double angle = angles[t.number % 8];
        const bool centred = t.number / 8 % 2 == 0;
        const ZmoiSize size = centred ? t.size : kit::sizes()[t.number * 7 % 23];
        double xShift = shifts[t.number / 3 % 6];
        double yShift = shifts[t.number / 5 % 6];
        if (centred) {
            zmoiRotateGetShift((size.width - 1) / 2.0, (size.height - 1) / 2.0, angle, &xShift,
                               &yShift);
        }
        kit::Case c(ZMO(zmoiRotate_8u_C1R), t, {{"pSrc", size}});
        draw(t, c.src(), kit::Draw::any);
        draw(t, c.dst(), kit::Draw::any);
        c.with({{"angle", angle}, {"xShift", xShift}, {"yShift", yShift}});
        return c.want([&](int x, int y) {
            return oracle::rotated(c.src(), x, y, angle, xShift, yShift).value_or(c.dst()(x, y));
        });
    });
}

TEST(Geometry, BadArguments) {
    kit::Case(ZMO(zmoiConvert_8u32f_C1R)).expectBadArguments();
    kit::Case(ZMO(zmoiRotateGetShift))
        .with({{"xCenter", 1}, {"yCenter", 2}, {"angle", 3}})
        .expectBadArguments({{"xCenter", NAN, zmoStsRangeErr},
                             {"yCenter", HUGE_VAL, zmoStsRangeErr},
                             {"angle", -HUGE_VAL, zmoStsRangeErr}});
    kit::Case(ZMO(zmoiRotate_8u_C1R), kit::Turn(12, {6, 5}), {{"pSrc", {8, 4}}})
        .with({{"angle", 10}, {"xShift", 1}, {"yShift", 1}})
        .expectBadArguments({{"angle", NAN, zmoStsRangeErr},
                             {"xShift", 1.1e9, zmoStsRangeErr},
                             {"yShift", -1.1e9, zmoStsRangeErr}});
}

}  // namespace
