// Base of the tests of morphology: one image becomes another by way of a structuring element, with a
// border around the source.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <vector>

#include "pp.h"
#include "zmocv.h"

// The arguments of these functions, for the module that runs.
namespace morphs {

inline psMapIterator<int> Shape("Shape", "Shape of the mask", {{0, "rect"}, {1, "ellipse"}},
                                {0, 1});

inline ppImage pSrc;
inline ppImage pDst;
inline const void* src;  // the region's first pixel
inline int srcStep;
inline int dstStep;
inline ZmoiSize roi;
inline ZmoiSizeL roiL;
inline ZmoiBorderType border;
inline ppBuffer pState;
inline ppBuffer pBuffer;

// One mid-range element a channel, for a constant border.
template <class T>
inline constexpr T borderValue[4] = {100, 100, 100, 100};

// Of the unit square, so that an ellipse of 3x3 has no corners.
constexpr double roundness = 0.81;

// 1u: the region's first pixel, and the same of the destination.
constexpr int bitOffset = 3;

class MorphTest : public ppTest {
  public:
    using ppTest::ppTest;

  protected:
    virtual bool prepareState(const std::vector<Zmo8u>& mask) = 0;

    bool canStart() override {
        regParm(ImageSize);
        regParm(MaskSize);
        regParm(Shape);
        regParm(Border);
        regParm(Picture);
        regCacheParm(ImageSize, pDst);
        return true;
    }

    bool initData() override {
        roi = ImageSize.value();
        roiL = {roi.width, roi.height};
        border = Border.value();
        if (ppPictureGiven()) setDataComment(ppPictureTitle());
        return createSource() && createDestination() && prepareState(drawMask());
    }

    void flushData() override {
        pSrc.deleteVector();
        pDst.deleteVector();
        pState.release();
        pBuffer.release();
    }

    double getDivisor() override {
        return static_cast<double>(roi.width) * roi.height * channels();
    }
    psString getUnit() override { return "pxch"; }
    // Comparisons, and sums of grey-level elements, of the definition.
    double getFlops() override {
        return func().srcType() == pp32f
                   ? getDivisor() * MaskSize.value().width * MaskSize.value().height
                   : 0.0;
    }

    psString dataFigure() override {
        const int margin = marginOf();
        long long changed = 0;
        for (int y = 0; y < pDst.height(); ++y) {
            for (int x = 0; x < pDst.width(); ++x)
                changed += pDst.getImageAt(x, y, 0) !=
                           pSrc.getImageAt(x + (isBits() ? margin / 8 : margin), y + margin, 0);
        }
        return psFormat("%.2f%% of the %s changed",
                        100.0 * static_cast<double>(changed) / pDst.width() / pDst.height(),
                        isBits() ? "bytes" : "pixels");
    }

    bool isBits() const { return func().contains("_1u_"); }
    ZmoDataType dataType() const {
        return isBits() ? zmo1u : static_cast<ZmoDataType>(ppInfo(func().srcType()).zmoCode);
    }
    int channels() const { return isBits() ? 1 : pDst.numChannels(); }

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
    // In memory, compound operations look two masks around the region. A multiple of 8, for 1u.
    static int marginOf() {
        const ZmoiSize mask = MaskSize.value();
        return border == zmoiBorderInMem ? (2 * std::max(mask.width, mask.height) + 7) / 8 * 8 : 0;
    }

    bool create(ppImage& image, ppArg arg, int margin, int index) {
        image.init(func(), arg);
        const int width = roi.width + 2 * margin;
        return image.createImage(isBits() ? (bitOffset + width + 7) / 8 : width,
                                 roi.height + 2 * margin, 0, ppMisalign(index));
    }

    bool createSource() {
        const int margin = marginOf();
        if (!create(pSrc, ppArgSrc, margin, 0)) return false;
        srcStep = pSrc.step();
        src = pSrc.getPointerAt(isBits() ? margin / 8 : margin, margin, 0);
        return isBits() ? drawBits() : ppDrawSource(pSrc);
    }

    bool createDestination() {
        if (!create(pDst, ppArgDst, 0, 1)) return false;
        dstStep = pDst.step();
        return true;
    }

    // Bands with gaps and scattered specks: noise alone would leave no pixel after an erosion.
    static bool drawBits() {
        if (!pSrc.setRandom(0, 255)) return false;
        for (int y = 0; y < pSrc.height(); ++y) {
            auto* const row = static_cast<unsigned char*>(pSrc.getRowPointer(y));
            for (int x = 0; x < pSrc.width(); ++x) {
                const int band = (x / 3 + y / 20) % 2 != 0 ? 0xff : 0;
                const int speck = row[x] < 16 ? 1 << (row[x] % 8) : 0;
                row[x] = static_cast<unsigned char>(band ^ speck);
            }
        }
        return true;
    }

    static std::vector<Zmo8u> drawMask() {
        const ZmoiSize size = MaskSize.value();
        std::vector<Zmo8u> mask;
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                const double dx = (2.0 * x + 1) / size.width - 1;
                const double dy = (2.0 * y + 1) / size.height - 1;
                const bool inside = dx * dx + dy * dy < roundness;
                mask.push_back(Shape.value() == 0 || inside ? 1 : 0);
            }
        }
        return mask;
    }
};

inline ZmoiPoint anchor() {
    return {MaskSize.value().width / 2, MaskSize.value().height / 2};
}

// The state and buffer of the flat operations, with int or 64-bit sizes.
class FlatMorphTest : public MorphTest {
  public:
    using MorphTest::MorphTest;
    static const ZmoiMorphState* state() {
        return reinterpret_cast<const ZmoiMorphState*>(pState.get());
    }

  protected:
    template <class Int, class Size, class GetSize, class Init>
    bool prepareFlat(const std::vector<Zmo8u>& mask, Size size, const GetSize& getSize,
                     const char* getSizeName, const Init& init, const char* initName) {
        const Size maskSize{MaskSize.value().width, MaskSize.value().height};
        Int stateSize = 0;
        Int bufferSize = 0;
        return prepared(getSize(size, dataType(), channels(), maskSize, &stateSize, &bufferSize),
                        getSizeName) &&
               createStateAndBuffer(stateSize, bufferSize) &&
               prepared(init(dataType(), channels(), mask.data(), maskSize, anchor(),
                             reinterpret_cast<ZmoiMorphState*>(pState.get())),
                        initName);
    }
};

// One line a type: seven operations. REG registers a function and its arguments.
#define MORPH_SRC(type) static_cast<const Zmo##type*>(morphs::src), morphs::srcStep
#define MORPH_DST(type) morphs::pDst.ptr##type(), morphs::dstStep
#define MORPH_REST(type) \
    morphs::border, morphs::borderValue<Zmo##type>, FlatMorphTest::state(), morphs::pBuffer.get()
#define MORPH_OPERATIONS(REG, ...)  \
    REG(Erode, __VA_ARGS__)         \
    REG(Dilate, __VA_ARGS__)        \
    REG(MorphOpen, __VA_ARGS__)     \
    REG(MorphClose, __VA_ARGS__)    \
    REG(MorphGradient, __VA_ARGS__) \
    REG(MorphTophat, __VA_ARGS__)   \
    REG(MorphBlackhat, __VA_ARGS__)
#define MORPH_FUNCTIONS(REG_BITS, REG) \
    MORPH_OPERATIONS(REG_BITS, 1u)     \
    MORPH_OPERATIONS(REG, 8u, 1)       \
    MORPH_OPERATIONS(REG, 8u, 3)       \
    MORPH_OPERATIONS(REG, 8u, 4)       \
    MORPH_OPERATIONS(REG, 16u, 1)      \
    MORPH_OPERATIONS(REG, 16s, 1)      \
    MORPH_OPERATIONS(REG, 32f, 1)      \
    MORPH_OPERATIONS(REG, 32f, 3)      \
    MORPH_OPERATIONS(REG, 32f, 4)

}  // namespace morphs
