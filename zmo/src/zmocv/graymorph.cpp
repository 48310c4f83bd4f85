#include <algorithm>
#include <climits>

#include "common/check.h"
#include "common/wide.h"
#include "zmocv/morph.h"
#include "zmocv/morphrows.h"
#include "zmocv/morphstate.h"
#include "zmocv_morph.h"

namespace zmo {
namespace {

bool isGrayType(ZmoDataType type) {
    return type == zmo8u || type == zmo32f;
}

PixelFormat formatOf(ZmoDataType type) {
    return {type == zmo8u ? 1 : 4, 1};
}

ZmoiSizeL large(ZmoiSize size) {
    return {size.width, size.height};
}

uint128 bufferSize(PixelFormat format, ZmoiSizeL roi, ZmoiSizeL mask) {
    const auto pitch =
        static_cast<uint128>(bytesOfExtendedRow(format, roi.width + mask.width, mask.width));
    const auto taps = static_cast<uint128>(mask.width * mask.height) * sizeof(MorphTap);
    return pitch * static_cast<uint128>(3 * mask.height + 1) + taps + 2 * 64;
}

// The values of 8u in the range that decides: beyond it, results are saturated or do not count.
float decisiveValue(Zmo32s value) {
    return static_cast<float>(std::clamp(value, -256, 256));
}
float decisiveValue(Zmo32f value) {
    return value;
}

template <class T>
ZmoStatus grayInit(ZmoDataType type, const T* pValues, ZmoiSize maskSize, ZmoiPoint anchor,
                   ZmoiGrayMorphState* pState) {
    if (anyNull(pValues, pState)) return zmoStsNullPtrErr;
    if (badMask(large(maskSize))) return zmoStsMaskSizeErr;
    if (badAnchor(anchor, large(maskSize))) return zmoStsAnchorErr;
    MorphState state{grayState, type, 1, maskSize.width, maskSize.height, anchor.x, anchor.y, 0};
    for (int y = 0; y < state.height; ++y) {
        for (int x = 0; x < state.width; ++x) {
            storePoint({x, y, decisiveValue(pValues[state.pointCount])}, state.pointCount, pState);
            ++state.pointCount;
        }
    }
    storeState(state, pState);
    return zmoStsNoErr;
}

void grayMorph(bool dilates, const MorphState& state, const ZmoiGrayMorphState* pState,
               const MorphImage& src, const MorphImage& dst, ZmoiSize roi, Border border,
               Zmo8u* pBuffer) {
    const auto type = static_cast<ZmoDataType>(state.type);
    const PixelFormat format = formatOf(type);
    const Window window = dilates ? state.window().reflected() : state.window();
    const MorphKernels& kernels = kernelsInUse(morphKernelsByLevel);
    const auto run = (dilates ? kernels.grayMax : kernels.grayMin)[type == zmo8u ? 0 : 1];
    RowCarver carver(pBuffer, static_cast<ptrdiff_t>(bytesOfExtendedRow(
                                  format, int64_t{roi.width} + state.width, state.width)));
    MorphTap* const taps = carver.array<MorphTap>(state.pointCount);
    ExtendedRows rows(format, {roi.width, roi.height}, window, border, window.height, 2, carver);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        while (rows.loadedCount() <=
               std::max(rows.lastNeeded(y), std::min(window.top, rows.content().height - 1))) {
            const ptrdiff_t next = rows.loadedCount();
            loadPixels(format, src, -rows.originX(), next - rows.originY(), rows.content().width,
                       rows.place(next));
            rows.finishRows(1);
        }
        for (ptrdiff_t k = 0; k < state.pointCount; ++k) {
            const MorphPoint point = pointOf(pState, k);
            const ptrdiff_t right = dilates ? state.width - 1 - point.x : point.x;
            const ptrdiff_t down = dilates ? state.height - 1 - point.y : point.y;
            taps[k] = {rows.row(y - window.top + down) + right * format.bytes, 0, point.value};
        }
        run(taps, state.pointCount, dst.data + y * dst.step, roi.width);
    }
}

template <class T>
ZmoStatus gray(bool dilates, ZmoDataType type, const T* pSrc, int srcStep, T* pDst, int dstStep,
               ZmoiSize roi, ZmoiBorderType border, const T* pBorderValue,
               const ZmoiGrayMorphState* pState, Zmo8u* pBuffer) {
    if (anyNull(pSrc, pDst, pState, pBuffer)) return zmoStsNullPtrErr;
    if (border == zmoiBorderConst && pBorderValue == nullptr) return zmoStsNullPtrErr;
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T>(srcStep, roi.width) || badStep<T>(dstStep, roi.width)) return zmoStsStepErr;
    if (!isKnown(border)) return zmoStsBorderErr;
    const MorphState state = stateOf(pState);
    if (state.kind != grayState || state.type != type) return zmoStsStateErr;
    if (bufferSize(formatOf(type), large(roi), {state.width, state.height}) > INT_MAX) {
        return zmoStsTooLargeErr;
    }
    const MorphImage src{const_cast<char*>(reinterpret_cast<const char*>(pSrc)), srcStep, 0};
    const MorphImage dst{reinterpret_cast<char*>(pDst), dstStep, 0};
    grayMorph(dilates, state, pState, src, dst, roi, {border, pBorderValue}, pBuffer);
    return zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

ZmoStatus zmoiGrayMorphGetSize(ZmoiSize roi, ZmoDataType type, int channels, ZmoiSize maskSize,
                               int* pStateSize, int* pBufferSize) {
    if (zmo::anyNull(pStateSize, pBufferSize)) return zmoStsNullPtrErr;
    if (zmo::isEmpty(roi)) return zmoStsSizeErr;
    if (!zmo::isGrayType(type)) return zmoStsDataTypeErr;
    if (channels != 1) return zmoStsChannelsErr;
    const ZmoiSizeL mask = zmo::large(maskSize);
    if (zmo::badMask(mask)) return zmoStsMaskSizeErr;
    const zmo::uint128 buffer = zmo::bufferSize(zmo::formatOf(type), zmo::large(roi), mask);
    const int64_t state = zmo::stateSize(mask);
    if (buffer > INT_MAX || state > INT_MAX) return zmoStsTooLargeErr;
    *pStateSize = static_cast<int>(state < 64 ? 64 : state);
    *pBufferSize = static_cast<int>(buffer);
    return zmoStsNoErr;
}

ZmoStatus zmoiGrayMorphInit_8u_C1R(const Zmo32s* pValues, ZmoiSize maskSize, ZmoiPoint anchor,
                                   ZmoiGrayMorphState* pState) {
    return zmo::grayInit(zmo8u, pValues, maskSize, anchor, pState);
}

ZmoStatus zmoiGrayMorphInit_32f_C1R(const Zmo32f* pValues, ZmoiSize maskSize, ZmoiPoint anchor,
                                    ZmoiGrayMorphState* pState) {
    return zmo::grayInit(zmo32f, pValues, maskSize, anchor, pState);
}

#define ZMO_GRAY(name, dilates, T, type)                                                       \
    ZmoStatus zmoiGray##name##Border_##type##_C1R(                                             \
        const T* pSrc, int srcStep, T* pDst, int dstStep, ZmoiSize roi, ZmoiBorderType border, \
        const T* pBorderValue, const ZmoiGrayMorphState* pState, Zmo8u* pBuffer) {             \
        return zmo::gray(dilates, zmo##type, pSrc, srcStep, pDst, dstStep, roi, border,        \
                         pBorderValue, pState, pBuffer);                                       \
    }
ZMO_GRAY(Erode, false, Zmo8u, 8u)
ZMO_GRAY(Erode, false, Zmo32f, 32f)
ZMO_GRAY(Dilate, true, Zmo8u, 8u)
ZMO_GRAY(Dilate, true, Zmo32f, 32f)
