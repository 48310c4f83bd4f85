// Distances to the nearest zero pixel: by chamfer metrics, exact, and by a marching front
// (zmoiDistanceTransform, zmoiTrueDistanceTransform, zmoiFastMarching).
#include "regions.h"
#include "zmocv.h"

namespace {

using namespace regions;

psIterator<int> Radius("Radius", "Where the front stops, pixels", {8, 64});

// The usual metrics of both masks: integers, which are three times too long for 3x3 and five times
// for 5x5, and the best fractions.
constexpr Zmo32s metricsOf3x3[] = {3, 4};
constexpr Zmo32s metricsOf5x5[] = {5, 7, 11};
constexpr Zmo32f realMetricsOf3x3[] = {0.955F, 1.3693F};
constexpr Zmo32f realMetricsOf5x5[] = {1.0F, 1.4F, 2.1969F};

Zmo32f radius;

PP_SERVICE(zmoiTrueDistanceTransformGetBufferSize);
PP_SERVICE(zmoiFastMarchingGetBufferSize);

// The outlines of the discs are what distances are measured from, as after an edge detector.
int outlines(int x, int y) {
    const bool inside = discs(x, y) != 0;
    const bool edge = inside != (discs(x + 1, y) != 0) || inside != (discs(x, y + 1) != 0);
    return edge ? 0 : 255;
}

class TimcDist : public RegionTest {
  public:
    using RegionTest::RegionTest;

  protected:
    bool drawImage(ppImage& image) override { return draw(image, outlines, brightOnly); }

    // Two passes of an addition and a comparison for each of the mask's steps in one half plane.
    double flopsOfElement() const override { return 2 * 2 * (is5x5() ? 8 : 4); }

    psString dataFigure() override {
        return psFormat("a mean distance of %.2f pixels", ppMeanOf(pDst) / unitsOfPixel());
    }

  private:
    bool is5x5() const { return named("5x5"); }
    int unitsOfPixel() const {
        if (func().dstType() == pp32f) return 1;
        return is5x5() ? metricsOf5x5[0] : metricsOf3x3[0];
    }
};

class TimcTrueDist : public TimcDist {
  public:
    using TimcDist::TimcDist;

  protected:
    bool prepare() override {
        return createBufferBy(pBuffer, lib_zmoiTrueDistanceTransformGetBufferSize, roi, zmo8u, 1);
    }
    // A parabola of nine operations, and at every pixel a product, two sums and a root.
    double flopsOfElement() const override { return 13; }
};

class TimcFastMarching : public TimcDist {
  public:
    using TimcDist::TimcDist;

  protected:
    void regOwnParms() override { regParm(Radius); }

    bool prepare() override {
        radius = static_cast<Zmo32f>(Radius.value());
        return createBufferBy(pBuffer, lib_zmoiFastMarchingGetBufferSize, roi, zmo8u, 1);
    }
    // Seven operations for a time, and every pixel is met from about two sides.
    double flopsOfElement() const override { return 14; }
};

#define REG_DIST(size, types, type, metrics)                                           \
    PP_REG(TimcDist, zmoiDistanceTransform_##size##_##types##_C1R, PP_IMAGE(pSrc, 8u), \
           PP_IMAGE(pDst, type), roi, metrics)
#define REG_DIST_IN_PLACE(size, metrics)                                        \
    PP_REG_INIT(TimcDist, zmoiDistanceTransform_##size##_8u_C1IR, restoreDst(), \
                PP_IMAGE(pDst, 8u), roi, metrics)

REG_DIST(3x3, 8u32f, 32f, realMetricsOf3x3)
REG_DIST(5x5, 8u32f, 32f, realMetricsOf5x5)
REG_DIST(3x3, 8u16u, 16u, metricsOf3x3)
REG_DIST(5x5, 8u16u, 16u, metricsOf5x5)
REG_DIST(3x3, 8u, 8u, metricsOf3x3)
REG_DIST(5x5, 8u, 8u, metricsOf5x5)
REG_DIST_IN_PLACE(3x3, metricsOf3x3)
REG_DIST_IN_PLACE(5x5, metricsOf5x5)
PP_REG(TimcTrueDist, zmoiTrueDistanceTransform_8u32f_C1R, PP_IMAGE(pSrc, 8u), PP_IMAGE(pDst, 32f),
       roi, pBuffer.get())
PP_REG(TimcFastMarching, zmoiFastMarching_8u32f_C1R, PP_IMAGE(pSrc, 8u), PP_IMAGE(pDst, 32f), roi,
       radius, pBuffer.get())

}  // namespace
