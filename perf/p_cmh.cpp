// Motion history images (zmoiUpdateMotionHistory).
#include "pp.h"
#include "zmocv.h"

namespace {

using namespace images;

constexpr Zmo32f timestamp = 1000.0F;
constexpr Zmo32f duration = 400.0F;

class TimcMH : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override { regParm(Density); }
    bool hasPicture() const override { return false; }

    bool createImages() override {
        return create(pSrc, ppArgSrc, 0) && drawSilhouette() && create(pDst, ppArgDst, 1) &&
               pDst.setRandom(0, timestamp) && pDst.reserveCopy() != 0;
    }

    // A difference of times for each image, a comparison or two for each pixel.
    double flopsOfElement() const override { return func().srcType() == pp32f ? 2 : 1; }

    psString dataFigure() override {
        return psFormat("%.2f%% of the pixels move, %.2f%% have moved lately",
                        100.0 * ppShareOf(pDst, [](double when) { return when == timestamp; }),
                        100.0 * ppShareOf(pDst, [](double when) { return when != 0; }));
    }

  private:
    bool drawSilhouette() {
        ppImage mask(pp8u, 1, false);
        if (!mask.createImage(roi.width, roi.height) || !ppDrawMask(mask)) return false;
        ppDrawBy(pSrc, [&](int x, int y) { return mask.getImageAt(x, y, 0); });
        return true;
    }
};

// The tag has no I, and yet a call forgets old movements.
#define REG_HISTORY(types, type)                                              \
    PP_REG_INIT(TimcMH, zmoiUpdateMotionHistory_##types##_C1IR, restoreDst(), \
                PP_IMAGE(pSrc, type), PP_IMAGE(pDst, 32f), roi, timestamp, duration)

REG_HISTORY(8u32f, 8u)
REG_HISTORY(16u32f, 16u)
REG_HISTORY(32f, 32f)

}  // namespace
