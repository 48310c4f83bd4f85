// Base of the tests of Canny edges from two derivative images.
#pragma once

#include <vector>

#include "derivatives.h"
#include "hysteresis.h"
#include "zmocv.h"
#include "zmoi.h"

namespace canny {

using hysteresis::highThreshold;
using hysteresis::lowThreshold;

// Bright rectangles across and down: more figures make more edges.
inline psIterator<ZmoiSize> numFigures("numFigures", "Figures across and down",
                                       {{2, 2}, {3, 3}, {4, 4}});

constexpr double angle = 10.0;  // degrees; edges along the axes alone would be a special case

inline ppImage pSrc1;  // derivative along x
inline ppImage pSrc2;  // derivative along y
inline ppImage pDst;   // the picture at first, then the edges
inline int srcStep;
inline int src2Step;
inline int dstStep;
inline ZmoiSize roi;
inline ZmoiSizeL roiL;
inline ppBuffer pBuffer;

PP_SERVICE(zmoiConvert_8u32f_C1R);
PP_SERVICE(zmoiRotateGetShift);
PP_SERVICE(zmoiRotate_8u_C1R);

class CannyTest : public ppTest {
  public:
    using ppTest::ppTest;

  protected:
    // Asks the library for the size of the work buffer and makes it.
    virtual bool createBuffer() = 0;

    bool canStart() override {
        regParm(ImageSize);
        regParm(numFigures);
        regParm(Picture);
        regCacheParm(ImageSize, pDst);
        return true;
    }

    bool initData() override {
        roi = ImageSize.value();
        roiL = {roi.width, roi.height};
        // An upright edge answers the filter of 3x3 with 4 times 255, and less where the turning has
        // frayed it: these pixels are followed from the others.
        hysteresis::setThresholds(500, 1000);
        return createImages() && drawPicture() && deriveSources() && createBuffer();
    }

    void flushData() override {
        pSrc1.deleteVector();
        pSrc2.deleteVector();
        pDst.deleteVector();
        pBuffer.release();
    }

    double getDivisor() override {
        return static_cast<double>(pDst.width()) * pDst.height() * pDst.numActualChannels();
    }

    psString getUnit() override { return "pxch"; }

    psString dataFigure() override {
        return hysteresis::figure(pDst, [this] { callOnce(); });
    }

  private:
    bool createImages() {
        pSrc1.init(func(), ppArgSrc);
        pSrc2.init(func(), ppArgSrc);
        pDst.init(func(), ppArgDst);
        if (!pSrc1.createImage(roi.width, roi.height, 0, ppMisalign(0)) ||
            !pSrc2.createImage(roi.width, roi.height, 0, ppMisalign(1)) ||
            !pDst.createImage(roi.width, roi.height, 0, ppMisalign(2)))
            return false;
        srcStep = pSrc1.step();
        src2Step = pSrc2.step();
        dstStep = pDst.step();
        return true;
    }

    bool drawPicture() {
        if (!ppPictureGiven()) return drawFigures();
        setDataComment(ppPictureTitle());
        return ppDrawPicture(pDst);
    }

    // A grid of bright rectangles, turned about its centre.
    bool drawFigures() {
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
        picture.reserve(static_cast<std::size_t>(roi.width) * static_cast<std::size_t>(roi.height));
        for (int y = 0; y < roi.height; ++y) {
            const bool bright = (y + cellHeight / 4) % cellHeight < cellHeight / 2;
            for (int x = 0; x < roi.width; ++x) {
                const bool inside = (x + cellWidth / 4) % cellWidth >= cellWidth / 2;
                picture.push_back(bright && inside ? 255 : 0);
            }
        }
        double xShift = 0;
        double yShift = 0;
        return prepared(lib_zmoiRotateGetShift, roi.width / 2.0, roi.height / 2.0, angle, &xShift,
                        &yShift) &&
               prepared(lib_zmoiRotate_8u_C1R, picture.data(), roi.width, roi, pDst.ptr8u(),
                        dstStep, roi, angle, xShift, yShift);
    }

    bool deriveSources() {
        if (func().srcType() == pp16s) return derivatives::deriveBytes(pDst, pSrc1, pSrc2);
        ppImage picture;
        picture.init(func(), ppArgSrc);
        return picture.createImage(roi.width, roi.height) &&
               prepared(lib_zmoiConvert_8u32f_C1R, pDst.ptr8u(), dstStep, picture.ptr32f(),
                        picture.step(), roi) &&
               derivatives::deriveFloats(picture, pSrc1, pSrc2);
    }
};

}  // namespace canny
