// Filters with any row and column kernel (zmoiFilterSeparable).
#include <vector>

#include "filters.h"
#include "zmoi.h"

namespace {

using namespace filters;

PP_SERVICE(zmoiFilterSeparableGetSize_L);
PP_SERVICE(zmoiFilterSeparableInit_16s_L);
PP_SERVICE(zmoiFilterSeparableInit_32f_L);

class TimFilterBorder : public FilterTest {
  public:
    using FilterTest::FilterTest;

  protected:
    ZmoiSize margin() const override { return MaskSize.value(); }
    double flopsOfElement() const override {
        return 2.0 * (MaskSize.value().width + MaskSize.value().height) - 2;
    }

    bool prepare() override {
        return createBuffersBy(pState, pBuffer, lib_zmoiFilterSeparableGetSize_L, roiL,
                               MaskSize.value(), srcType(), dstType(), channels()) &&
               (func().srcType() == pp32f ? initFloats() : initIntegers());
    }

  private:
    bool initFloats() {
        const std::vector<Zmo16s> row = tent(MaskSize.value().width);
        const std::vector<Zmo16s> column = tent(MaskSize.value().height);
        const std::vector<Zmo32f> rowKernel(row.begin(), row.end());
        std::vector<Zmo32f> columnKernel(column.begin(), column.end());
        for (Zmo32f& weight : columnKernel) weight /= static_cast<Zmo32f>(sum(row) * sum(column));
        return prepared(lib_zmoiFilterSeparableInit_32f_L, rowKernel.data(), columnKernel.data(),
                        MaskSize.value(), centre(), channels(), state<ZmoiSeparableState>());
    }

    bool initIntegers() {
        const std::vector<Zmo16s> row = tent(MaskSize.value().width);
        const std::vector<Zmo16s> column = tent(MaskSize.value().height);
        return prepared(lib_zmoiFilterSeparableInit_16s_L, row.data(), column.data(),
                        MaskSize.value(), centre(), sum(row) * sum(column), srcType(), dstType(),
                        channels(), state<ZmoiSeparableState>());
    }

    static ZmoiPoint centre() { return {MaskSize.value().width / 2, MaskSize.value().height / 2}; }
};

#define REG_SEPARABLE(types, T, D, channels)                                                 \
    PP_REG(TimFilterBorder, zmoiFilterSeparable_##types##_C##channels##R_L, BORDERED_SRC(T), \
           PP_IMAGE(pDst, D), roiL, BORDERED_BORDER(T), state<ZmoiSeparableState>(),         \
           pBuffer.get())
#define REG_SEPARABLES(types, T, D) \
    REG_SEPARABLE(types, T, D, 1)   \
    REG_SEPARABLE(types, T, D, 3)   \
    REG_SEPARABLE(types, T, D, 4)

REG_SEPARABLES(8u, 8u, 8u)
REG_SEPARABLES(8u16s, 8u, 16s)
REG_SEPARABLES(16s, 16s, 16s)
REG_SEPARABLES(16u, 16u, 16u)
REG_SEPARABLES(32f, 32f, 32f)

}  // namespace
