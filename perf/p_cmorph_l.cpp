// Flat morphology of large images (zmoiErode_L, …, zmoiMorphBlackhat_L).
#include "morphs.h"

namespace {

using namespace morphs;

PP_SERVICE(zmoiMorphGetSize_L);
PP_SERVICE(zmoiMorphInit_L);

class TimcMorphL : public FlatMorphTest {
  public:
    using FlatMorphTest::FlatMorphTest;

  protected:
    bool prepareState(const std::vector<Zmo8u>& mask) override {
        return prepareFlat(mask, roiL, lib_zmoiMorphGetSize_L, lib_zmoiMorphInit_L);
    }
};

#define REG_BITS(name, type)                                                     \
    PP_REG(TimcMorphL, zmoi##name##_##type##_C1R_L, BORDERED_SRC(8u), bitOffset, \
           PP_IMAGE(pDst, 8u), bitOffset, roiL, MORPH_REST(8u))
#define REG(name, type, channels)                                                  \
    PP_REG(TimcMorphL, zmoi##name##_##type##_C##channels##R_L, BORDERED_SRC(type), \
           PP_IMAGE(pDst, type), roiL, MORPH_REST(type))

MORPH_FUNCTIONS(REG_BITS, REG)

}  // namespace
