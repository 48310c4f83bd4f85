// Not compiled but for its one error: a function that no header declares. A prototype of the
// module's own is as good as a header's.
#include "pp.h"

extern "C" ZmoStatus zmoiOwn_8u_C1R(const Zmo8u* pSrc, int srcStep) noexcept;

namespace {

class TimcOwn : public ppTest {
  public:
    using ppTest::ppTest;
};

ppImage pSrc;

PP_SERVICE(zmoiOwn_8u_C1R);
PP_REG(TimcOwn, zmoiOwn_8u_C1R, pSrc.ptr8u(), pSrc.step())
PP_REG_I(TimcOwn, zmoiNobodys_8u_C1R, pSrc.setReservedCopy(), pSrc.ptr8u(), pSrc.step())

}  // namespace
