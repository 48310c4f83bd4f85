// Accumulation of frames and absolute differences (zmoiAdd, zmoiAddSquare, zmoiAddProduct,
// zmoiAddWeighted, zmoiAbsDiff, zmoiAbsDiffC).
#include "pp.h"
#include "zmocv.h"

namespace {

using namespace images;

constexpr Zmo32f alpha = 0.05F;
// These lie about the middle of the sources' values.
constexpr Zmo8u value8u = 128;
constexpr Zmo16u value16u = 32768;
constexpr Zmo32f value32f = 128.0F;

class TimcAdd : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override {
        if (func().mask()) regParm(Density);
    }

    bool createImages() override {
        return createSource() && createSource(pSrc2, 1) && create(pDst, ppArgDst, 2) &&
               (!func().mask() || createMask(3)) && (!func().inplace() || drawAccumulator());
    }

    double flopsOfElement() const override {
        if (named("AddWeighted")) return 3;
        return named("AddSquare") || named("AddProduct") ? 2 : 1;
    }

    psString dataFigure() override {
        const double results = 100.0 * ppShareOf(pDst, [](double value) { return value != 0; });
        if (!func().inplace()) return psFormat("%.2f%% of the results are not zero", results);
        return psFormat(
            "%.2f%% of the accumulators hold earlier frames, %.2f%% of the results are "
            "not zero",
            heldPercent(), results);
    }

  private:
    // The sums of earlier frames: calls grow them.
    static bool drawAccumulator() { return ppDrawSource(pDst, 2) && pDst.reserveCopy() != 0; }

    // The share that every timed call starts from.
    static double heldPercent() {
        const auto* row = static_cast<const char*>(pDst.getReservedData());
        double held = 0;
        for (int y = 0; y < roi.height; ++y, row += pDst.step()) {
            for (int x = 0; x < roi.width; ++x) held += ppLoad<Zmo32f>(row + 4 * x) != 0 ? 1 : 0;
        }
        return 100.0 * held / roi.width / roi.height;
    }
};

#define SRC(type) PP_IMAGE(pSrc, type)
#define SRC2(type) PP_IMAGE(pSrc2, type)
#define MASK PP_IMAGE(pMask, 8u)
#define ACC PP_IMAGE(pDst, 32f), roi

// The tag has no I, and yet accumulators grow.
#define REG_IN_PLACE(fn, ...) PP_REG_INIT(TimcAdd, fn, restoreDst(), __VA_ARGS__)
// The functions that all three types of frames have; types names frame and accumulator.
#define REG_ADD(types, type)                                                       \
    REG_IN_PLACE(zmoiAdd_##types##_C1IMR, SRC(type), MASK, ACC)                    \
    REG_IN_PLACE(zmoiAddSquare_##types##_C1IR, SRC(type), ACC)                     \
    REG_IN_PLACE(zmoiAddSquare_##types##_C1IMR, SRC(type), MASK, ACC)              \
    REG_IN_PLACE(zmoiAddProduct_##types##_C1IR, SRC(type), SRC2(type), ACC)        \
    REG_IN_PLACE(zmoiAddProduct_##types##_C1IMR, SRC(type), SRC2(type), MASK, ACC) \
    REG_IN_PLACE(zmoiAddWeighted_##types##_C1IR, SRC(type), ACC, alpha)            \
    REG_IN_PLACE(zmoiAddWeighted_##types##_C1IMR, SRC(type), MASK, ACC, alpha)
#define REG_ABS_DIFF(type)                                                                      \
    PP_REG(TimcAdd, zmoiAbsDiff_##type##_C1R, SRC(type), SRC2(type), PP_IMAGE(pDst, type), roi) \
    PP_REG(TimcAdd, zmoiAbsDiffC_##type##_C1R, SRC(type), PP_IMAGE(pDst, type), roi, value##type)

REG_IN_PLACE(zmoiAdd_8u32f_C1IR, SRC(8u), ACC)
REG_IN_PLACE(zmoiAdd_16u32f_C1IR, SRC(16u), ACC)
REG_ADD(8u32f, 8u)
REG_ADD(16u32f, 16u)
REG_ADD(32f, 32f)
PP_REG(TimcAdd, zmoiAddWeighted_32f_C1R, SRC(32f), SRC2(32f), ACC, alpha)
REG_ABS_DIFF(8u)
REG_ABS_DIFF(16u)
REG_ABS_DIFF(32f)

}  // namespace
