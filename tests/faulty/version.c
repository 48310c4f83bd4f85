/* The version of a stand-in: texts that no real object has. */
#include "zmotypes.h"

ZMO_API const ZmoLibraryVersion* VERSION_FUNCTION(void);

const ZmoLibraryVersion* VERSION_FUNCTION(void) {
    static const ZmoLibraryVersion version = {
        7, 7, 0, "Faulty " OBJECT_NAME, "7.7.0 (stand-in)", "some day"};
    return &version;
}
