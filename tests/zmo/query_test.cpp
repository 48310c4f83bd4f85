// Queries of the usual shape: the bytes that a work buffer needs for a region, a type and channels.
#include "case.h"
#include "zmocv.h"

namespace {

TEST(Query, BadArguments) {
    const struct {
        kit::Function query;
        ZmoDataType type;
        ZmoDataType unknown;
        int channels = 1;
    } rows[] = {{ZMO(zmoiFastNGetBufferSize), zmo8u, zmo16u},
                {ZMO(zmoiFloodFillGetBufferSize), zmo8u, zmo16u},
                {ZMO(zmoiLabelMarkersGetBufferSize), zmo16u, zmo64f},
                {ZMO(zmoiMarkSpecklesGetBufferSize), zmo32f, zmo64f},
                {ZMO(zmoiMorphReconstructGetBufferSize), zmo64f, zmo16s},
                {ZMO(zmoiTrueDistanceTransformGetBufferSize), zmo8u, zmo16u},
                {ZMO(zmoiFastMarchingGetBufferSize), zmo8u, zmo16u},
                {ZMO(zmoiSegmentWatershedGetBufferSize), zmo32f, zmo16s},
                {ZMO(zmoiSegmentGradientGetBufferSize), zmo8u, zmo16s, 3},
                {ZMO(zmoiInpaintGetBufferSize), zmo8u, zmo16s, 3},
                {ZMO(zmoiUndistortRadialGetBufferSize), zmo16u, zmo16s, 3}};
    for (const auto& row : rows) {
        kit::Case(row.query)
            .with({{"type", row.type}, {"channels", row.channels}})
            .expectBadArguments({{"type", row.unknown, zmoStsDataTypeErr},
                                 {"channels", row.channels == 1 ? 3 : 4, zmoStsChannelsErr}});
    }
}

}  // namespace
