// Motion history images (zmoiUpdateMotionHistory).
#include "pixels.h"
#include "zmocv.h"

namespace {

using namespace pixels;

constexpr Zmo32f timestamp = 1000.0F;
constexpr Zmo32f duration = 400.0F;

class TimcMH : public PixelTest {
  public:
    using PixelTest::PixelTest;

  protected:
    void regOwnParms() override { regParm(Density); }

    bool createImages() override {
        return create(pSrc, ppArgSrc, 0, srcStep) && drawSilhouette() &&
               create(pDst, ppArgDst, 1, dstStep) && pDst.setRandom(0, timestamp) &&
               pDst.reserveCopy() != 0;
    }

    void flushData() override {
        pDst.deleteReservedCopy();
        PixelTest::flushData();
    }

    // A difference of times for each image, a comparison or two for each pixel.
    int flopsOfPixel() const override { return func().srcType() == pp32f ? 2 : 1; }

    psString dataFigure() override {
        return psFormat("%.2f%% of the pixels move, %.2f%% have moved lately",
                        100.0 * ppShareOf(pDst, [](double when) { return when == timestamp; }),
                        100.0 * ppShareOf(pDst, [](double when) { return when != 0; }));
    }

  private:
    bool drawSilhouette() {
        ppImage mask(pp8u, 1, false);
        if (!mask.createImage(roi.width, roi.height) || !ppDrawMask(mask)) return false;
        for (int y = 0; y < roi.height; ++y) {
            for (int x = 0; x < roi.width; ++x) pSrc.setImageAt(x, y, 0, mask.getImageAt(x, y, 0));
        }
        return true;
    }
};

// The tag has no I, and yet a call forgets old movements.
#define REG_HISTORY(types, type)                                                        \
    PP_REG_INIT(TimcMH, zmoiUpdateMotionHistory_##types##_C1IR, pDst.setReservedCopy(), \
                pSrc.ptr##type(), srcStep, pDst.ptr32f(), dstStep, roi, timestamp, duration)

REG_HISTORY(8u32f, 8u)
REG_HISTORY(16u32f, 16u)
REG_HISTORY(32f, 32f)

}  // namespace
