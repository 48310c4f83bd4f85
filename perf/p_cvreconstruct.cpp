// Morphological reconstruction (zmoiMorphReconstructDilate, zmoiMorphReconstructErode).
#include <algorithm>
#include <cmath>

#include "pp.h"
#include "zmocv.h"

namespace {

using namespace images;  // pSrc: limit, hills or the picture; pSrc2: marker, the limit moved

int connectivity;

// What rises less than this above its surroundings is levelled.
constexpr double depth = 40;

PP_SERVICE(zmoiMorphReconstructGetBufferSize);

class TimeCVReconstruct : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override { regParm(Connectivity); }

    bool createImages() override {
        return create(pSrc, ppArgSrc, 0) && create(pSrc2, ppArgSrc, 1) &&
               create(pDst, ppArgSrc, 2) && drawLimit() && drawMarker();
    }

    bool prepare() override {
        connectivity = Connectivity.value();
        return createBufferBy(pBuffer, lib_zmoiMorphReconstructGetBufferSize, roi, srcType(), 1);
    }

    // Two scans with a comparison for each neighbour, itself and the limit.
    double flopsOfElement() const override { return connectivity + 2; }

    psString dataFigure() override {
        double levelled = 0;
        ppForEachPixel(roi, [&](int x, int y) {
            levelled += pDst.getImageAt(x, y, 0) != pSrc2.getImageAt(x, y, 0);
        });
        return psFormat("%.2f%% of the pixels differ from the marker",
                        100.0 * levelled / getDivisor());
    }

  private:
    // Hills of two sizes, with noise on them.
    bool drawLimit() {
        if (ppPictureGiven()) return ppDrawSource(pSrc);
        if (!pSrc.setRandom(0, 15)) return false;
        ppDrawBy(pSrc, [](int x, int y) {
            const double hills = 120 + 60 * std::sin(x * 0.05) * std::cos(y * 0.07) +
                                 40 * std::sin(x * 0.31 + y * 0.2);
            return std::floor(hills + pSrc.getImageAt(x, y, 0));
        });
        return true;
    }

    bool drawMarker() {
        const double shift = named("Dilate") ? -depth : depth;
        ppDrawBy(pSrc2, [&](int x, int y) {
            return std::clamp(pSrc.getImageAt(x, y, 0) + shift, 0.0, 255.0);
        });
        return true;
    }
};

#define REG(name, type)                                                                          \
    PP_REG(TimeCVReconstruct, zmoiMorphReconstruct##name##_##type##_C1IR_Copy,                   \
           PP_IMAGE(pSrc, type), PP_IMAGE(pSrc2, type), PP_IMAGE(pDst, type), roi, connectivity, \
           pBuffer.get())

REG(Dilate, 8u)
REG(Dilate, 16u)
REG(Dilate, 32f)
REG(Dilate, 64f)
REG(Erode, 8u)
REG(Erode, 16u)
REG(Erode, 32f)
REG(Erode, 64f)

}  // namespace
