// Queries of the usual shape: the bytes that a work buffer needs for a region, a type and channels.
#include "call.h"
#include "zmocv.h"

namespace {

TEST(Query, BadArguments) {
    const struct {
        const char* name;
        ZmoStatus (*query)(ZmoiSize, ZmoDataType, int, int*);
        ZmoDataType type;
        ZmoDataType unknown;
        int channels;
    } rows[] = {{"FastN", zmoiFastNGetBufferSize, zmo8u, zmo16u, 1},
                {"FloodFill", zmoiFloodFillGetBufferSize, zmo8u, zmo16u, 1},
                {"LabelMarkers", zmoiLabelMarkersGetBufferSize, zmo16u, zmo64f, 1},
                {"MarkSpeckles", zmoiMarkSpecklesGetBufferSize, zmo32f, zmo64f, 1},
                {"MorphReconstruct", zmoiMorphReconstructGetBufferSize, zmo64f, zmo16s, 1},
                {"TrueDistance", zmoiTrueDistanceTransformGetBufferSize, zmo8u, zmo16u, 1},
                {"FastMarching", zmoiFastMarchingGetBufferSize, zmo8u, zmo16u, 1},
                {"Watershed", zmoiSegmentWatershedGetBufferSize, zmo32f, zmo16s, 1},
                {"Gradient", zmoiSegmentGradientGetBufferSize, zmo8u, zmo16s, 3},
                {"Inpaint", zmoiInpaintGetBufferSize, zmo8u, zmo16s, 3},
                {"UndistortRadial", zmoiUndistortRadialGetBufferSize, zmo16u, zmo16s, 3}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        int size = -1;
        kit::expectBadArguments(row.query,
                                {{1, row.unknown, zmoStsDataTypeErr},
                                 {2, {2, row.channels == 1 ? 3 : 4}, zmoStsChannelsErr},
                                 {0, ZmoiSize{INT32_MAX, 2}, zmoStsTooLargeErr}},
                                ZmoiSize{4, 4}, row.type, row.channels, &size);
        EXPECT_GE(size, 64);
    }
}

}  // namespace
