// Pixels along a line (zmoiSampleLine).
#include <algorithm>
#include <cstdlib>

#include "pp.h"
#include "zmocv.h"

namespace {

using namespace images;  // pDst is the line, one row

enum class Direction { horizontal, vertical, diagonal, slanted };

// Along a row neighbours share cache lines, down the image each pixel has its own; a slanted line
// leaves its row now and then.
psMapIterator<Direction> Line("Line", "Direction of the line",
                              {{Direction::horizontal, "horizontal"},
                               {Direction::vertical, "vertical"},
                               {Direction::diagonal, "diagonal"},
                               {Direction::slanted, "slanted"}},
                              {Direction::horizontal, Direction::vertical, Direction::diagonal,
                               Direction::slanted});

ZmoiPoint first;
ZmoiPoint last;

class TimcSampleLine : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override {
        regParm(Line);
        regCacheParm(ImageSize, pSrc);
    }

    bool createImages() override {
        setEnds(Line.value());
        return create(pSrc, ppArgSrc, 0) && create(pDst, ppArgDst, 1, {points(), 1}) &&
               ppDrawSource(pSrc);
    }

    void regArguments() override {
        regInput("pSrc", pSrc, static_cast<double>(points()) * pSrc.numChannels());
        regOutput("pDst", pDst);
    }

    double getDivisor() override { return points(); }
    psString getUnit() override { return "point"; }

    psString dataFigure() override {
        const int aside = std::min(std::abs(last.x - first.x), std::abs(last.y - first.y));
        return psFormat("%d points, %d steps aside", points(), aside);
    }

  private:
    static void setEnds(Direction direction) {
        const int right = roi.width - 1;
        const int below = roi.height - 1;
        const int corner = std::min(right, below);
        switch (direction) {
            case Direction::horizontal:
                first = {0, below / 2};
                last = {right, below / 2};
                break;
            case Direction::vertical:
                first = {right / 2, 0};
                last = {right / 2, below};
                break;
            case Direction::diagonal:
                first = {0, 0};
                last = {corner, corner};
                break;
            case Direction::slanted:
                first = {0, below};
                last = {right, below / 2};
                break;
        }
    }

    static int points() {
        return std::max(std::abs(last.x - first.x), std::abs(last.y - first.y)) + 1;
    }
};

#define REG_SAMPLE_LINE(type)                                                                   \
    PP_REG(TimcSampleLine, zmoiSampleLine_##type##_C1R, PP_IMAGE(pSrc, type), pDst.ptr##type(), \
           roi, first, last)                                                                    \
    PP_REG(TimcSampleLine, zmoiSampleLine_##type##_C3R, PP_IMAGE(pSrc, type), pDst.ptr##type(), \
           roi, first, last)

REG_SAMPLE_LINE(8u)
REG_SAMPLE_LINE(16u)
REG_SAMPLE_LINE(32f)

}  // namespace
