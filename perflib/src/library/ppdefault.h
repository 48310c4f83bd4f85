// Parameters and name tables that all tests of library functions share.
#pragma once

#include "psiterator.h"

// The scale factors of the Sfs functions; they have a column of their own.
class ppScaleIterator : public psIterator<int> {
  public:
    using psIterator<int>::psIterator;

    static constexpr int scaleColumn = 8;
    int colmIndex() const override { return scaleColumn; }
};

// Name tables of the library's enumerated arguments, in the order of their values.
inline constexpr const char* ppRandomFillNames[] = {"zero", "near", "finan", "accur"};
inline constexpr const char* ppHintNames[] = {"none", "fast", "accurate"};
inline constexpr const char* ppCompareNames[] = {"LT", "LE", "EQ", "GE", "GT"};
inline constexpr const char* ppNormalizationNames[] = {"divFwdByN", "divInvByN", "divBySqrtN",
                                                       "nodivByAny"};
