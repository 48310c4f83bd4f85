/* Types, records, status codes and conventions of the ZMO library.
 *
 * The library consists of five shared objects with a header each: zmocore.h (set-up, processor
 * levels, clocks), zmovm.h (vector mathematics), zmos.h (signals), zmoi.h (images) and zmocv.h
 * (computer vision). All headers are C99 and include this one.
 *
 * Conventions. The headers refer to them by number.
 *
 *  1. Names and values. A function name ends in its element types and a descriptor: source type,
 *     then destination type where it differs (8u16s), C1, C3 or C4 for the channels, M for a mask,
 *     I for "in place", R for "works on a region". Records and scalars are passed by value, results
 *     come back through pointers. Functions return ZmoStatus unless they are documented otherwise.
 *  2. Argument order. Sources, mask, destinations, region, channel of interest, the function's own
 *     values, results, border type and border value, state, work buffer, scale factor. What a
 *     function does not have leaves no gap. Every image pointer is followed by its step. Where the
 *     source has a region of its own, srcRoi follows the source's step and roi is the
 *     destination's.
 *  3. Images. A step is the distance from row to row in bytes; it is positive, a multiple of the
 *     element size and at least as long as a row of the region. A region counts pixels, and the
 *     image pointer addresses the region's first pixel. Bytes between the end of a row and the next
 *     row are neither read nor written.
 *  4. Large images. A function whose name ends in _L takes the same list with ZmoiSizeL, int64_t
 *     steps and int64_t sizes, and so do its service functions.
 *  5. Addresses. Pointers to image data may lie on any byte. Source and destination do not overlap,
 *     except that pSrcDst is both.
 *  6. Checks. Arguments are checked in this order: null pointers, sizes, steps, the function's own
 *     values in argument order, state, work buffer. The first check that fails decides the status,
 *     and nothing is written. The library allocates no memory; work memory comes from the caller,
 *     and every size that a query asks for is at least 64 bytes.
 *  7. Status. 0 is success, a positive number is a note (the result is valid), a negative number is
 *     an error (nothing was done). zmoGetStatusString has a text for each.
 *  8. States and buffers. A state is an opaque record in the caller's memory; it may be moved, it
 *     remembers its element type and channels, and functions check both. zmoi<Family>GetSize
 *     reports the sizes of state and buffer, zmoi<Family>Init... fills the state. Functions take a
 *     state as const unless they learn. Functions without a state have zmoi<Base>GetBufferSize(roi,
 *     ..., type, channels, pSize); type is the element type of the source.
 *  9. ZmoDataType names element types; the number of channels is 1, 3 or 4.
 * 10. Borders. zmoiBorderReplicate repeats the edge pixel (a a | a b c); zmoiBorderConst uses the
 *     border value, one element a channel; zmoiBorderMirror reflects without repeating the edge
 *     pixel (c b | a b c), again and again until the coordinate lies inside, and a side of one
 *     pixel always gives that pixel; zmoiBorderInMem reads the memory around the region, which must
 *     be readable as far as the function's window reaches. The pointer to the border value may be
 *     null for all types but zmoiBorderConst. A compound function applies the border anew to the
 *     input of each of its passes.
 * 11. Masks. A mask is an 8u image of one byte a pixel, whatever the channels of the image;
 *     non-zero selects the pixel. When nothing is selected, results are 0 and the status is
 *     zmoStsEmptyMask. A channel of interest counts from 1.
 * 12. 1u images. Eight pixels a byte, the most significant bit first; a bit offset of 0 to 7
 *     follows the step. Bits outside the region keep their value.
 * 13. Rounding. Results to integers are rounded half to even, then saturated; NaN becomes 0. A
 *     function with a scale factor (Sfs) multiplies its result with 2 to the power of -scaleFactor
 *     first; the factor lies between -31 and 31.
 * 14. The same bits everywhere. All processor levels give identical results. Sums of floating-point
 *     values run in 8 lanes, by column modulo 8; the lanes are folded pairwise and the totals of
 *     the rows are added in their order. Sums of integers are exact in 64 bits. Minimum and maximum
 *     are a < b ? a : b and a < b ? b : a. With NaN in the input the result may be anything, but it
 *     is the same at all levels.
 * 15. Floating-point state. The library leaves rounding modes and masks alone, and on ordinary data
 *     (finite, neither huge nor denormal) raises no flag but "inexact".
 * 16. Threads. All functions may be called from several threads at once, except zmoInit,
 *     zmoSetCpuFeatures and zmoSetNumThreads, which change the whole process and must not run
 *     beside any other call.
 */
#ifndef ZMOTYPES_H
#define ZMOTYPES_H

#include <stdint.h>

#define ZMO_API __attribute__((visibility("default")))

/* In C++ the enumerations have int as underlying type: every int that a C caller may pass is then
 * a value of the enumeration and can be checked. */
#ifdef __cplusplus
#define ZMO_ENUM_BASE : int
#else
#define ZMO_ENUM_BASE
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef uint8_t Zmo8u;
typedef int8_t Zmo8s;
typedef uint16_t Zmo16u;
typedef int16_t Zmo16s;
typedef uint32_t Zmo32u;
typedef int32_t Zmo32s;
typedef unsigned long long Zmo64u;
typedef long long Zmo64s;
typedef float Zmo32f;
typedef double Zmo64f;

typedef int ZmoStatus;

enum _ZmoStatusCode ZMO_ENUM_BASE {
    zmoStsNoErr = 0,

    zmoStsDivByZero = 1, /* a quotient of the result had a zero divisor */
    zmoStsEmptyMask = 2, /* the mask selects no pixel */
    zmoStsNoLevel = 3,   /* no processor level lies inside the mask, the baseline is in use */
    zmoStsTruncated = 4, /* the list is full, further results were dropped */

    zmoStsUnavailable = -2,      /* the operation is not available here */
    zmoStsNullPtrErr = -3,       /* a pointer is null */
    zmoStsSizeErr = -4,          /* a side of a region is zero or negative */
    zmoStsStepErr = -5,          /* a step is too short or no multiple of the element size */
    zmoStsRangeErr = -6,         /* a value is outside its range */
    zmoStsMaskSizeErr = -7,      /* unsupported size of a filter mask */
    zmoStsAnchorErr = -8,        /* an anchor lies outside its mask */
    zmoStsBorderErr = -9,        /* unknown border type */
    zmoStsNormErr = -10,         /* unknown norm */
    zmoStsCoiErr = -11,          /* the channel of interest does not exist */
    zmoStsScaleErr = -12,        /* a scale factor is outside -31..31 */
    zmoStsThresholdErr = -13,    /* a threshold is negative, not a number, or above its partner */
    zmoStsPointErr = -14,        /* a point lies outside its region */
    zmoStsRectErr = -15,         /* a rectangle is empty or lies outside */
    zmoStsConnectivityErr = -16, /* a connectivity is neither 4 nor 8 */
    zmoStsFlagErr = -17,         /* unknown flag */
    zmoStsStateErr = -18,        /* the state was not initialised for this function */
    zmoStsDataTypeErr = -19,     /* unsupported element type */
    zmoStsChannelsErr = -20,     /* unsupported number of channels */
    zmoStsCpuFeaturesErr = -21,  /* the mask holds features that the processor lacks */
    zmoStsTooLargeErr = -22      /* a size does not fit its type */
};

typedef enum _ZmoDataType ZMO_ENUM_BASE {
    zmo8u = 1,
    zmo8s = 3,
    zmo16u = 5,
    zmo16s = 7,
    zmo32u = 9,
    zmo32s = 11,
    zmo32f = 13,
    zmo64u = 15,
    zmo64s = 17,
    zmo64f = 19,
    zmo1u = 21
} ZmoDataType;

typedef enum _ZmoNormType ZMO_ENUM_BASE { zmoNormInf, zmoNormL1, zmoNormL2 } ZmoNormType;

/* Size of a gradient: |dx| + |dy| or sqrt(dx*dx + dy*dy). */
typedef enum _ZmoiNorm ZMO_ENUM_BASE { zmoiNormL1, zmoiNormL2 } ZmoiNorm;

typedef enum _ZmoiBorderType ZMO_ENUM_BASE {
    zmoiBorderReplicate,
    zmoiBorderConst,
    zmoiBorderMirror,
    zmoiBorderInMem
} ZmoiBorderType;

typedef enum _ZmoiMaskSize ZMO_ENUM_BASE { zmoiMask3x3 = 3, zmoiMask5x5 = 5 } ZmoiMaskSize;

typedef enum _ZmoiKernelType ZMO_ENUM_BASE { zmoiKernelSobel, zmoiKernelScharr } ZmoiKernelType;

typedef enum _ZmoiDifferentialKernel ZMO_ENUM_BASE {
    zmoiDiffSobel,
    zmoiDiffScharr
} ZmoiDifferentialKernel;

typedef enum _ZmoiInpaintFlag ZMO_ENUM_BASE {
    zmoiInpaintMarching,
    zmoiInpaintDiffusion
} ZmoiInpaintFlag;

typedef struct {
    int width;
    int height;
} ZmoiSize;

typedef struct {
    int64_t width;
    int64_t height;
} ZmoiSizeL;

typedef struct {
    int x;
    int y;
} ZmoiPoint;

typedef struct {
    Zmo32f x;
    Zmo32f y;
} ZmoiPoint32f;

typedef struct {
    int x;
    int y;
    int width;
    int height;
} ZmoiRect;

/* A line: distance rho from the origin, angle theta of its normal in radians. */
typedef struct {
    Zmo32f rho;
    Zmo32f theta;
} ZmoiPolar;

/* A flooded area: number of pixels, bounding rectangle, value that it was filled with. */
typedef struct {
    Zmo64f area;
    ZmoiRect rect;
    Zmo64f value;
} ZmoiFloodRegion;

/* Level 0 is the full image. */
typedef struct {
    int levels;
    const void* pImage[16];
    int step[16];
    ZmoiSize roi[16];
} ZmoiPyramidLevels;

/* The text version ends with the name of the processor level in use. */
typedef struct {
    int major;
    int minor;
    int revision;
    const char* name;
    const char* version;
    const char* buildDate;
} ZmoLibraryVersion;

#ifdef __cplusplus
}
#endif

#endif
