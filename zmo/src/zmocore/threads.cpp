#include "zmocore.h"

ZmoStatus zmoSetNumThreads(int numThreads) {
    return numThreads < 1 ? zmoStsRangeErr : zmoStsNoErr;
}

ZmoStatus zmoGetNumThreads(int* pNumThreads) {
    if (pNumThreads == nullptr) return zmoStsNullPtrErr;
    *pNumThreads = 1;
    return zmoStsNoErr;
}
