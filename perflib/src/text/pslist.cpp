#include "pslist.h"

#include "psstring.h"

int psObject::objectSize() const {
    return 0;
}

psString psObject::objectInfo() const {
    return {};
}

int psObject::reserveCopy() {
    return 0;
}

int psObject::setReservedCopy() {
    return 0;
}

void psObject::deleteReservedCopy() {}
