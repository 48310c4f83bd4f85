#include "common/version.h"
#include "zmovm.h"

const ZmoLibraryVersion* zmovmGetVersion(void) {
    static constexpr zmo::VersionRecords records("libzmovm");
    return records.inUse();
}
