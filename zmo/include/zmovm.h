/* Vector mathematics of the ZMO library. The conventions stand in zmotypes.h. */
#ifndef ZMOVM_H
#define ZMOVM_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The version of libzmovm. The record lives as long as the library; its text follows the processor
 * level with each call. */
ZMO_API const ZmoLibraryVersion* zmovmGetVersion(void);

#ifdef __cplusplus
}
#endif

#endif
