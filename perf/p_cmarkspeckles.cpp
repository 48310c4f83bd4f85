// Small blobs that differ from what is around them (zmoiMarkSpeckles), as in maps of disparity.
#include "regions.h"
#include "zmocv.h"

namespace {

using namespace regions;

psIterator<int> SpeckleSize("MaxSize", "Largest speckle, pixels", {20, 200});

constexpr int mark = 0;
constexpr int maxDiff = 4;

int maxSize;
int connectivity;

PP_SERVICE(zmoiMarkSpecklesGetBufferSize);

// Blobs at equal distances, in every other place two that touch at a corner.
struct Blobs {
    ZmoiSize distance;
    ZmoiSize size;

    bool at(int x, int y) const {
        const int dx = x % distance.width;
        const int dy = y % distance.height;
        const bool pair = (x / distance.width + y / distance.height) % 2 == 0;
        return (dx < size.width && dy < size.height) ||
               (pair && dx / size.width == 1 && dy / size.height == 1);
    }
};

// One of the smaller, or one of the larger, blobs is a speckle of its limit; two are more than that
// to eight neighbours.
constexpr Blobs smaller{{29, 31}, {3, 4}};
constexpr Blobs larger{{81, 91}, {12, 10}};

// Slanted planes with steps between them; on them lie blobs and single pixels of other values.
int disparity(int x, int y) {
    const int plane = 40 + 30 * (x / 160 + y / 120) % 90 + (x % 160 + y % 120) / 8;
    const bool dot = (x * 7 + y * 13) % 101 == 0;
    return dot || smaller.at(x, y) || larger.at(x + 60, y + 70) ? 255 - plane : plane;
}

class TimcMarkSpeckles : public RegionTest {
  public:
    using RegionTest::RegionTest;

  protected:
    void regOwnParms() override {
        regParm(SpeckleSize);
        regParm(Connectivity);
    }

    bool drawImage(ppImage& image) override {
        maxSize = SpeckleSize.value();
        connectivity = Connectivity.value();
        return draw(image, disparity, greyItself);
    }

    bool prepare() override {
        return createBufferBy(pBuffer, lib_zmoiMarkSpecklesGetBufferSize, roi, srcType(), 1);
    }

    psString dataFigure() override {
        return psFormat("%.2f%% of the pixels are marked",
                        100.0 * ppShareOf(pDst, [](double value) { return value == mark; }));
    }
};

#define REG_MARK_SPECKLES(type)                                                                    \
    PP_REG_I(TimcMarkSpeckles, zmoiMarkSpeckles_##type##_C1IR, restoreDst(), PP_IMAGE(pDst, type), \
             roi, mark, maxSize, maxDiff, connectivity, pBuffer.get())

REG_MARK_SPECKLES(8u)
REG_MARK_SPECKLES(16u)
REG_MARK_SPECKLES(16s)
REG_MARK_SPECKLES(32f)

}  // namespace
