// Flat morphology (zmoiErodeBorder, …, zmoiMorphBlackhatBorder).
#include "morphs.h"

namespace {

using namespace morphs;

PP_SERVICE(zmoiMorphGetSize);
PP_SERVICE(zmoiMorphInit);

class TimcMorph : public FlatMorphTest {
  public:
    using FlatMorphTest::FlatMorphTest;

  protected:
    bool prepareState(const std::vector<Zmo8u>& mask) override {
        return prepareFlat(mask, roi, lib_zmoiMorphGetSize, lib_zmoiMorphInit);
    }
};

#define REG_BITS(name, type)                                                        \
    PP_REG(TimcMorph, zmoi##name##Border_##type##_C1R, BORDERED_SRC(8u), bitOffset, \
           PP_IMAGE(pDst, 8u), bitOffset, roi, MORPH_REST(8u))
#define REG(name, type, channels)                                                     \
    PP_REG(TimcMorph, zmoi##name##Border_##type##_C##channels##R, BORDERED_SRC(type), \
           PP_IMAGE(pDst, type), roi, MORPH_REST(type))

MORPH_FUNCTIONS(REG_BITS, REG)

}  // namespace
