/* The least that a core can be: no clock readers, no register access, no features. */
#include "fault.h"
#include "zmocore.h"

ZmoStatus zmoInit(void) {
    return faultIs("init") ? zmoStsUnavailable : zmoStsNoErr;
}

ZmoStatus zmoSetCpuFeatures(Zmo64u mask) {
    (void)mask;
    return zmoStsCpuFeaturesErr;
}

const char* zmoGetStatusString(ZmoStatus status) {
    return status < 0 ? "stand-in error" : status > 0 ? "stand-in note" : "stand-in success";
}
