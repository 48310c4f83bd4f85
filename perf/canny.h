// Base of the tests of Canny edges from two derivative images.
#pragma once

#include <vector>

#include "derivatives.h"
#include "hysteresis.h"
#include "zmocv.h"
#include "zmoi.h"

namespace canny {

// pSrc is the derivative along x, pSrc2 that along y; pDst holds the picture at first, then the
// edges.
using namespace images;
using hysteresis::highThreshold;
using hysteresis::lowThreshold;

// Bright rectangles across and down: more figures make more edges.
inline psIterator<ZmoiSize> numFigures("numFigures", "Figures across and down",
                                       {{2, 2}, {3, 3}, {4, 4}});

constexpr double angle = 10.0;  // degrees; edges along the axes alone would be a special case

PP_SERVICE(zmoiConvert_8u32f_C1R);
PP_SERVICE(zmoiRotateGetShift);
PP_SERVICE(zmoiRotate_8u_C1R);

class CannyTest : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override { regParm(numFigures); }

    bool createImages() override {
        // An upright edge answers the filter of 3x3 with 4 times 255, and less where the turning
        // has frayed it: these pixels are followed from the others.
        hysteresis::setThresholds(500, 1000);
        return create(pSrc, ppArgSrc, 0) && create(pSrc2, ppArgSrc, 1) &&
               create(pDst, ppArgDst, 2) && drawPicture() && deriveSources();
    }

    psString dataFigure() override {
        return hysteresis::figure(pDst, [this] { callOnce(); });
    }

  private:
    static bool drawPicture() { return ppPictureGiven() ? ppDrawPicture(pDst) : drawFigures(); }

    // A grid of bright rectangles, turned about its centre.
    static bool drawFigures() {
        const ZmoiSize figures = numFigures.value();
        if (figures.width < 1 || figures.height < 1 || figures.width > roi.width ||
            figures.height > roi.height) {
            g_ostrm << MessageLevel::ERR
                    << psFormat("-- No %dx%d figures fit into the image\n", figures.width,
                                figures.height)
                    << MessageLevel::END;
            return false;
        }
        const int cellWidth = roi.width / figures.width;
        const int cellHeight = roi.height / figures.height;
        std::vector<Zmo8u> picture;
        ppForEachPixel(roi, [&](int x, int y) {
            const bool bright = (y + cellHeight / 4) % cellHeight < cellHeight / 2;
            const bool inside = (x + cellWidth / 4) % cellWidth >= cellWidth / 2;
            picture.push_back(bright && inside ? 255 : 0);
        });
        double xShift = 0;
        double yShift = 0;
        return prepared(lib_zmoiRotateGetShift, roi.width / 2.0, roi.height / 2.0, angle, &xShift,
                        &yShift) &&
               prepared(lib_zmoiRotate_8u_C1R, picture.data(), roi.width, roi, PP_IMAGE(pDst, 8u),
                        roi, angle, xShift, yShift);
    }

    bool deriveSources() {
        if (func().srcType() == pp16s) return derivatives::deriveBytes(pDst, pSrc, pSrc2);
        ppImage picture;
        picture.init(func(), ppArgSrc);
        return picture.createImage(roi.width, roi.height) &&
               prepared(lib_zmoiConvert_8u32f_C1R, PP_IMAGE(pDst, 8u), PP_IMAGE(picture, 32f),
                        roi) &&
               derivatives::deriveFloats(picture, pSrc, pSrc2);
    }
};

}  // namespace canny
