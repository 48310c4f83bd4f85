// Standard deviations in a moving rectangle, from tables of sums and squares (zmoiRectStdDev,
// zmoiTiltedRectStdDev).
#include <cmath>

#include "pp.h"
#include "zmocv.h"

namespace {

using namespace images;

psIterator<ZmoiSize> window("Window", "Sides of the rectangle", {{5, 5}, {24, 24}});

ZmoiRect rect;
int scale;

PP_SERVICE(zmoiSqrIntegral_8u32s_C1R);
PP_SERVICE(zmoiSqrIntegral_8u32s64f_C1R);
PP_SERVICE(zmoiSqrIntegral_8u32f64f_C1R);
PP_SERVICE(zmoiTiltedSqrIntegral_8u32s_C1R);
PP_SERVICE(zmoiTiltedSqrIntegral_8u32s64f_C1R);
PP_SERVICE(zmoiTiltedSqrIntegral_8u32f64f_C1R);

class TimcRectStdDev : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override { regParm(window); }
    bool canStart() override {
        if (!ppImageTest::canStart()) return false;
        if (func().scale()) regParm(ScaleFactor);
        return true;
    }

    bool createImages() override {
        scale = func().scale() ? ScaleFactor.value() : 0;
        // A tilted rectangle reaches to the left by its height.
        const ZmoiSize sides = window.value();
        rect = {isTilted() ? sides.height : 0, 0, sides.width, sides.height};
        ppImage picture(pp8u, 1, false);
        const ZmoiSize size{roi.width + rect.x + rect.width - 1,
                            roi.height + rect.height - 1 + (isTilted() ? rect.width : 0)};
        return picture.createImage(size.width, size.height) && ppDrawSource(picture) &&
               createTables({size.width + 1, size.height + 1}) && makeTables(picture, size) &&
               create(pDst, ppArgDst, 2);
    }

    // Three differences for each table of floats, then two products, a difference, a scale, a root.
    double flopsOfElement() const override { return (func().srcType() == pp32f ? 3 : 0) + 3 + 5; }

    psString dataFigure() override {
        return psFormat("the mean of the deviations is %.5g", std::ldexp(ppMeanOf(pDst), scale));
    }

  private:
    bool isTilted() const { return named("Tilted"); }

    bool createTables(ZmoiSize size) {
        return create(pSrc, func().srcType(), 0, size) &&
               create(pSrc2, func().scale() ? pp32s : pp64f, 1, size);
    }

    bool makeTables(const ppImage& picture, ZmoiSize size) const {
        constexpr Zmo8u start = 0;  // of sums of any type
        const auto make = [&](const auto& upright, const auto& tilted, auto* sums, auto* squares) {
            const auto& function = isTilted() ? tilted : upright;
            return prepared(function, PP_IMAGE(picture, 8u), sums, pSrc.step(), squares,
                            pSrc2.step(), size, start, start);
        };
        if (func().scale())
            return make(lib_zmoiSqrIntegral_8u32s_C1R, lib_zmoiTiltedSqrIntegral_8u32s_C1R,
                        pSrc.ptr32s(), pSrc2.ptr32s());
        if (func().srcType() == pp32s)
            return make(lib_zmoiSqrIntegral_8u32s64f_C1R, lib_zmoiTiltedSqrIntegral_8u32s64f_C1R,
                        pSrc.ptr32s(), pSrc2.ptr64f());
        return make(lib_zmoiSqrIntegral_8u32f64f_C1R, lib_zmoiTiltedSqrIntegral_8u32f64f_C1R,
                    pSrc.ptr32f(), pSrc2.ptr64f());
    }
};

#define REG_STD_DEV(base)                                                                      \
    PP_REG(TimcRectStdDev, zmoi##base##_32s_C1RSfs, PP_IMAGE(pSrc, 32s), PP_IMAGE(pSrc2, 32s), \
           PP_IMAGE(pDst, 32s), roi, rect, scale)                                              \
    PP_REG(TimcRectStdDev, zmoi##base##_32s32f_C1R, PP_IMAGE(pSrc, 32s), PP_IMAGE(pSrc2, 64f), \
           PP_IMAGE(pDst, 32f), roi, rect)                                                     \
    PP_REG(TimcRectStdDev, zmoi##base##_32f_C1R, PP_IMAGE(pSrc, 32f), PP_IMAGE(pSrc2, 64f),    \
           PP_IMAGE(pDst, 32f), roi, rect)

REG_STD_DEV(RectStdDev)
REG_STD_DEV(TiltedRectStdDev)

}  // namespace
