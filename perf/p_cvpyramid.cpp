// Layers of a Gaussian pyramid (zmoiPyramidLayerDown, zmoiPyramidLayerUp).
#include "pyramids.h"

namespace {

using namespace filters;

PP_SERVICE(zmoiPyramidGetSize);
PP_SERVICE(zmoiPyramidInit);

class TimcvPyramid : public PyramidTest {
  public:
    using PyramidTest::PyramidTest;

  protected:
    bool prepare() override {
        return preparePyramid(isDown() ? srcRoi : roi, lib_zmoiPyramidGetSize, lib_zmoiPyramidInit);
    }
};

#define REG_LAYER(Way, type, channels)                                                          \
    PP_REG_X(TimcvPyramid, zmoiPyramidLayer##Way##_##type##_C##channels##R, BORDERED_SRC(type), \
             srcRoi, PP_IMAGE(pDst, type), roi, state<ZmoiPyramidState>(), pBuffer.get())

REG_LAYER(Down, 8u, 1)
REG_LAYER(Down, 8u, 3)
REG_LAYER(Down, 16u, 1)
REG_LAYER(Down, 16u, 3)
REG_LAYER(Down, 32f, 1)
REG_LAYER(Down, 32f, 3)
REG_LAYER(Up, 8u, 1)
REG_LAYER(Up, 8u, 3)
REG_LAYER(Up, 16u, 1)
REG_LAYER(Up, 16u, 3)
REG_LAYER(Up, 32f, 1)
REG_LAYER(Up, 32f, 3)

}  // namespace
