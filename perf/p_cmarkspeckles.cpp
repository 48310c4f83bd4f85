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

// Slanted planes with steps between them; on them lie small squares and single pixels of other values.
int disparity(int x, int y) {
    const int plane = 40 + 30 * (x / 160 + y / 120) % 90 + (x % 160 + y % 120) / 8;
    const bool square = x % 29 < 3 && y % 31 < 4;
    const bool dot = (x * 7 + y * 13) % 101 == 0;
    return square || dot ? 255 - plane : plane;
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

    bool createBuffer() override {
        return createBufferBy(pBuffer, lib_zmoiMarkSpecklesGetBufferSize, roi, dataType(), 1);
    }

    psString dataFigure() override {
        return psFormat("%.2f%% of the pixels are marked",
                        100.0 * ppShareOf(pDst, [](double value) { return value == mark; }));
    }
};

#define REG_MARK_SPECKLES(type)                                                                  \
    PP_REG_I(TimcMarkSpeckles, zmoiMarkSpeckles_##type##_C1IR, restoreImage(), pDst.ptr##type(), \
             dstStep, roi, mark, maxSize, maxDiff, connectivity, pBuffer.get())

REG_MARK_SPECKLES(8u)
REG_MARK_SPECKLES(16u)
REG_MARK_SPECKLES(16s)
REG_MARK_SPECKLES(32f)

}  // namespace
