// Base of the tests of functions that make one image out of another and see a border around the
// source: filters, pyramid layers, morphology.
#pragma once

#include "pp.h"

// The arguments of these functions, for the module that runs.
namespace bordered {

inline ppImage pSrc;
inline ppImage pDst;
inline const void* src;  // the region's first pixel
inline int srcStep;
inline int dstStep;
inline ZmoiSize srcRoi;
inline ZmoiSize roi;  // of the destination
inline ZmoiSizeL srcRoiL;
inline ZmoiSizeL roiL;
inline ZmoiBorderType border;
inline ppBuffer pState;
inline ppBuffer pBuffer;

// One mid-range element a channel, for a constant border.
template <class T>
inline constexpr T borderValue[4] = {100, 100, 100, 100};

// The region's first source pixel of a function's element type.
#define BORDERED_SRC(type) static_cast<const Zmo##type*>(bordered::src)

class BorderedTest : public ppTest {
  public:
    using ppTest::ppTest;

  protected:
    virtual void regOwnParms() { regParm(MaskSize); }
    // Without one, what lies outside is replicated.
    virtual bool hasBorder() const { return true; }
    // Fills the state, if any, and makes the work buffer.
    virtual bool prepare() = 0;
    // Source pixels on each side of the region, for a border in memory.
    virtual ZmoiSize margin() const { return {0, 0}; }
    virtual ZmoiSize sourceSize() const { return ImageSize.value(); }
    virtual ZmoiSize destinationSize() const { return ImageSize.value(); }
    // Floating-point operations for one element of a 32f function.
    virtual double flopsOfElement() const = 0;
    // How many elements of an image hold so many pixels of a row, and where a pixel of the margin
    // stands: not the same for bits.
    virtual int elements(int pixels) const { return pixels; }
    virtual int elementOf(int x) const { return x; }
    // The same of the destination.
    virtual int resultElements(int pixels) const { return elements(pixels); }
    virtual bool drawSource() { return ppDrawSource(pSrc); }

    bool canStart() override {
        regParm(ImageSize);
        regOwnParms();
        if (hasBorder()) regParm(Border);
        regParm(Picture);
        regCacheParm(ImageSize, pDst);
        return true;
    }

    bool initData() override {
        srcRoi = sourceSize();
        roi = destinationSize();
        srcRoiL = {srcRoi.width, srcRoi.height};
        roiL = {roi.width, roi.height};
        border = hasBorder() ? Border.value() : zmoiBorderReplicate;
        if (ppPictureGiven()) setDataComment(ppPictureTitle());
        return createSource() && createDestination() && prepare();
    }

    void flushData() override {
        pSrc.deleteVector();
        pDst.deleteVector();
        pState.release();
        pBuffer.release();
    }

    double getDivisor() override {
        return static_cast<double>(roi.width) * roi.height * pDst.numActualChannels();
    }
    psString getUnit() override { return "pxch"; }
    double getFlops() override {
        return func().srcType() == pp32f ? getDivisor() * flopsOfElement() : 0.0;
    }

    int channels() const { return pDst.numChannels(); }

    // The margin that the current border asks for.
    ZmoiSize around() const { return border == zmoiBorderInMem ? margin() : ZmoiSize{0, 0}; }

  private:
    bool create(ppImage& image, ppArg arg, int rowElements, int height, int index) {
        image.init(func(), arg);
        return image.createImage(rowElements, height, 0, ppMisalign(index));
    }

    bool createSource() {
        const ZmoiSize more = around();
        if (!create(pSrc, ppArgSrc, elements(srcRoi.width + 2 * more.width),
                    srcRoi.height + 2 * more.height, 0))
            return false;
        srcStep = pSrc.step();
        src = pSrc.getPointerAt(elementOf(more.width), more.height, 0);
        return drawSource();
    }

    bool createDestination() {
        if (!create(pDst, ppArgDst, resultElements(roi.width), roi.height, 1)) return false;
        dstStep = pDst.step();
        return true;
    }
};

}  // namespace bordered
