// Base of the tests of morphology: one image becomes another by way of a structuring element.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "bordered.h"
#include "zmocv.h"

namespace morphs {

using namespace bordered;

inline psMapIterator<int> Shape("Shape", "Shape of the mask", {{0, "rect"}, {1, "ellipse"}},
                                {0, 1});

// Less than the unit square, so that an ellipse of 3x3 has no corners.
constexpr double roundness = 0.81;

// 1u: the region's first pixel, and the same of the destination.
constexpr int bitOffset = 3;

class MorphTest : public BorderedTest {
  public:
    using BorderedTest::BorderedTest;

  protected:
    virtual bool prepareState(const std::vector<Zmo8u>& mask) = 0;

    void regMaskParms() override {
        regParm(MaskSize);
        regParm(Shape);
    }

    bool prepare() override { return prepareState(drawMask()); }

    // Comparisons, and sums of grey-level elements, of the definition.
    double flopsOfElement() const override {
        return static_cast<double>(MaskSize.value().width) * MaskSize.value().height;
    }

    psString dataFigure() override {
        const ZmoiSize more = around();
        const int first = elementOf(more.width);
        double changed = 0;
        ppForEachPixel({pDst.width(), pDst.height()}, [&](int x, int y) {
            changed += pDst.getImageAt(x, y, 0) != pSrc.getImageAt(x + first, y + more.height, 0);
        });
        return psFormat("%.2f%% of the %s changed", 100.0 * changed / pDst.width() / pDst.height(),
                        isBits() ? "bytes" : "pixels");
    }

    bool isBits() const { return func().contains("_1u_"); }
    ZmoDataType dataType() const { return isBits() ? zmo1u : srcType(); }

    // In memory, compound operations look two masks around the region. The margin is a multiple of
    // 8, for 1u.
    ZmoiSize margin() const override {
        const ZmoiSize mask = MaskSize.value();
        const int side = (2 * std::max(mask.width, mask.height) + 7) / 8 * 8;
        return {side, side};
    }
    int elements(int pixels) const override {
        return isBits() ? (bitOffset + pixels + 7) / 8 : pixels;
    }
    int elementOf(int x) const override { return isBits() ? x / 8 : x; }
    bool drawSource() override {
        if (isBits()) return drawBits();
        // Differences of 16s stay within its range.
        if (pSrc.type() == pp16s && !ppPictureGiven()) return pSrc.setRandom(-16384, 16383);
        return BorderedTest::drawSource();
    }

  private:
    // A picture's bright pixels; else bands with gaps and scattered specks: noise alone would leave
    // no pixel after an erosion.
    static bool drawBits() {
        if (ppPictureGiven()) return drawBrightPixels();
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

    static bool drawBrightPixels() {
        ppImage grey(pp8u, 1, false);
        if (!grey.createImage(8 * pSrc.width(), pSrc.height()) || !ppDrawPicture(grey))
            return false;
        for (int y = 0; y < pSrc.height(); ++y) {
            const auto* const from = static_cast<const unsigned char*>(grey.getRowPointer(y));
            auto* const to = static_cast<unsigned char*>(pSrc.getRowPointer(y));
            for (int bit = 0; bit < 8 * pSrc.width(); ++bit) {
                to[bit / 8] = static_cast<unsigned char>(2 * to[bit / 8] + (from[bit] >> 7));
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

  protected:
    template <class Size, class GetSize, class Init>
    bool prepareFlat(const std::vector<Zmo8u>& mask, Size size, const GetSize& getSize,
                     const Init& init) {
        const Size maskSize{MaskSize.value().width, MaskSize.value().height};
        return createBuffersBy(pState, pBuffer, getSize, size, dataType(), channels(), maskSize) &&
               prepared(init, dataType(), channels(), mask.data(), maskSize, anchor(),
                        state<ZmoiMorphState>());
    }
};

// One line a type: seven operations. REG registers a function and its arguments.
#define MORPH_REST(type) \
    BORDERED_BORDER(type), images::state<ZmoiMorphState>(), images::pBuffer.get()
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
