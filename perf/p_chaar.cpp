// Stages of a cascade that looks for bright discs, each on the windows that the earlier ones have
// left (zmoiApplyHaarClassifier).
#include <optional>

#include "cascade.h"
#include "pp.h"
#include "zmocv.h"

namespace {

using namespace images;
using cascade::Stage;
using cascade::windowSide;

psIterator<int> StageNumber("Stage", "Stage of the cascade, 1 to 4", {1, 3});
psMapIterator<bool> Features("Features", "Rectangles of the stage",
                             {{false, "upright"}, {true, "tilted"}}, {false, true});

constexpr int classifiersOf[] = {3, 8, 20, 50};
// A stage keeps a window of whose votes for and against this share is left over.
constexpr double voteShare[] = {0.3, 0.5, 0.6, 0.7};
constexpr int scaleFactor = 4;  // thresholds of integers keep four binary places

int selected;
int positive;
Zmo32f threshold32f;
Zmo32s threshold32s;

PP_SERVICE(zmoiTiltedIntegral_8u32s_C1R);
PP_SERVICE(zmoiTiltedIntegral_8u32f_C1R);
PP_SERVICE(zmoiSqrIntegral_8u32s_C1R);
PP_SERVICE(zmoiSqrIntegral_8u32f64f_C1R);
PP_SERVICE(zmoiRectStdDev_32s_C1RSfs);
PP_SERVICE(zmoiRectStdDev_32f_C1R);
PP_SERVICE(zmoiHaarGetSize);
PP_SERVICE(zmoiHaarInit_32f);
PP_SERVICE(zmoiHaarInit_32s);
PP_SERVICE(zmoiApplyHaarClassifier_32f_C1R);
PP_SERVICE(zmoiApplyHaarClassifier_32s_C1RSfs);

template <class T>
std::vector<T> converted(const std::vector<double>& values, double scale = 1) {
    std::vector<T> result;
    result.reserve(values.size());
    for (const double value : values)
        result.push_back(static_cast<T>(std::is_integral_v<T> ? std::floor(value * scale) : value));
    return result;
}

class TimcHaar : public ppImageTest {
  public:
    using ppImageTest::ppImageTest;

  protected:
    void regOwnParms() override {
        regParm(StageNumber);
        regParm(Features);
    }

    bool createImages() override {
        const int number = StageNumber.value();
        if (!ppInRange(StageNumber, 1, static_cast<int>(std::size(classifiersOf)))) return false;
        m_trainer.emplace(Features.value());
        ppImage picture(pp8u, 1, false);
        return picture.createImage(roi.width + windowSide - 1, roi.height + windowSide - 1) &&
               drawPicture(picture) && makeTables(picture) && createMask() &&
               runEarlierStages(number) && initStage(number) && pDst.reserveCopy() != 0;
    }

    void regArguments() override {
        regInput("pSrc", pSrc);
        regInput("pSrc2", pSrc2);
        regInOut("pDst", pDst);
        regOutput("positive", &positive);
        regScratch("pState", pState);
    }

    // A window that the stage does not leave early takes a sum of four and a product for each
    // rectangle, a product, a comparison and a sum for each classifier.
    double getFlops() override {
        if (!isFloat()) return 0;
        return selected * (5.0 * m_stage.rectangles() + 3.0 * m_stage.classifiers());
    }

    psString dataFigure() override {
        return psFormat("%.2f%% of the stage's %d windows are rejected",
                        100.0 * (selected - positive) / std::max(1, selected), selected);
    }

  private:
    bool isFloat() const { return func().srcType() == pp32f; }

    static bool drawPicture(ppImage& picture) {
        return ppPictureGiven() ? ppDrawPicture(picture) : cascade::drawDiscs(picture);
    }

    // The stage's table in pSrc, the windows' deviations in pSrc2.
    bool makeTables(const ppImage& picture) {
        const ZmoiSize size{picture.width(), picture.height()};
        const ZmoiSize cells{size.width + 1, size.height + 1};
        const ZmoiRect window{0, 0, windowSide, windowSide};
        ppImage squares(isFloat() ? pp64f : pp32s, 1, false);
        if (!create(pSrc, func().srcType(), 0, cells) || !create(pSrc2, func().srcType(), 1) ||
            !squares.createImage(cells.width, cells.height))
            return false;
        constexpr Zmo8u start = 0;  // of sums of any type
        const auto make = [&](const auto& sums, const auto& tilted, const auto& deviate, auto* t,
                              auto* q, auto* dev, auto... scale) {
            return prepared(sums, PP_IMAGE(picture, 8u), t, pSrc.step(), q, squares.step(), size,
                            start, start) &&
                   prepared(deviate, t, pSrc.step(), q, squares.step(), dev, pSrc2.step(), roi,
                            window, scale...) &&
                   (!Features.value() ||
                    prepared(tilted, PP_IMAGE(picture, 8u), t, pSrc.step(), size, start));
        };
        if (isFloat())
            return make(lib_zmoiSqrIntegral_8u32f64f_C1R, lib_zmoiTiltedIntegral_8u32f_C1R,
                        lib_zmoiRectStdDev_32f_C1R, pSrc.ptr32f(), squares.ptr64f(),
                        pSrc2.ptr32f());
        return make(lib_zmoiSqrIntegral_8u32s_C1R, lib_zmoiTiltedIntegral_8u32s_C1R,
                    lib_zmoiRectStdDev_32s_C1RSfs, pSrc.ptr32s(), squares.ptr32s(), pSrc2.ptr32s(),
                    0);
    }

    static void setThreshold(int votes) {
        threshold32f = static_cast<Zmo32f>(votes);
        threshold32s = votes;
    }

    bool initStage(int number) {
        m_stage = m_trainer->train(classifiersOf[number - 1]);
        setThreshold(static_cast<int>(std::ceil(voteShare[number - 1] * m_stage.classifiers())));
        if (!createBufferBy(pState, lib_zmoiHaarGetSize, m_stage.classifiers(),
                            m_stage.rectangles(), isFloat() ? zmo32f : zmo32s))
            return false;
        return isFloat() ? fillState<Zmo32f>(lib_zmoiHaarInit_32f)
                         : fillState<Zmo32s>(lib_zmoiHaarInit_32s);
    }

    template <class T, class Init>
    bool fillState(const Init& init) const {
        return prepared(init, m_stage.rects.data(), converted<T>(m_stage.weights).data(),
                        m_stage.rectCounts.data(),
                        converted<T>(m_stage.thresholds, 1 << scaleFactor).data(),
                        converted<T>(m_stage.low).data(), converted<T>(m_stage.high).data(),
                        m_stage.classifiers(), Features.value() ? 1 : 0, state<ZmoiHaarState>());
    }

    static bool createMask() {
        selected = roi.width * roi.height;
        return create(pDst, pp8u, 2) && pDst.setConst(255, 0);
    }

    bool runEarlierStages(int number) {
        for (int earlier = 1; earlier < number; ++earlier) {
            if (!initStage(earlier) || !leaveSome()) return false;
            selected = positive;
        }
        return true;
    }

    // In a picture without discs a stage leaves what resembles them most.
    bool leaveSome() const {
        if (pDst.reserveCopy() == 0 || !applyStage()) return false;
        for (int votes = threshold32s; positive < selected / 100.0;) {
            setThreshold(--votes);
            pDst.setReservedCopy();
            if (!applyStage()) return false;
        }
        return true;
    }

    bool applyStage() const {
        if (isFloat())
            return prepared(lib_zmoiApplyHaarClassifier_32f_C1R, PP_IMAGE(pSrc, 32f),
                            PP_IMAGE(pSrc2, 32f), PP_IMAGE(pDst, 8u), roi, threshold32f, &positive,
                            state<ZmoiHaarState>());
        return prepared(lib_zmoiApplyHaarClassifier_32s_C1RSfs, PP_IMAGE(pSrc, 32s),
                        PP_IMAGE(pSrc2, 32s), PP_IMAGE(pDst, 8u), roi, threshold32s, &positive,
                        state<ZmoiHaarState>(), scaleFactor);
    }

    std::optional<cascade::Trainer> m_trainer;
    Stage m_stage;
};

PP_REG_I_X(TimcHaar, zmoiApplyHaarClassifier_32f_C1R, restoreDst(), PP_IMAGE(pSrc, 32f),
           PP_IMAGE(pSrc2, 32f), PP_IMAGE(pDst, 8u), roi, threshold32f, &positive,
           state<ZmoiHaarState>())
PP_REG_I_X(TimcHaar, zmoiApplyHaarClassifier_32s_C1RSfs, restoreDst(), PP_IMAGE(pSrc, 32s),
           PP_IMAGE(pSrc2, 32s), PP_IMAGE(pDst, 8u), roi, threshold32s, &positive,
           state<ZmoiHaarState>(), scaleFactor)

}  // namespace
