// Segments that grow from markers, over a relief or over colours (zmoiSegmentWatershed,
// zmoiSegmentGradient).
#include <cmath>

#include "regions.h"
#include "zmocv.h"

namespace {

using namespace regions;

psIterator<int> Distance("Distance", "Distance of the markers, pixels", {16, 48});
psIterator<int> Lines("Lines", "Lines between segments, 0 or 1", {0, 1});

int connectivity;
int drawLines;

PP_SERVICE(zmoiSegmentWatershedGetBufferSize);
PP_SERVICE(zmoiSegmentGradientGetBufferSize);

class TimeCVGradientSegment : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override {
        regParm(Connectivity);
        regParm(Distance);
        if (floods()) regParm(Lines);
    }

    bool createImages() override {
        if (!ppInRange(Distance, 1, std::numeric_limits<int>::max() / 2)) return false;
        connectivity = Connectivity.value();
        drawLines = floods() ? Lines.value() : 0;
        ppImage picture(pp8u, floods() ? 1 : func().srcChannels(), false);
        ppImage slope(pp32f, 1, false);
        return picture.createImage(roi.width, roi.height) && drawPicture(picture) &&
               slope.createImage(roi.width, roi.height) && drawSlope(slope, picture) &&
               drawSource(floods() ? slope : picture) && createMarkers(slope);
    }

    bool prepare() override {
        const auto& query =
            floods() ? lib_zmoiSegmentWatershedGetBufferSize : lib_zmoiSegmentGradientGetBufferSize;
        return createBufferBy(pBuffer, query, roi, srcType(), pSrc.numChannels());
    }

    psString dataFigure() override {
        const double most = func().dstType() == pp8u ? 255 : 65535;
        const double lines =
            drawLines != 0 ? ppShareOf(pDst, [&](double label) { return label == most; }) : 0;
        const double labelled = ppShareOf(pDst, [](double label) { return label != 0; });
        return psFormat("%.2f%% of the pixels are segments of %d markers, %.2f%% are lines",
                        100.0 * (labelled - lines), m_markers, 100.0 * lines);
    }

  private:
    bool floods() const { return named("Watershed"); }

    // Discs of several shades on a ground that gets darker, with some noise.
    static bool drawPicture(ppImage& image) {
        if (ppPictureGiven()) return ppDrawSource(image);
        if (!image.setRandom(0, 9)) return false;
        ppDrawBy(image, [&](int x, int y, int c) {
            const int shade = 40 * ((x / discCell + 2 * (y / discCell)) % 4);
            const int base = discs(x, y) != 0 ? 60 + shade : 40 - 30 * y / roi.height;
            return base + 20 * c + image.getImageAt(x, y, c);
        });
        return true;
    }

    // The steepness of the first channel.
    static bool drawSlope(ppImage& slope, const ppImage& picture) {
        const auto at = [&](int x, int y) {
            return picture.getImageAt(std::clamp(x, 0, roi.width - 1),
                                      std::clamp(y, 0, roi.height - 1), 0);
        };
        ppDrawBy(slope, [&](int x, int y) {
            const double dx = at(x + 1, y) - at(x - 1, y);
            const double dy = at(x, y + 1) - at(x, y - 1);
            return std::min(255.0, std::hypot(dx, dy));
        });
        return true;
    }

    bool drawSource(const ppImage& from) const {
        if (!create(pSrc, ppArgSrc, 0)) return false;
        ppDrawBy(pSrc, [&](int x, int y, int c) { return from.getImageAt(x, y, c); });
        return true;
    }

    // One marker in each cell of a grid, where the picture is flattest. Labels start anew after
    // 250: neighbours still differ.
    bool createMarkers(const ppImage& slope) {
        if (!create(pDst, func().dstType(), 1)) return false;
        m_markers = 0;
        const int cell = Distance.value();
        for (int y = 0; y < roi.height; y += cell) {
            for (int x = 0; x < roi.width; x += cell) {
                const ZmoiPoint at = flattest(slope, x, y, cell);
                pDst.setImageAt(at.x, at.y, 0, 1 + m_markers++ % 250);
            }
        }
        return pDst.reserveCopy() != 0;
    }

    static ZmoiPoint flattest(const ppImage& slope, int left, int top, int cell) {
        ZmoiPoint best{left, top};
        for (int y = top; y < std::min(top + cell, roi.height); ++y) {
            for (int x = left; x < std::min(left + cell, roi.width); ++x) {
                if (slope.getImageAt(x, y, 0) < slope.getImageAt(best.x, best.y, 0)) best = {x, y};
            }
        }
        return best;
    }

    int m_markers = 0;
};

// The tag has no I, and yet the segments grow in place.
#define REG_GRADIENT(channels)                                                                 \
    PP_REG_X_INIT(TimeCVGradientSegment, zmoiSegmentGradient_8u_C##channels##IR, restoreDst(), \
                  PP_IMAGE(pSrc, 8u), PP_IMAGE(pDst, 8u), roi, connectivity, pBuffer.get())
#define REG_WATERSHED(types, from, to)                                                      \
    PP_REG_X_INIT(TimeCVGradientSegment, zmoiSegmentWatershed_##types##_C1IR, restoreDst(), \
                  PP_IMAGE(pSrc, from), PP_IMAGE(pDst, to), roi, connectivity, drawLines,   \
                  pBuffer.get())

REG_GRADIENT(1)
REG_GRADIENT(3)
REG_WATERSHED(8u, 8u, 8u)
REG_WATERSHED(8u16u, 8u, 16u)
REG_WATERSHED(32f16u, 32f, 16u)

}  // namespace
