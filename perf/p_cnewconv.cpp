// Filters with fixed masks: second derivatives and a mean (zmoiFilterSobelCrossBorder,
// zmoiFilterLaplacianBorder, zmoiFilterLowpassBorder).
#include "filters.h"
#include "zmoi.h"

namespace {

using namespace filters;

ZmoiMaskSize mask;

PP_SERVICE(zmoiFilterSobelCrossBorderGetBufferSize);
PP_SERVICE(zmoiFilterLaplacianBorderGetBufferSize);
PP_SERVICE(zmoiFilterLowpassBorderGetBufferSize);

class TimcConv : public FilterTest {
  public:
    using FilterTest::FilterTest;

  protected:
    ZmoiSize margin() const override { return {2, 2}; }

    // Down the columns and along the row, both masks of a Laplacian, the quotient of a mean.
    double flopsOfElement() const override {
        const bool large = mask == zmoiMask5x5;
        const int smooth = large ? 6 : 3;
        if (named("FilterSobelCross")) return large ? 8 : 2;
        return named("FilterLaplacian") ? 2 * (smooth + 3) + 1 : 2 * smooth + 1;
    }

    bool prepare() override {
        const ZmoiSize size = MaskSize.value();
        if (size.width != size.height || (size.width != 3 && size.width != 5)) {
            g_ostrm << MessageLevel::ERR << "-- The fixed masks are 3x3 and 5x5\n"
                    << MessageLevel::END;
            return false;
        }
        mask = size.width == 3 ? zmoiMask3x3 : zmoiMask5x5;
        const auto& query = named("FilterSobelCross")  ? lib_zmoiFilterSobelCrossBorderGetBufferSize
                            : named("FilterLaplacian") ? lib_zmoiFilterLaplacianBorderGetBufferSize
                                                       : lib_zmoiFilterLowpassBorderGetBufferSize;
        return createBufferBy(pBuffer, query, roi, mask, srcType(), 1);
    }
};

#define REG_CONV(Base, types, T, D)                                                              \
    PP_REG(TimcConv, zmoiFilter##Base##Border_##types##_C1R, BORDERED_SRC(T), PP_IMAGE(pDst, D), \
           roi, mask, BORDERED_BORDER(T), pBuffer.get())

REG_CONV(SobelCross, 32f, 32f, 32f)
REG_CONV(Laplacian, 8u16s, 8u, 16s)
REG_CONV(Laplacian, 32f, 32f, 32f)
REG_CONV(Lowpass, 8u, 8u, 8u)
REG_CONV(Lowpass, 32f, 32f, 32f)

}  // namespace
