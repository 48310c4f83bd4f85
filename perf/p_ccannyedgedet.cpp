// Canny edges of a picture (zmoiCannyBorder).
#include <algorithm>

#include "corners.h"

namespace {

using namespace corners;

psMapIterator<_ZmoiNorm> Norm("Norm", "Size of the gradient",
                              {{zmoiNormL1, "L1"}, {zmoiNormL2, "L2"}}, {zmoiNormL1, zmoiNormL2});

constexpr Zmo32f lowThreshold = 127.5F;
constexpr Zmo32f highThreshold = 382.5F;

ZmoiMaskSize maskSize;
ZmoiNorm norm;

PP_SERVICE(zmoiCannyBorderGetBufferSize);

class TimcCannyEdgeDet : public PictureTest {
  public:
    using PictureTest::PictureTest;

  protected:
    void regOwnParms() override {
        PictureTest::regOwnParms();
        regParm(Norm);
    }

    bool prepare() override {
        maskSize = static_cast<ZmoiMaskSize>(kernelSize);
        norm = Norm.value();
        int size = 0;
        return prepared(lib_zmoiCannyBorderGetBufferSize(roi, static_cast<ZmoiMaskSize>(kernelSize),
                                                         zmo8u, 1, &size),
                        "zmoiCannyBorderGetBufferSize") &&
               pBuffer.create(size);
    }

    psString dataFigure() override {
        double edges = 0;
        for (int y = 0; y < roi.height; ++y)
            edges += static_cast<double>(std::count(
                pDst.ptr8u() + y * dstStep, pDst.ptr8u() + y * dstStep + roi.width, Zmo8u{255}));
        return psFormat("%.2f%% of the pixels are edges", 100 * edges / roi.width / roi.height);
    }
};

PP_REG(TimcCannyEdgeDet, zmoiCannyBorder_8u_C1R, BORDERED_SRC(8u), srcStep, pDst.ptr8u(), dstStep,
       roi, kernel<ZmoiDifferentialKernel>, maskSize, lowThreshold, highThreshold, norm, border,
       borderValue<Zmo8u>, pBuffer.get())

}  // namespace
