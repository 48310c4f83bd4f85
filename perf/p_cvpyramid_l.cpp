// Layers of a Gaussian pyramid of large images (zmoiPyramidLayerDown_L, zmoiPyramidLayerUp_L).
#include "pyramids.h"

namespace {

using namespace filters;

PP_SERVICE(zmoiPyramidGetSize_L);
PP_SERVICE(zmoiPyramidInit_L);

class TimcvPyramidL : public PyramidTest {
  public:
    using PyramidTest::PyramidTest;

  protected:
    bool prepare() override {
        return preparePyramid(isDown() ? srcRoiL : roiL, lib_zmoiPyramidGetSize_L,
                              lib_zmoiPyramidInit_L);
    }
};

#define REG_LAYER(Way, type, channels)                                                             \
    PP_REG_X(TimcvPyramidL, zmoiPyramidLayer##Way##_##type##_C##channels##R_L, BORDERED_SRC(type), \
             srcRoiL, PP_IMAGE(pDst, type), roiL, state<ZmoiPyramidState>(), pBuffer.get())

REG_LAYER(Down, 32f, 1)
REG_LAYER(Up, 32f, 1)

}  // namespace
