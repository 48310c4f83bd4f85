#include "common/version.h"
#include "zmos.h"

const ZmoLibraryVersion* zmosGetVersion(void) {
    static constexpr zmo::VersionRecords records("libzmos");
    return records.inUse();
}
