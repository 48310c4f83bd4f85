#include "ppcv.h"

#include <algorithm>
#include <vector>

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

bool drawPicture(ppImage& image, int shift) {
    ppImage picture(pp8u, image.numChannels(), false);
    if (!picture.createImage(image.width(), image.height()) || !ppDrawPicture(picture, shift))
        return false;
    const int channels = image.numChannels();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            for (int c = 0; c < channels; ++c)
                image.setImageAt(x, y, c, picture.getImageAt(x, y, c));
        }
    }
    return true;
}

// How far each pixel lies from a few objects: those up to a level are the objects,
// which grow with it. In integers, so that masks are the same on every processor.
class ObjectField {
  public:
    ObjectField(int width, int height) : m_x(parts(width)), m_y(parts(height)) {}

    int at(int x, int y) const {
        int nearest = levels - 1;
        for (const Object& object : objects) {
            const long long dx = m_x[static_cast<std::size_t>(x)] - object.x;
            const long long dy = m_y[static_cast<std::size_t>(y)] - object.y;
            const long long level = (dx * dx + dy * dy) / object.size;
            nearest = static_cast<int>(std::min<long long>(level, nearest));
        }
        return nearest;
    }

    // The lowest level that holds so many percent of the pixels, at least one.
    int levelThatHolds(int percent) const {
        std::vector<long long> pixels(levels);
        for (std::size_t y = 0; y < m_y.size(); ++y) {
            for (std::size_t x = 0; x < m_x.size(); ++x)
                ++pixels[static_cast<std::size_t>(at(static_cast<int>(x), static_cast<int>(y)))];
        }
        const auto all = static_cast<long long>(m_x.size()) * static_cast<long long>(m_y.size());
        const long long wanted = std::max(all * percent / 100, 1LL);
        std::size_t level = 0;
        for (long long held = pixels[0]; held < wanted; held += pixels[level]) ++level;
        return static_cast<int>(level);
    }

  private:
    // The middle in parts of the image's sides, and the weight of the area.
    struct Object {
        int x;
        int y;
        int size;
    };
    static constexpr int side = 10000;
    static constexpr Object objects[] = {
        {2200, 2700, 3000}, {6400, 2000, 1200}, {7800, 6900, 2100}, {3300, 7600, 900}};
    // More than any pixel is away from the largest object.
    static constexpr int levels = 2 * side * side / 3000 + 1;

    static std::vector<int> parts(int length) {
        std::vector<int> middles;
        for (long long i = 0; i < length; ++i)
            middles.push_back(static_cast<int>((2 * i + 1) * side / (2 * length)));
        return middles;
    }

    std::vector<int> m_x;
    std::vector<int> m_y;
};

}  // namespace

bool ppDrawSource(ppImage& image, int frame) {
    constexpr int movement = 3;
    if (ppPictureGiven()) return drawPicture(image, frame * movement);
    return image.type() == pp32f ? image.setRandom(0, 255) : image.setRandom();
}

bool ppInRange(const psIterator<int>& parm, int low, int high) {
    if (parm.value() >= low && parm.value() <= high) return true;
    g_ostrm << MessageLevel::ERR
            << psFormat("-- %s is %d to %d, not %d\n", parm.name().c_str(), low, high, parm.value())
            << MessageLevel::END;
    return false;
}

bool ppDrawMask(ppImage& mask) {
    if (!ppInRange(Density, 0, 100)) return false;
    const ObjectField field(mask.width(), mask.height());
    const int level = field.levelThatHolds(Density.value());
    for (int y = 0; y < mask.height(); ++y) {
        auto* const row = static_cast<unsigned char*>(mask.getRowPointer(y));
        for (int x = 0; x < mask.width(); ++x) row[x] = field.at(x, y) <= level ? 255 : 0;
    }
    return true;
}

double ppSelectedShare(const ppImage& mask) {
    double selected = 0;
    for (int y = 0; y < mask.height(); ++y) {
        const auto* const row = static_cast<const unsigned char*>(mask.getRowPointer(y));
        selected += static_cast<double>(std::count(row, row + mask.width(), 255));
    }
    return selected / mask.width() / mask.height();
}

double ppMeanOf(const ppImage& image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) sum += image.getImageAt(x, y, 0);
    }
    return sum / image.width() / image.height();
}
