// Boundaries between the segments of a label image (zmoiBoundSegments).
#include "regions.h"
#include "zmocv.h"

namespace {

using namespace regions;

constexpr int mark = 255;

int connectivity;

// The cells of points that lie scattered over a grid, as a segmentation leaves them.
int segments(int x, int y) {
    constexpr int cell = 40;
    int label = 0;
    int nearest = std::numeric_limits<int>::max();
    for (int j = y / cell - 1; j <= y / cell + 1; ++j) {
        for (int i = x / cell - 1; i <= x / cell + 1; ++i) {
            const int dx = x - i * cell - (i * 17 + j * 31 + 64) % cell;
            const int dy = y - j * cell - (i * 23 + j * 11 + 64) % cell;
            const int distance = dx * dx + dy * dy;
            if (distance >= nearest) continue;
            nearest = distance;
            label = 1 + ((i + 1) * 7 + (j + 1) * 19) % 250;
        }
    }
    return label;
}

int greyBand(int grey) {
    return grey / 32;
}

class TimcBoundSegments : public RegionTest {
  public:
    using RegionTest::RegionTest;

  protected:
    void regOwnParms() override { regParm(Connectivity); }

    bool drawImage(ppImage& image) override {
        connectivity = Connectivity.value();
        return draw(image, segments, greyBand);
    }

    psString dataFigure() override {
        return psFormat("%.2f%% of the pixels are bounds",
                        100.0 * ppShareOf(pDst, [](double value) { return value == mark; }));
    }
};

PP_REG_I(TimcBoundSegments, zmoiBoundSegments_8u_C1IR, restoreDst(), PP_IMAGE(pDst, 8u), roi, mark,
         connectivity)
PP_REG_I(TimcBoundSegments, zmoiBoundSegments_16u_C1IR, restoreDst(), PP_IMAGE(pDst, 16u), roi,
         mark, connectivity)

}  // namespace
