/* Computer vision. The conventions stand in zmotypes.h. */
#ifndef ZMOCV_H
#define ZMOCV_H

#include "zmocv_arith.h"
#include "zmocv_corner.h"
#include "zmocv_distance.h"
#include "zmocv_edge.h"
#include "zmocv_inpaint.h"
#include "zmocv_integral.h"
#include "zmocv_lens.h"
#include "zmocv_morph.h"
#include "zmocv_motion.h"
#include "zmocv_norm.h"
#include "zmocv_region.h"
#include "zmocv_sample.h"
#include "zmocv_segment.h"
#include "zmocv_shape.h"
#include "zmocv_stat.h"
#include "zmotypes.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The version of libzmocv. The record lives as long as the library; its text follows the processor
 * level with each call. */
ZMO_API const ZmoLibraryVersion* zmocvGetVersion(void);

#ifdef __cplusplus
}
#endif

#endif
