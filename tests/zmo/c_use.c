/* The library as a C program uses it. Returns 0, or the number of the step that failed. */
#include <stdlib.h>

#include "zmocore.h"
#include "zmocv.h"
#include "zmoi.h"
#include "zmos.h"
#include "zmovm.h"

int zmoUseFromC(void);

static int findEdges(void) {
    static Zmo8u picture[16 * 24];
    static Zmo16s dx[16 * 24];
    static Zmo16s dy[16 * 24];
    static Zmo8u edges[16 * 24];
    const ZmoiSize roi = {24, 16};
    int size = 0;
    int cannySize = 0;
    int i = 0;
    Zmo8u* buffer = NULL;
    for (i = 0; i < 16 * 24; ++i) picture[i] = (Zmo8u)(i % 24 < 12 ? 10 : 200);
    if (zmoiFilterSobelVertBorderGetBufferSize(roi, zmoiMask3x3, zmo8u, 1, &size) != zmoStsNoErr) {
        return 1;
    }
    if (zmoiCannyGetSize(roi, &cannySize) != zmoStsNoErr) return 2;
    buffer = malloc((size_t)(cannySize > size ? cannySize : size));
    if (buffer == NULL) return 3;
    zmoiFilterSobelVertBorder_8u16s_C1R(picture, 24, dx, 48, roi, zmoiMask3x3, zmoiBorderReplicate,
                                        NULL, buffer);
    zmoiFilterSobelHorizBorder_8u16s_C1R(picture, 24, dy, 48, roi, zmoiMask3x3, zmoiBorderReplicate,
                                         NULL, buffer);
    i = zmoiCanny_16s8u_C1R(dx, 48, dy, 48, edges, 24, roi, 100, 300, zmoiNormL2, buffer);
    free(buffer);
    if (i != zmoStsNoErr) return 4;
    /* One vertical line, on the first of the two equal columns. */
    for (i = 0; i < 16 * 24; ++i) {
        if (edges[i] != (i % 24 == 11 ? 255 : 0)) return 5;
    }
    return 0;
}

int zmoUseFromC(void) {
    if (zmoInit() != zmoStsNoErr) return 10;
    if (zmovmGetVersion()->major != zmosGetVersion()->major) return 11;
    return findEdges();
}
