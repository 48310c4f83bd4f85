// Morphological reconstruction (zmoiMorphReconstructDilate, zmoiMorphReconstructErode).
#include <algorithm>
#include <cmath>

#include "pp.h"
#include "zmocv.h"

namespace {

ppImage pSrc;   // limit: hills, or the picture
ppImage pSrc2;  // marker: the limit, lowered or raised
ppImage pDst;
int srcStep;
int src2Step;
int dstStep;
ZmoiSize roi;
int connectivity;
ppBuffer pBuffer;

// What rises less than this above its surroundings is levelled.
constexpr double depth = 40;

PP_SERVICE(zmoiMorphReconstructGetBufferSize);

class TimeCVReconstruct : public ppTest {
  public:
    using ppTest::ppTest;

  protected:
    bool canStart() override {
        regParm(ImageSize);
        regParm(Connectivity);
        regParm(Picture);
        regCacheParm(ImageSize, pDst);
        return true;
    }

    bool initData() override {
        roi = ImageSize.value();
        connectivity = Connectivity.value();
        if (ppPictureGiven()) setDataComment(ppPictureTitle());
        return create(pSrc, 0, srcStep) && create(pSrc2, 1, src2Step) && create(pDst, 2, dstStep) &&
               drawLimit() && drawMarker() && createBuffer();
    }

    void flushData() override {
        pSrc.deleteVector();
        pSrc2.deleteVector();
        pDst.deleteVector();
        pBuffer.release();
    }

    double getDivisor() override { return static_cast<double>(roi.width) * roi.height; }
    psString getUnit() override { return "pxch"; }
    // Two scans with a comparison for each neighbour, itself and the limit.
    double getFlops() override {
        const ppFunc& type = func();
        const bool isFloat = type.contains("_32f_") || type.contains("_64f_");
        return isFloat ? getDivisor() * (connectivity + 2) : 0.0;
    }

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
    bool create(ppImage& image, int index, int& step) {
        image.init(func(), ppArgSrc);
        if (!image.createImage(roi.width, roi.height, 0, ppMisalign(index))) return false;
        step = image.step();
        return true;
    }

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
        int size = 0;
        const auto type = static_cast<ZmoDataType>(ppInfo(func().srcType()).zmoCode);
        return prepared(lib_zmoiMorphReconstructGetBufferSize(roi, type, 1, &size),
                        "zmoiMorphReconstructGetBufferSize") &&
               pBuffer.create(size);
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
