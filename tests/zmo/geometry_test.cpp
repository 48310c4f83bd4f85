// Conversion and rotation.
#include <cmath>
#include <limits>

#include "call.h"
#include "oracle/rotate.h"
#include "zmoi.h"

namespace {

TEST(Convert, EveryPixelExactly) {
    kit::forEachCase(10, [](kit::Random& random, ZmoiSize size, kit::Layout layout, size_t) {
        kit::Image<Zmo8u> src(size, layout);
        kit::Image<Zmo32f> dst(size, layout);
        src.fill([&] { return random.between(0, 255); });
        kit::succeed(zmoiConvert_8u32f_C1R, src, dst, size);
        kit::expectPixels(dst, [&](int x, int y) { return src.get(x, y); });
    });
}

TEST(RotateGetShift, LeavesTheCentreInPlace) {
    for (const double angle : {0.0, 10.0, 90.0, -33.0, 180.0, 725.0}) {
        const oracle::Turn t = oracle::turn(angle);
        double xShift = 0;
        double yShift = 0;
        kit::succeed(zmoiRotateGetShift, 320, 240.5, angle, &xShift, &yShift);
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

// The number of pixels that the rotation writes, at the level in use.
int expectRotated(const Rotation& r, kit::Random& random) {
    SCOPED_TRACE(testing::Message() << r.srcSize << " to " << r.dstSize << " angle " << r.angle
                                    << " shift " << r.xShift << ", " << r.yShift);
    kit::Image<Zmo8u> src(r.srcSize, {1, 3});
    kit::Image<Zmo8u> dst(r.dstSize, {1, 3});
    src.fill([&] { return random.between(0, 255); });
    dst.fill([&] { return random.between(0, 255); });
    kit::Image<Zmo8u> expected = dst;
    int written = 0;
    kit::forEachPixel(r.dstSize, [&](int x, int y) {
        const auto pixel = oracle::rotated(src, x, y, r.angle, r.xShift, r.yShift);
        if (!pixel) return;
        expected.set(x, y, *pixel);
        ++written;
    });
    kit::succeed(zmoiRotate_8u_C1R, src, r.srcSize, dst, r.dstSize, r.angle, r.xShift, r.yShift);
    kit::expectPixels(dst, expected);
    return written;
}

// Around the centre; whole turns copy and quarter turns permute, so that rounding loses no pixel. Then
// with regions and shifts that differ.
TEST(Rotate, Oracle) {
    const std::pair<Rotation, int> parts[] = {
        {{{20, 10}, {20, 10}, 0, 0, 0}, 200},    {{{20, 10}, {20, 10}, 0, 5.25, 0}, 140},
        {{{20, 10}, {20, 10}, 0, 0, 2.5}, 140},  {{{10, 10}, {20, 10}, 0, 0, 0}, 100},
        {{{20, 10}, {8, 30}, 0, 0, 0}, 80},      {{{20, 10}, {20, 10}, 0, 1e9, -1e9}, 0},
        {{{20, 10}, {20, 10}, 180, 19, 9}, 200},
    };
    kit::Random random(11);
    kit::forEachLevel([&] {
        auto sizes = kit::sizes();
        sizes.push_back({21, 21});
        for (const ZmoiSize size : sizes) {
            for (const double angle : {0.0, 10.0, 45.0, 90.0, -180.0, 270.0, 359.5, 1000.0}) {
                Rotation r{size, size, angle, 0, 0};
                zmoiRotateGetShift((size.width - 1) / 2.0, (size.height - 1) / 2.0, angle,
                                   &r.xShift, &r.yShift);
                const int written = expectRotated(r, random);
                if (size.width == 21 && std::fmod(angle, 90) == 0) {
                    EXPECT_EQ(written, 21 * 21) << angle;
                }
            }
        }
        for (const auto& [rotation, written] : parts) {
            EXPECT_EQ(expectRotated(rotation, random), written);
        }
    });
}

TEST(Geometry, BadArguments) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const kit::Image<Zmo8u> src({8, 4});
    kit::Image<Zmo32f> floats({8, 4});
    kit::Image<Zmo8u> dst({6, 5});
    double shifts[2] = {-1, -2};
    kit::expectBadArguments(zmoiConvert_8u32f_C1R, {}, src, floats, src.size());
    kit::expectBadArguments(
        zmoiRotateGetShift,
        {{0, nan, zmoStsRangeErr}, {1, infinity, zmoStsRangeErr}, {2, -infinity, zmoStsRangeErr}},
        1, 2, 3, &shifts[0], &shifts[1]);
    kit::expectBadArguments(
        zmoiRotate_8u_C1R,
        {{6, nan, zmoStsRangeErr}, {7, 1.1e9, zmoStsRangeErr}, {8, -1.1e9, zmoStsRangeErr}}, src,
        src.size(), dst, dst.size(), 10, 1, 1);
}

}  // namespace
