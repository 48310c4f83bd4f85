#include "common/version.h"
#include "zmoi.h"

const ZmoLibraryVersion* zmoiGetVersion(void) {
    static constexpr zmo::VersionRecords records("libzmoi");
    return records.inUse();
}
