#include "common/version.h"
#include "zmocv.h"

const ZmoLibraryVersion* zmocvGetVersion(void) {
    static constexpr zmo::VersionRecords records("libzmocv");
    return records.inUse();
}
