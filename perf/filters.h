// Base of the tests of filters: one image becomes another, with a border around the source.
#pragma once

#include <algorithm>
#include <climits>
#include <cmath>
#include <vector>

#include "pp.h"

// The arguments of these functions, for the module that runs.
namespace filters {

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
#define FILTER_SRC(type) static_cast<const Zmo##type*>(filters::src)

// A kernel that smooths: 1 2 3 2 1.
inline std::vector<Zmo16s> tent(int taps) {
    std::vector<Zmo16s> weights;
    for (int i = 0; i < taps; ++i)
        weights.push_back(static_cast<Zmo16s>(1 + std::min(i, taps - 1 - i)));
    return weights;
}
inline int sum(const std::vector<Zmo16s>& weights) {
    int total = 0;
    for (const Zmo16s weight : weights) total += weight;
    return total;
}

class FilterTest : public ppTest {
  public:
    using ppTest::ppTest;

  protected:
    // Fills the state, if any, and makes the work buffer.
    virtual bool prepareFilter() = 0;
    // Source pixels on each side of the region, for a border in memory.
    virtual ZmoiSize margin() const { return {0, 0}; }
    virtual ZmoiSize sourceSize() const { return ImageSize.value(); }
    virtual ZmoiSize destinationSize() const { return ImageSize.value(); }
    // Floating-point operations for one element of a 32f result.
    virtual double flopsOfElement() const = 0;

    bool canStart() override {
        regParm(ImageSize);
        regOwnParms();
        regParm(Border);
        regParm(Picture);
        regCacheParm(ImageSize, pDst);
        return true;
    }
    virtual void regOwnParms() { regParm(MaskSize); }

    bool initData() override {
        srcRoi = sourceSize();
        roi = destinationSize();
        srcRoiL = {srcRoi.width, srcRoi.height};
        roiL = {roi.width, roi.height};
        border = Border.value();
        if (ppPictureGiven()) setDataComment(ppPictureTitle());
        return createSource() && createDestination() && prepareFilter();
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

    // Smoothing leaves a part of the noise, derivatives raise it.
    psString dataFigure() override {
        const double before = spread(pSrc);
        return psFormat("the result varies %.2f%% as much as the source",
                        before > 0 ? 100.0 * spread(pDst) / before : 0.0);
    }

    ZmoDataType srcType() const { return libraryType(func().srcType()); }
    ZmoDataType dstType() const { return libraryType(func().dstType()); }
    int channels() const { return pDst.numChannels(); }

    bool createStateAndBuffer(long long stateSize, long long bufferSize) {
        if (stateSize > INT_MAX || bufferSize > INT_MAX) {
            g_ostrm << MessageLevel::ERR
                    << "-- The library asks for more than 2 GB of work memory\n"
                    << MessageLevel::END;
            return false;
        }
        return pState.create(static_cast<int>(stateSize)) &&
               pBuffer.create(static_cast<int>(bufferSize));
    }

  private:
    bool createSource() {
        const ZmoiSize around = border == zmoiBorderInMem ? margin() : ZmoiSize{0, 0};
        pSrc.init(func(), ppArgSrc);
        if (!pSrc.createImage(srcRoi.width + 2 * around.width, srcRoi.height + 2 * around.height, 0,
                              ppMisalign(0)))
            return false;
        srcStep = pSrc.step();
        src = pSrc.getPointerAt(around.width, around.height, 0);
        return ppDrawSource(pSrc);
    }

    bool createDestination() {
        pDst.init(func(), ppArgDst);
        if (!pDst.createImage(roi.width, roi.height, 0, ppMisalign(1))) return false;
        dstStep = pDst.step();
        return true;
    }

    static ZmoDataType libraryType(ppType type) {
        return static_cast<ZmoDataType>(ppInfo(type).zmoCode);
    }

    // The standard deviation of the first channel.
    static double spread(const ppImage& image) {
        double sum = 0;
        double squares = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const double value = image.getImageAt(x, y, 0);
                sum += value;
                squares += value * value;
            }
        }
        const double count = static_cast<double>(image.width()) * image.height();
        return std::sqrt(std::max(squares / count - sum / count * (sum / count), 0.0));
    }
};

}  // namespace filters
