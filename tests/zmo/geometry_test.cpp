// Conversion and rotation.
#include <cmath>
#include <limits>

#include "kit.h"
#include "oracle/rotate.h"
#include "zmoi.h"

namespace {

TEST(Convert, EveryPixelExactly) {
    kit::Random random(10);
    kit::forEachLevel([&] {
        for (const ZmoiSize size : kit::sizes()) {
            for (const kit::Layout layout : kit::layouts()) {
                SCOPED_TRACE(testing::Message() << size << " " << layout);
                kit::Image<Zmo8u> src(size, layout);
                kit::Image<Zmo32f> dst(size, layout);
                src.fill([&] { return random.between(0, 255); });
                kit::succeed([&] {
                    return zmoiConvert_8u32f_C1R(src.ptr(), src.step(), dst.ptr(), dst.step(),
                                                 size);
                });
                kit::expectPixels(dst, [&](int x, int y) { return src.get(x, y); });
                dst.expectSurroundingsUntouched("destination");
                src.expectUntouched("source");
            }
        }
    });
}

TEST(Convert, BadArguments) {
    struct Args {
        const Zmo8u* pSrc;
        int srcStep;
        Zmo32f* pDst;
        int dstStep;
        ZmoiSize roi;
    };
    kit::Image<Zmo8u> src({8, 4});
    kit::Image<Zmo32f> dst({8, 4});
    src.fill([] { return 1; });
    kit::expectFaults(
        Args{src.ptr(), src.step(), dst.ptr(), dst.step(), {8, 4}},
        [](const Args& a) {
            return zmoiConvert_8u32f_C1R(a.pSrc, a.srcStep, a.pDst, a.dstStep, a.roi);
        },
        {{"null source", zmoStsNullPtrErr, [](Args& a) { a.pSrc = nullptr; }},
         {"null destination", zmoStsNullPtrErr, [](Args& a) { a.pDst = nullptr; }},
         {"width", zmoStsSizeErr, [](Args& a) { a.roi.width = 0; }},
         {"height", zmoStsSizeErr, [](Args& a) { a.roi.height = 0; }},
         {"source step", zmoStsStepErr, [](Args& a) { a.srcStep = 7; }},
         {"destination step", zmoStsStepErr, [](Args& a) { a.dstStep = 31; }},
         {"odd destination step", zmoStsStepErr, [](Args& a) { a.dstStep = 34; }}},
        [&] { dst.expectUntouched("destination"); });
}

TEST(RotateGetShift, LeavesTheCentreInPlace) {
    for (const double angle : {0.0, 10.0, 90.0, -33.0, 180.0, 725.0}) {
        const oracle::Turn t = oracle::turn(angle);
        double xShift = 0;
        double yShift = 0;
        kit::succeed([&] { return zmoiRotateGetShift(320, 240.5, angle, &xShift, &yShift); });
        EXPECT_NEAR(t.c * 320 + t.s * 240.5 + xShift, 320, 1e-10) << angle;
        EXPECT_NEAR(-t.s * 320 + t.c * 240.5 + yShift, 240.5, 1e-10) << angle;
    }
}

TEST(RotateGetShift, BadArguments) {
    struct Args {
        double xCenter;
        double yCenter;
        double angle;
        double* pXShift;
        double* pYShift;
    };
    double shifts[2] = {-1, -2};
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    kit::expectFaults(
        Args{1, 2, 3, &shifts[0], &shifts[1]},
        [](const Args& a) {
            return zmoiRotateGetShift(a.xCenter, a.yCenter, a.angle, a.pXShift, a.pYShift);
        },
        {{"null x", zmoStsNullPtrErr, [](Args& a) { a.pXShift = nullptr; }},
         {"null y", zmoStsNullPtrErr, [](Args& a) { a.pYShift = nullptr; }},
         {"x", zmoStsRangeErr, [](Args& a) { a.xCenter = nan; }},
         {"y", zmoStsRangeErr, [](Args& a) { a.yCenter = infinity; }},
         {"angle", zmoStsRangeErr, [](Args& a) { a.angle = -infinity; }}},
        [&] {
            EXPECT_EQ(shifts[0], -1);
            EXPECT_EQ(shifts[1], -2);
        });
}

struct RotateCase {
    ZmoiSize srcSize;
    ZmoiSize dstSize;
    double angle;
    double xShift;
    double yShift;
};

// The number of pixels that the rotation writes, at the level in use.
int expectRotated(const RotateCase& c, kit::Layout layout, kit::Random& random) {
    SCOPED_TRACE(testing::Message() << c.srcSize << " to " << c.dstSize << " angle " << c.angle
                                    << " shift " << c.xShift << ", " << c.yShift);
    kit::Image<Zmo8u> src(c.srcSize, layout);
    src.fill([&] { return random.between(0, 255); });
    kit::Image<Zmo8u> dst(c.dstSize, layout);
    dst.fill([&] { return random.between(0, 255); });
    kit::Image<Zmo8u> expected = dst;
    int written = 0;
    for (int y = 0; y < c.dstSize.height; ++y) {
        for (int x = 0; x < c.dstSize.width; ++x) {
            const auto pixel = oracle::rotated(src, x, y, c.angle, c.xShift, c.yShift);
            if (!pixel) continue;
            expected.set(x, y, *pixel);
            ++written;
        }
    }
    kit::succeed([&] {
        return zmoiRotate_8u_C1R(src.ptr(), src.step(), c.srcSize, dst.ptr(), dst.step(), c.dstSize,
                                 c.angle, c.xShift, c.yShift);
    });
    kit::expectPixels(dst, [&](int x, int y) { return expected.get(x, y); });
    dst.expectSurroundingsUntouched("destination");
    src.expectUntouched("source");
    return written;
}

// Around the centre; whole turns copy and quarter turns permute, so that rounding loses no pixel.
TEST(Rotate, Oracle) {
    kit::Random random(11);
    kit::forEachLevel([&] {
        auto sizes = kit::sizes();
        sizes.push_back({21, 21});
        for (const ZmoiSize size : sizes) {
            for (const double angle : {0.0, 10.0, 45.0, 90.0, -180.0, 270.0, 359.5, 1000.0}) {
                RotateCase c{size, size, angle, 0, 0};
                zmoiRotateGetShift((size.width - 1) / 2.0, (size.height - 1) / 2.0, angle,
                                   &c.xShift, &c.yShift);
                const int written = expectRotated(c, {1, 3}, random);
                if (size.width == 21 && std::fmod(angle, 90) == 0) {
                    EXPECT_EQ(written, 21 * 21) << angle;
                }
            }
        }
    });
}

TEST(Rotate, EachArgumentMatters) {
    kit::Random random(13);
    const struct {
        RotateCase c;
        int written;
    } cases[] = {
        {{{20, 10}, {20, 10}, 0, 0, 0}, 200},    {{{20, 10}, {20, 10}, 0, 5.25, 0}, 140},
        {{{20, 10}, {20, 10}, 0, 0, 2.5}, 140},  {{{10, 10}, {20, 10}, 0, 0, 0}, 100},
        {{{20, 10}, {8, 30}, 0, 0, 0}, 80},      {{{20, 10}, {20, 10}, 0, 1e9, -1e9}, 0},
        {{{20, 10}, {20, 10}, 180, 19, 9}, 200},
    };
    for (const auto& [c, written] : cases) EXPECT_EQ(expectRotated(c, {}, random), written);
}

TEST(Rotate, BadArguments) {
    struct Args {
        const Zmo8u* pSrc;
        int srcStep;
        ZmoiSize srcRoi;
        Zmo8u* pDst;
        int dstStep;
        ZmoiSize roi;
        double angle;
        double xShift;
        double yShift;
    };
    kit::Image<Zmo8u> src({8, 4});
    kit::Image<Zmo8u> dst({6, 5});
    src.fill([] { return 1; });
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    kit::expectFaults(
        Args{src.ptr(), src.step(), {8, 4}, dst.ptr(), dst.step(), {6, 5}, 10, 1, 1},
        [](const Args& a) {
            return zmoiRotate_8u_C1R(a.pSrc, a.srcStep, a.srcRoi, a.pDst, a.dstStep, a.roi, a.angle,
                                     a.xShift, a.yShift);
        },
        {{"null source", zmoStsNullPtrErr, [](Args& a) { a.pSrc = nullptr; }},
         {"null destination", zmoStsNullPtrErr, [](Args& a) { a.pDst = nullptr; }},
         {"source width", zmoStsSizeErr, [](Args& a) { a.srcRoi.width = 0; }},
         {"source height", zmoStsSizeErr, [](Args& a) { a.srcRoi.height = 0; }},
         {"width", zmoStsSizeErr, [](Args& a) { a.roi.width = -6; }},
         {"height", zmoStsSizeErr, [](Args& a) { a.roi.height = 0; }},
         {"source step", zmoStsStepErr, [](Args& a) { a.srcStep = 7; }},
         {"destination step", zmoStsStepErr, [](Args& a) { a.dstStep = 5; }},
         {"angle", zmoStsRangeErr, [](Args& a) { a.angle = nan; }},
         {"x shift", zmoStsRangeErr, [](Args& a) { a.xShift = 1.1e9; }},
         {"y shift", zmoStsRangeErr, [](Args& a) { a.yShift = -1.1e9; }}},
        [&] { dst.expectUntouched("destination"); });
}

}  // namespace
