/* Signals of the ZMO library. The conventions stand in zmotypes.h. */
#ifndef ZMOS_H
#define ZMOS_H

#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The version of libzmos. The record lives as long as the library; its text follows the processor
 * level with each call. */
ZMO_API const ZmoLibraryVersion* zmosGetVersion(void);

#ifdef __cplusplus
}
#endif

#endif
