#include "common/version.h"
#include "zmocore.h"

const ZmoLibraryVersion* zmocoreGetVersion(void) {
    static constexpr zmo::VersionRecords records("libzmocore");
    return records.inUse();
}
