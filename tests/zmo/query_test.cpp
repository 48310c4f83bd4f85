// Queries: the bytes that a work buffer needs for a region, a type, channels and what else counts.
#include "case.h"
#include "zmocv.h"
#include "zmoi.h"

namespace {

struct Query {
    kit::Function function;
    ZmoDataType type;
    ZmoDataType unknown;
    int channels = 1;
};

void expectBadArguments(const std::vector<Query>& queries, const kit::Named& own = {},
                        std::vector<kit::Wrong> wrong = {}) {
    for (const Query& query : queries) {
        auto all = wrong;
        all.push_back({"type", query.unknown, zmoStsDataTypeErr});
        all.push_back({"channels", query.channels == 1 ? 3 : 4, zmoStsChannelsErr});
        kit::Case(query.function)
            .with(own)
            .with({{"type", query.type}, {"channels", query.channels}})
            .expectBadArguments(all);
    }
}

TEST(Query, BadArguments) {
    const kit::Wrong manyPixels{"roi", ZmoiSize{1 << 16, 1 << 15}, zmoStsTooLargeErr};
    expectBadArguments({{ZMO(zmoiFastNGetBufferSize), zmo8u, zmo16u},
                        {ZMO(zmoiFloodFillGetBufferSize), zmo8u, zmo16u},
                        {ZMO(zmoiLabelMarkersGetBufferSize), zmo16u, zmo64f},
                        {ZMO(zmoiMarkSpecklesGetBufferSize), zmo32f, zmo64f},
                        {ZMO(zmoiMorphReconstructGetBufferSize), zmo64f, zmo16s},
                        {ZMO(zmoiTrueDistanceTransformGetBufferSize), zmo8u, zmo16u},
                        {ZMO(zmoiFastMarchingGetBufferSize), zmo8u, zmo16u},
                        {ZMO(zmoiSegmentWatershedGetBufferSize), zmo32f, zmo16s},
                        {ZMO(zmoiSegmentGradientGetBufferSize), zmo8u, zmo16s, 3},
                        {ZMO(zmoiInpaintGetBufferSize), zmo8u, zmo16s, 3},
                        {ZMO(zmoiUndistortRadialGetBufferSize), zmo16u, zmo16s, 3},
                        {ZMO(zmoiPyramidGetSize_L), zmo16u, zmo64f, 3}});
    expectBadArguments({{ZMO(zmoiLineSuppressionGetBufferSize), zmo8u, zmo16u}}, {{"radius", 1}},
                       {{"radius", 16, zmoStsRangeErr}});
    expectBadArguments({{ZMO(zmoiOpticalFlowPyrLKGetBufferSize), zmo8u, zmo8s}},
                       {{"windowSize", 5}}, {{"windowSize", 6, zmoStsMaskSizeErr}});
    expectBadArguments({{ZMO(zmoiFilterGaussianGetSize_L), zmo16u, zmo64f, 3}}, {{"kernelSize", 5}},
                       {{"kernelSize", 4, zmoStsMaskSizeErr}});
    expectBadArguments({{ZMO(zmoiFGMMGetSize), zmo8u, zmo16u, 3}}, {{"maxComponents", 4}},
                       {{"maxComponents", 0, zmoStsRangeErr}, manyPixels});
    expectBadArguments({{ZMO(zmoiCannyBorderGetBufferSize), zmo8u, zmo16s}}, {{"mask", 5}},
                       {{"mask", 7, zmoStsMaskSizeErr}, manyPixels});
    expectBadArguments({{ZMO(zmoiFilterSobelVertBorderGetBufferSize), zmo8u, zmo16s},
                        {ZMO(zmoiFilterSobelHorizBorderGetBufferSize), zmo8u, zmo16s},
                        {ZMO(zmoiFilterSobelCrossBorderGetBufferSize), zmo32f, zmo8u},
                        {ZMO(zmoiFilterLaplacianBorderGetBufferSize), zmo8u, zmo16s},
                        {ZMO(zmoiFilterLowpassBorderGetBufferSize), zmo8u, zmo16s}},
                       {{"mask", 5}}, {{"mask", 4, zmoStsMaskSizeErr}});
    for (const ZmoDataType type : {zmo8u, zmo32f}) {
        expectBadArguments(
            {{ZMO(zmoiMinEigenValGetBufferSize), type, zmo16u},
             {ZMO(zmoiEigenValsVecsGetBufferSize), type, zmo16u},
             {ZMO(zmoiMinEigenValBorderGetBufferSize), type, zmo16u},
             {ZMO(zmoiEigenValsVecsBorderGetBufferSize), type, zmo16u},
             {ZMO(zmoiHarrisCornerGetBufferSize), type, zmo16u}},
            {{"kernelSize", 5}, {"windowSize", 3}},
            {{"kernelSize", 4, zmoStsMaskSizeErr}, {"windowSize", 2, zmoStsMaskSizeErr}});
    }
}

}  // namespace
