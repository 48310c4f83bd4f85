// The two halves of a separable filter between rows of the user's
// (zmoiFilterRowBorderPipeline, zmoiFilterColumnPipeline, and _Low).
#include <algorithm>
#include <vector>

#include "filters.h"
#include "zmoi.h"

namespace {

using namespace filters;

std::vector<Zmo16s> kernel;
std::vector<Zmo32f> kernel32f;
int kernelSize;
int anchor;
int divisor;
std::vector<void*> dstRows;
std::vector<const void*> srcRows;

// The rows as a function's prototype has them.
template <class T>
T** rowsTo() {
    return reinterpret_cast<T**>(dstRows.data());
}
template <class T>
const T** rowsFrom() {
    return reinterpret_cast<const T**>(srcRows.data());
}

PP_SERVICE(zmoiFilterRowBorderPipelineGetBufferSize);
PP_SERVICE(zmoiFilterColumnPipelineGetBufferSize);

class TimSepar : public FilterTest {
  public:
    using FilterTest::FilterTest;

  protected:
    // The rows of a column pipeline hold its border.
    bool hasBorder() const override { return isRow(); }
    ZmoiSize margin() const override { return {MaskSize.value().width, 0}; }
    // The source of a column pipeline has the rows beyond the region, too.
    ZmoiSize sourceSize() const override {
        const ZmoiSize size = ImageSize.value();
        return isRow() ? size : ZmoiSize{size.width, size.height + MaskSize.value().height - 1};
    }
    double flopsOfElement() const override { return 2.0 * kernelSize - 1; }

    // 16s that become bytes are of the bytes' range; where no divisor follows they leave room for
    // the sum of the weights.
    bool drawSource() override {
        const ppTypeInfo result = ppInfo(func().dstType());
        const bool toBytes = func().srcType() == pp16s && ppItem(result.code) == 1;
        if (ppPictureGiven() || (!toBytes && !isLow())) {
            return FilterTest::drawSource() && (result.code != pp8s || darken(-result.min));
        }
        const int most = 32767 / sum(tent(taps()));
        return toBytes ? pSrc.setRandom(result.min, result.max) : pSrc.setRandom(-most, most);
    }

    psString dataFigure() override {
        const double low = pDst.minValue();
        const double high = pDst.maxValue();
        const double limits =
            ppShareOf(pDst, [&](double value) { return value <= low || value >= high; });
        return FilterTest::dataFigure() +
               psFormat(", %.2f%% of it are at a limit of its type", 100.0 * limits);
    }

    bool prepare() override {
        kernelSize = taps();
        anchor = kernelSize / 2;
        kernel = tent(kernelSize);
        divisor = sum(kernel);
        kernel32f.assign(kernel.begin(), kernel.end());
        for (Zmo32f& weight : kernel32f) weight /= static_cast<Zmo32f>(divisor);
        dstRows.clear();
        srcRows.clear();
        for (int y = 0; y < roi.height; ++y) dstRows.push_back(pDst.getRowPointer(y));
        for (int y = 0; y < srcRoi.height; ++y) srcRows.push_back(pSrc.getRowPointer(y));
        const auto& query = isRow() ? lib_zmoiFilterRowBorderPipelineGetBufferSize
                                    : lib_zmoiFilterColumnPipelineGetBufferSize;
        return createBufferBy(pBuffer, query, roi, kernelSize, srcType(), channels());
    }

    void regArguments() override {
        FilterTest::regArguments();
        if (func().srcType() == pp32f)
            regInput("kernel", kernel32f.data(), kernelSize);
        else
            regInput("kernel", kernel.data(), kernelSize);
    }

  private:
    bool isRow() const { return named("FilterRow"); }
    bool isLow() const { return named("_Low"); }
    int taps() const { return isRow() ? MaskSize.value().width : MaskSize.value().height; }

    // A picture's grey values fill the range of 8s from its lower end.
    static bool darken(double shades) {
        ppDrawBy(pSrc, [&](int x, int y, int c) { return pSrc.getImageAt(x, y, c) - shades; });
        return true;
    }
};

#define REG_ROWS(types, T, D, channels)                                                           \
    PP_REG(TimSepar, zmoiFilterRowBorderPipeline_##types##_C##channels##R, BORDERED_SRC(T),       \
           rowsTo<Zmo##D>(), roi, kernel.data(), kernelSize, anchor, divisor, BORDERED_BORDER(T), \
           pBuffer.get())
#define REG_ROWS_UNDIVIDED(types, T, weights, channels)                                     \
    PP_REG(TimSepar, zmoiFilterRowBorderPipeline_##types##_C##channels##R, BORDERED_SRC(T), \
           rowsTo<Zmo##T>(), roi, (weights).data(), kernelSize, anchor, BORDERED_BORDER(T), \
           pBuffer.get())
#define REG_COLUMNS(types, T, D, channels)                                                  \
    PP_REG(TimSepar, zmoiFilterColumnPipeline_##types##_C##channels##R, rowsFrom<Zmo##T>(), \
           PP_IMAGE(pDst, D), roi, kernel.data(), kernelSize, divisor, pBuffer.get())
#define REG_COLUMNS_UNDIVIDED(types, T, weights, channels)                                  \
    PP_REG(TimSepar, zmoiFilterColumnPipeline_##types##_C##channels##R, rowsFrom<Zmo##T>(), \
           PP_IMAGE(pDst, T), roi, (weights).data(), kernelSize, pBuffer.get())
#define REG_PIPELINES(channels)                          \
    REG_ROWS(8u16s, 8u, 16s, channels)                   \
    REG_ROWS(16u, 16u, 16u, channels)                    \
    REG_ROWS(16s, 16s, 16s, channels)                    \
    REG_ROWS_UNDIVIDED(32f, 32f, kernel32f, channels)    \
    REG_ROWS_UNDIVIDED(Low_16s, 16s, kernel, channels)   \
    REG_COLUMNS(16u, 16u, 16u, channels)                 \
    REG_COLUMNS(16s, 16s, 16s, channels)                 \
    REG_COLUMNS(16s8u, 16s, 8u, channels)                \
    REG_COLUMNS(16s8s, 16s, 8s, channels)                \
    REG_COLUMNS_UNDIVIDED(32f, 32f, kernel32f, channels) \
    REG_COLUMNS_UNDIVIDED(Low_16s, 16s, kernel, channels)

REG_PIPELINES(1)
REG_PIPELINES(3)

}  // namespace
