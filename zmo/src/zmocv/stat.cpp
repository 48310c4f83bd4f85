#include "zmocv/stat.h"

#include <cmath>

#include "common/check.h"
#include "zmocv_stat.h"

namespace zmo {
namespace {

enum Masking { plain, masked };

const StatKernelsOf<Zmo8u>& kernelsFor(const StatKernels& all, const Zmo8u*) {
    return all.of8u;
}
const StatKernelsOf<Zmo16u>& kernelsFor(const StatKernels& all, const Zmo16u*) {
    return all.of16u;
}
const StatKernelsOf<Zmo32f>& kernelsFor(const StatKernels& all, const Zmo32f*) {
    return all.of32f;
}

// What all functions check after their pointers.
template <class T, int channels>
ZmoStatus check(Masking masking, Source src, Source mask, ZmoiSize roi, int coi) {
    if (isEmpty(roi)) return zmoStsSizeErr;
    if (badStep<T, channels>(src.step, roi.width)) return zmoStsStepErr;
    if (masking == masked && badStep<Zmo8u>(mask.step, roi.width)) return zmoStsStepErr;
    return coi < 1 || coi > channels ? zmoStsCoiErr : zmoStsNoErr;
}

template <class T, int channels, class Result>
Result runKernel(void (*const (StatKernelsOf<T>::*kernels)[2])(Source, Source, Region, Result*),
                 Source src, Source mask, ZmoiSize roi, int coi) {
    const auto& all = kernelsFor(kernelsInUse(statKernelsByLevel), static_cast<const T*>(nullptr));
    Result result;
    (all.*kernels)[channels / 3](channelOf<T>(src, coi), mask, regionOf(roi), &result);
    return result;
}

template <class T, int channels>
ZmoStatus minMax(Masking masking, Source src, Source mask, ZmoiSize roi, int coi, Zmo32f* pMin,
                 Zmo32f* pMax, ZmoiPoint* pMinPos, ZmoiPoint* pMaxPos) {
    if (anyNull(src.data, pMin, pMax, pMinPos, pMaxPos)) return zmoStsNullPtrErr;
    if (masking == masked && mask.data == nullptr) return zmoStsNullPtrErr;
    const ZmoStatus status = check<T, channels>(masking, src, mask, roi, coi);
    if (status != zmoStsNoErr) return status;
    const auto found =
        runKernel<T, channels, Extremes<T>>(&StatKernelsOf<T>::extremes, src, mask, roi, coi);
    *pMin = found.min;
    *pMax = found.max;
    *pMinPos = found.minPos;
    *pMaxPos = found.maxPos;
    return found.selected ? zmoStsNoErr : zmoStsEmptyMask;
}

double deviation(const IntegerSums& sums) {
    const uint128 n = sums.count;
    const uint128 s = sums.sum;
    return std::sqrt(static_cast<double>(n * sums.squares - s * s)) /
           static_cast<double>(sums.count);
}

double deviation(const FloatSums& sums) {
    return std::sqrt(sums.distances / static_cast<double>(sums.count));
}

template <class T, int channels>
ZmoStatus mean(Masking masking, Source src, Source mask, ZmoiSize roi, int coi, Zmo64f* pMean) {
    if (anyNull(src.data, pMean)) return zmoStsNullPtrErr;
    if (masking == masked && mask.data == nullptr) return zmoStsNullPtrErr;
    const ZmoStatus status = check<T, channels>(masking, src, mask, roi, coi);
    if (status != zmoStsNoErr) return status;
    const auto sums = runKernel<T, channels, Sums<T>>(&StatKernelsOf<T>::mean, src, mask, roi, coi);
    *pMean = sums.count == 0 ? 0 : static_cast<double>(sums.sum) / static_cast<double>(sums.count);
    return sums.count == 0 ? zmoStsEmptyMask : zmoStsNoErr;
}

template <class T, int channels>
ZmoStatus meanStdDev(Masking masking, Source src, Source mask, ZmoiSize roi, int coi, Zmo64f* pMean,
                     Zmo64f* pStdDev) {
    if (anyNull(src.data, pMean, pStdDev)) return zmoStsNullPtrErr;
    if (masking == masked && mask.data == nullptr) return zmoStsNullPtrErr;
    const ZmoStatus status = check<T, channels>(masking, src, mask, roi, coi);
    if (status != zmoStsNoErr) return status;
    const auto sums =
        runKernel<T, channels, Sums<T>>(&StatKernelsOf<T>::meanAndDeviation, src, mask, roi, coi);
    const bool none = sums.count == 0;
    *pMean = none ? 0 : static_cast<double>(sums.sum) / static_cast<double>(sums.count);
    *pStdDev = none ? 0 : deviation(sums);
    return none ? zmoStsEmptyMask : zmoStsNoErr;
}

}  // namespace
}  // namespace zmo

// The four descriptors of one function; `results` and `pass` are its own parameters and arguments.
#define ZMO_RESULTS(...) __VA_ARGS__
#define ZMO_STAT_PLAIN(Base, kernel, T, type, results, pass)                                 \
    ZmoStatus zmoi##Base##_##type##_C1R(const T* pSrc, int srcStep, ZmoiSize roi, results) { \
        return zmo::kernel<T, 1>(zmo::plain, {pSrc, srcStep}, {}, roi, 1, pass);             \
    }                                                                                        \
    ZmoStatus zmoi##Base##_##type##_C3CR(const T* pSrc, int srcStep, ZmoiSize roi, int coi,  \
                                         results) {                                          \
        return zmo::kernel<T, 3>(zmo::plain, {pSrc, srcStep}, {}, roi, coi, pass);           \
    }
#define ZMO_STAT_MASKED(Base, kernel, T, type, results, pass)                                      \
    ZmoStatus zmoi##Base##_##type##_C1MR(const T* pSrc, int srcStep, const Zmo8u* pMask,           \
                                         int maskStep, ZmoiSize roi, results) {                    \
        return zmo::kernel<T, 1>(zmo::masked, {pSrc, srcStep}, {pMask, maskStep}, roi, 1, pass);   \
    }                                                                                              \
    ZmoStatus zmoi##Base##_##type##_C3CMR(const T* pSrc, int srcStep, const Zmo8u* pMask,          \
                                          int maskStep, ZmoiSize roi, int coi, results) {          \
        return zmo::kernel<T, 3>(zmo::masked, {pSrc, srcStep}, {pMask, maskStep}, roi, coi, pass); \
    }
#define ZMO_STAT(T, type)                                                                          \
    ZMO_STAT_PLAIN(                                                                                \
        MinMaxIndx, minMax, T, type,                                                               \
        ZMO_RESULTS(Zmo32f* pMin, Zmo32f* pMax, ZmoiPoint* pMinPos, ZmoiPoint* pMaxPos),           \
        ZMO_RESULTS(pMin, pMax, pMinPos, pMaxPos))                                                 \
    ZMO_STAT_MASKED(                                                                               \
        MinMaxIndx, minMax, T, type,                                                               \
        ZMO_RESULTS(Zmo32f* pMin, Zmo32f* pMax, ZmoiPoint* pMinPos, ZmoiPoint* pMaxPos),           \
        ZMO_RESULTS(pMin, pMax, pMinPos, pMaxPos))                                                 \
    ZMO_STAT_MASKED(Mean, mean, T, type, Zmo64f* pMean, pMean)                                     \
    ZMO_STAT_PLAIN(Mean_StdDev, meanStdDev, T, type, ZMO_RESULTS(Zmo64f* pMean, Zmo64f* pStdDev),  \
                   ZMO_RESULTS(pMean, pStdDev))                                                    \
    ZMO_STAT_MASKED(Mean_StdDev, meanStdDev, T, type, ZMO_RESULTS(Zmo64f* pMean, Zmo64f* pStdDev), \
                    ZMO_RESULTS(pMean, pStdDev))

ZMO_STAT(Zmo8u, 8u)
ZMO_STAT(Zmo16u, 16u)
ZMO_STAT(Zmo32f, 32f)
