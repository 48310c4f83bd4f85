// Morphological reconstruction (zmoiMorphReconstructDilate, zmoiMorphReconstructErode).
#include <algorithm>
#include <cmath>

#include "pixels.h"
#include "zmocv.h"

namespace {

using namespace pixels;  // pSrc: limit, hills or the picture; pSrc2: marker, the limit moved

int connectivity;
ppBuffer pBuffer;

// What rises less than this above its surroundings is levelled.
constexpr double depth = 40;

PP_SERVICE(zmoiMorphReconstructGetBufferSize);

class TimeCVReconstruct : public PixelTest {
  public:
    using PixelTest::PixelTest;

  protected:
    void regOwnParms() override {
        regParm(Connectivity);
        regParm(Picture);
    }

    bool createImages() override {
        connectivity = Connectivity.value();
        return create(pSrc, ppArgSrc, 0, srcStep) && create(pSrc2, ppArgSrc, 1, src2Step) &&
               create(pDst, ppArgSrc, 2, dstStep) && drawLimit() && drawMarker() && createBuffer();
    }

    void flushData() override {
        PixelTest::flushData();
        pBuffer.release();
    }

    // Two scans with a comparison for each neighbour, itself and the limit.
    int flopsOfPixel() const override { return connectivity + 2; }

    psString dataFigure() override {
        long long levelled = 0;
        for (int y = 0; y < roi.height; ++y) {
            for (int x = 0; x < roi.width; ++x)
                levelled += pDst.getImageAt(x, y, 0) != pSrc2.getImageAt(x, y, 0);
        }
        return psFormat("%.2f%% of the pixels differ from the marker",
                        100.0 * static_cast<double>(levelled) / getDivisor());
    }

  private:
    // Hills of two sizes, with noise on them.
    bool drawLimit() {
        if (ppPictureGiven()) return ppDrawSource(pSrc);
        if (!pSrc.setRandom(0, 15)) return false;
        for (int y = 0; y < roi.height; ++y) {
            for (int x = 0; x < roi.width; ++x) {
                const double hills = 120 + 60 * std::sin(x * 0.05) * std::cos(y * 0.07) +
                                     40 * std::sin(x * 0.31 + y * 0.2);
                pSrc.setImageAt(x, y, 0, std::floor(hills + pSrc.getImageAt(x, y, 0)));
            }
        }
        return true;
    }

    bool drawMarker() {
        const double shift = func().baseName().contains("Dilate") ? -depth : depth;
        for (int y = 0; y < roi.height; ++y) {
            for (int x = 0; x < roi.width; ++x) {
                const double value = pSrc.getImageAt(x, y, 0) + shift;
                pSrc2.setImageAt(x, y, 0, std::clamp(value, 0.0, 255.0));
            }
        }
        return true;
    }

    bool createBuffer() {
        const auto type = libraryType(func().srcType());
        return createBufferBy(pBuffer, lib_zmoiMorphReconstructGetBufferSize, roi, type, 1);
    }
};

#define REG(name, type)                                                                          \
    PP_REG(TimeCVReconstruct, zmoiMorphReconstruct##name##_##type##_C1IR_Copy, pSrc.ptr##type(), \
           srcStep, pSrc2.ptr##type(), src2Step, pDst.ptr##type(), dstStep, roi, connectivity,   \
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
