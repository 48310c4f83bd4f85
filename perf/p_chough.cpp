// Straight lines through edge pixels (zmoiHoughLine).
#include <cmath>
#include <numbers>

#include "squares.h"

namespace {

using namespace squares;

psIterator<int> AngleStep("AngleStep", "Distance of neighbouring angles, degrees", {1, 2});
// All directions, or those within 30 degrees of one.
psIterator<int> AngleRange("AngleRange", "Range of the angles, degrees", {30, 180});

constexpr int maxLines = 20000;

ZmoiPolar limits[2];
ZmoiPolar delta;
int threshold;
int count;
int edges;
ppVector pLines(pp32f);  // distances and angles in pairs

ZmoiPolar* lines() {
    return reinterpret_cast<ZmoiPolar*>(pLines.ptr32f());
}

PP_SERVICE(zmoiHoughLine_RegionGetBufferSize);

class TimcvHough : public SquareTest {
  public:
    using SquareTest::SquareTest;

  protected:
    void regOwnParms() override {
        regParm(AngleStep);
        regParm(AngleRange);
        regCacheParm(ImageSize, pSrc);  // the result is no image
    }

    bool createImages() override {
        ppImage picture(pp8u, 1, false);
        if (!picture.createImage(roi.width, roi.height) || !drawSquares(picture) ||
            !create(pSrc, pp8u, 0) || !findEdges(picture, pSrc))
            return false;
        edges = countIn(pSrc);
        return true;
    }

    bool prepare() override {
        setRegion();
        return createBufferBy(pBuffer, lib_zmoiHoughLine_RegionGetBufferSize, roi, limits, delta,
                              maxLines, zmo8u, 1) &&
               pLines.createZeroed(2 * maxLines);
    }

    void flushData() override {
        SquareTest::flushData();
        pLines.deleteVector();
    }

    void regArguments() override {
        SquareTest::regArguments();
        regOutput("lines", pLines.ptr32f(), 2 * count);
        regOutput("count", &count);
    }

    // Two products and two sums for each edge pixel and angle.
    double getFlops() override {
        const int angles = AngleRange.value() / AngleStep.value() + 1;
        return 4.0 * edges * angles;
    }

    psString dataFigure() override {
        return psFormat("%d lines through %d edge pixels", count, edges);
    }

  private:
    static void setRegion() {
        constexpr double degree = std::numbers::pi / 180;
        const auto distance = static_cast<Zmo32f>(std::hypot(roi.width, roi.height));
        limits[0] = {-distance, 0};
        limits[1] = {distance, static_cast<Zmo32f>(AngleRange.value() * degree)};
        delta = {1, static_cast<Zmo32f>(AngleStep.value() * degree)};
        threshold = std::min(roi.width, roi.height) / 4;
    }
};

PP_REG(TimcvHough, zmoiHoughLine_Region_8u32f_C1R, PP_IMAGE(pSrc, 8u), lines(), roi, limits, delta,
       threshold, maxLines, &count, pBuffer.get())

}  // namespace
