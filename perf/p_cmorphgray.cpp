// Grey-level morphology (zmoiGrayErodeBorder, zmoiGrayDilateBorder).
#include "morphs.h"

namespace {

using namespace morphs;

PP_SERVICE(zmoiGrayMorphGetSize);
PP_SERVICE(zmoiGrayMorphInit_8u_C1R);
PP_SERVICE(zmoiGrayMorphInit_32f_C1R);

class TimMorphGray : public MorphTest {
  public:
    using MorphTest::MorphTest;

  protected:
    // A dome; 8u values that leave a pixel out make it round.
    bool prepareState(const std::vector<Zmo8u>& mask) override {
        return createBuffersBy(pState, pBuffer, lib_zmoiGrayMorphGetSize, roi, dataType(), 1,
                               MaskSize.value()) &&
               (dataType() == zmo8u
                    ? prepared(lib_zmoiGrayMorphInit_8u_C1R, dome<Zmo32s>(mask).data(),
                               MaskSize.value(), anchor(), state<ZmoiGrayMorphState>())
                    : prepared(lib_zmoiGrayMorphInit_32f_C1R, dome<Zmo32f>(mask).data(),
                               MaskSize.value(), anchor(), state<ZmoiGrayMorphState>()));
    }

    // A comparison and a sum for each point.
    double flopsOfElement() const override { return 2 * MorphTest::flopsOfElement(); }

  private:
    template <class T>
    static std::vector<T> dome(const std::vector<Zmo8u>& mask) {
        const ZmoiSize size = MaskSize.value();
        std::vector<T> values;
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                const int fromEdge =
                    std::min(std::min(x, size.width - 1 - x), std::min(y, size.height - 1 - y));
                const bool out = mask[values.size()] == 0;
                values.push_back(static_cast<T>(out ? -1000 : 4 * fromEdge));
            }
        }
        return values;
    }
};

#define REG(name, type)                                                                   \
    PP_REG(TimMorphGray, zmoiGray##name##Border_##type##_C1R, BORDERED_SRC(type),         \
           PP_IMAGE(pDst, type), roi, BORDERED_BORDER(type), state<ZmoiGrayMorphState>(), \
           pBuffer.get())

REG(Erode, 8u)
REG(Erode, 32f)
REG(Dilate, 8u)
REG(Dilate, 32f)

}  // namespace
