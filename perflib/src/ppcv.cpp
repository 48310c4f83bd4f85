#include "ppcv.h"

#include "ppimage.h"
#include "ppsession.h"
#include "psbase.h"

psIterator<ZmoiSize> ImageSize("ImageSize", "Image size", {{64, 64}, {640, 480}});
psIterator<ZmoiSize> MaskSize("MaskSize", "Mask size", {{3, 3}, {5, 5}});
psMapIterator<_ZmoiBorderType> Border("Border", "Border type",
                                      {{zmoiBorderReplicate, "replicate"},
                                       {zmoiBorderConst, "const"},
                                       {zmoiBorderMirror, "mirror"},
                                       {zmoiBorderInMem, "inmem"}},
                                      {zmoiBorderReplicate, zmoiBorderMirror});
psIterator<int> Density("Density", "Selected pixels, percent", {10, 90});
psIterator<int> Channel("Channel", "Channel of interest", {2});
psIterator<int> Connectivity("Connectivity", "Neighbours of a pixel", {4, 8});
psMapIterator<_ZmoNormType> Norm("Norm", "Norm",
                                 {{zmoNormInf, "inf"}, {zmoNormL1, "L1"}, {zmoNormL2, "L2"}},
                                 {zmoNormInf, zmoNormL1, zmoNormL2});
// -8 keeps a byte of a result's fraction.
ppScaleIterator ScaleFactor("ScaleFactor", "Scale factor", {0, -8});

namespace {

// The functions whose speed matters most to the library's users: -H marks them
// in the table and -HONLY measures nothing else.
constexpr const char* hotFunctions[] = {
    "zmoiAbsDiff_8u_C1R",
    "zmoiAddWeighted_8u32f_C1IR",
    "zmoiAdd_8u32f_C1IR",
    "zmoiApplyHaarClassifier_32f_C1R",
    "zmoiCannyBorder_8u_C1R",
    "zmoiCanny_16s8u_C1R",
    "zmoiCopySubpixIntersect_8u_C1R",
    "zmoiDilateBorder_8u_C1R",
    "zmoiDistanceTransform_3x3_8u_C1R",
    "zmoiDistanceTransform_5x5_8u32f_C1R",
    "zmoiErodeBorder_8u_C1R",
    "zmoiFGMMForeground_8u_C3R",
    "zmoiFastN_8u_C1R",
    "zmoiFilterGaussianBorder_32f_C1R",
    "zmoiFilterGaussianBorder_8u_C1R",
    "zmoiFilterLowpassBorder_8u_C1R",
    "zmoiFilterSeparable_8u16s_C1R_L",
    "zmoiFloodFill_4Con_8u_C1IR",
    "zmoiHarrisCorner_8u32f_C1R",
    "zmoiIntegral_8u32s_C1R",
    "zmoiLabelMarkers_8u32s_C1R",
    "zmoiMean_8u_C3CMR",
    "zmoiMean_StdDev_8u_C1R",
    "zmoiMinEigenValBorder_8u32f_C1R",
    "zmoiMinMaxIndx_8u_C1R",
    "zmoiNormDiff_L2_8u_C1MR",
    "zmoiNorm_L2_8u_C1MR",
    "zmoiOpticalFlowPyrLK_8u_C1R",
    "zmoiPyramidLayerDown_8u_C1R",
    "zmoiPyramidLayerUp_8u_C1R",
    "zmoiRectStdDev_32s32f_C1R",
    "zmoiSqrIntegral_8u32s64f_C1R",
    "zmoiTrueDistanceTransform_8u32f_C1R",
    "zmoiUndistortRadial_8u_C1R",
    "zmoiUpdateMotionHistory_8u32f_C1IR",
};

bool registerCommon() {
    static ppSession session;
    for (const char* name : hotFunctions) psRegHotFunction(name);
    psRegParm(ImageSize);
    psRegParm(Picture);
    psRegQKeys();
    return psRegSession(&session);
}

const bool registered = registerCommon();

bool drawPicture(ppImage& image) {
    ppImage grey(pp8u, 1, false);
    if (!grey.createImage(image.width(), image.height()) || !ppDrawPicture(grey)) return false;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const double value = grey.getImageAt(x, y, 0);
            for (int c = 0; c < image.numChannels(); ++c) image.setImageAt(x, y, c, value);
        }
    }
    return true;
}

}  // namespace

bool ppDrawSource(ppImage& image) {
    if (ppPictureGiven()) return drawPicture(image);
    return image.type() == pp32f ? image.setRandom(0, 255) : image.setRandom();
}

bool ppDrawMask(ppImage& mask, int percent) {
    if (!mask.setRandom(0, 100)) return false;
    for (int y = 0; y < mask.height(); ++y) {
        auto* const row = static_cast<unsigned char*>(mask.getRowPointer(y));
        for (int x = 0; x < mask.width(); ++x) row[x] = row[x] < percent ? 255 : 0;
    }
    return true;
}
