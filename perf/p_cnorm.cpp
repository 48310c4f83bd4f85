// Norms of an image, of a difference, and relative ones, under a mask (zmoiNorm, zmoiNormDiff,
// zmoiNormRel).
#include "masked.h"
#include "zmocv.h"

namespace {

using namespace masked;

Zmo64f norm;

class TimcNorm : public MaskedTest {
  public:
    using MaskedTest::MaskedTest;

  protected:
    bool hasSecondSource() const override { return isRelative() || named("NormDiff"); }

    void regArguments() override {
        MaskedTest::regArguments();
        regOutput("norm", &norm);
    }

    // One addition or comparison, one product more for L2; the difference; the second image's norm.
    double flopsOfElement() const override {
        const int ofOne = func().baseName().contains("_L2") ? 2 : 1;
        return ofOne + (hasSecondSource() ? 1 : 0) + (isRelative() ? ofOne : 0);
    }

  private:
    bool isRelative() const { return named("NormRel"); }
};

// The functions of one norm and element type.
#define REG_NORM(kind, type)                                                                      \
    PP_REG(TimcNorm, zmoiNorm_##kind##_##type##_C1MR, PP_IMAGE(pSrc, type), PP_IMAGE(pMask, 8u),  \
           roi, &norm)                                                                            \
    PP_REG(TimcNorm, zmoiNorm_##kind##_##type##_C3CMR, PP_IMAGE(pSrc, type), PP_IMAGE(pMask, 8u), \
           roi, coi, &norm)                                                                       \
    REG_NORM_OF_TWO(NormDiff_##kind##_##type, type)                                               \
    REG_NORM_OF_TWO(NormRel_##kind##_##type, type)
#define REG_NORM_OF_TWO(name, type)                                                   \
    PP_REG(TimcNorm, zmoi##name##_C1MR, PP_IMAGE(pSrc, type), PP_IMAGE(pSrc2, type),  \
           PP_IMAGE(pMask, 8u), roi, &norm)                                           \
    PP_REG(TimcNorm, zmoi##name##_C3CMR, PP_IMAGE(pSrc, type), PP_IMAGE(pSrc2, type), \
           PP_IMAGE(pMask, 8u), roi, coi, &norm)

REG_NORM(Inf, 8u)
REG_NORM(Inf, 16u)
REG_NORM(Inf, 32f)
REG_NORM(L1, 8u)
REG_NORM(L1, 16u)
REG_NORM(L1, 32f)
REG_NORM(L2, 8u)
REG_NORM(L2, 16u)
REG_NORM(L2, 32f)

}  // namespace
