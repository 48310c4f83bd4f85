// Base of the tests of functions that make one image out of another and see a border around the
// source: filters, pyramid layers, morphology.
#pragma once

#include "pp.h"

// What these functions take besides images, for the module that runs.
namespace bordered {

using namespace images;

inline const void* src;  // the region's first pixel
inline ZmoiSize srcRoi;
inline ZmoiSizeL srcRoiL;
inline ZmoiBorderType border;

// One mid-range element a channel, for a constant border.
template <class T>
inline constexpr T borderValue[4] = {100, 100, 100, 100};

// The source of a call, and what it sees around it.
#define BORDERED_SRC(type) static_cast<const Zmo##type*>(bordered::src), images::pSrc.step()
#define BORDERED_BORDER(type) bordered::border, bordered::borderValue<Zmo##type>

class BorderedTest : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    virtual void regMaskParms() { regParm(MaskSize); }
    // Without one, what lies outside is replicated.
    virtual bool hasBorder() const { return true; }
    // Source pixels on each side of the region, for a border in memory.
    virtual ZmoiSize margin() const { return {0, 0}; }
    virtual ZmoiSize sourceSize() const { return ImageSize.value(); }
    virtual ZmoiSize destinationSize() const { return ImageSize.value(); }
    // How many elements of an image hold so many pixels of a row, and where a pixel of the margin
    // stands: not the same for bits.
    virtual int elements(int pixels) const { return pixels; }
    virtual int elementOf(int x) const { return x; }
    // The same of the destination.
    virtual int resultElements(int pixels) const { return elements(pixels); }
    virtual bool drawSource() { return ppDrawSource(pSrc); }

    void regOwnParms() override {
        regMaskParms();
        if (hasBorder()) regParm(Border);
    }

    bool createImages() override {
        srcRoi = sourceSize();
        srcRoiL = {srcRoi.width, srcRoi.height};
        setRoi(destinationSize());
        border = hasBorder() ? Border.value() : zmoiBorderReplicate;
        const ZmoiSize more = around();
        if (!create(pSrc, ppArgSrc, 0,
                    {elements(srcRoi.width + 2 * more.width), srcRoi.height + 2 * more.height}))
            return false;
        src = pSrc.getPointerAt(elementOf(more.width), more.height, 0);
        return drawSource() && create(pDst, ppArgDst, 1, {resultElements(roi.width), roi.height});
    }

    double getFlops() override { return func().srcType() == pp32f ? ppImageTest::getFlops() : 0.0; }

    int channels() const { return pDst.numChannels(); }

    // The margin that the current border asks for.
    ZmoiSize around() const { return border == zmoiBorderInMem ? margin() : ZmoiSize{0, 0}; }
};

}  // namespace bordered
