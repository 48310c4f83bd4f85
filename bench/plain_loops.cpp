#include "plain_loops.h"

#include <cmath>

namespace bench {
namespace {

template <class Sum, class T>
double normL2(const T* src, const Zmo8u* mask, size_t pixels) {
    Sum sum = 0;
    for (size_t i = 0; i < pixels; ++i) {
        if (mask[i] != 0) sum += Sum{src[i]} * src[i];
    }
    return std::sqrt(static_cast<double>(sum));
}

template <class Sum, class T>
double mean(const T* src, const Zmo8u* mask, size_t pixels) {
    Sum sum = 0;
    size_t count = 0;
    for (size_t i = 0; i < pixels; ++i) {
        if (mask[i] == 0) continue;
        sum += src[i];
        ++count;
    }
    return count == 0 ? 0 : static_cast<double>(sum) / static_cast<double>(count);
}

}  // namespace

double plainNormL2(const Zmo8u* src, const Zmo8u* mask, size_t pixels) {
    return normL2<uint64_t>(src, mask, pixels);
}
double plainNormL2(const Zmo16u* src, const Zmo8u* mask, size_t pixels) {
    return normL2<uint64_t>(src, mask, pixels);
}
double plainNormL2(const Zmo32f* src, const Zmo8u* mask, size_t pixels) {
    return normL2<double>(src, mask, pixels);
}

double plainMean(const Zmo8u* src, const Zmo8u* mask, size_t pixels) {
    return mean<uint64_t>(src, mask, pixels);
}
double plainMean(const Zmo16u* src, const Zmo8u* mask, size_t pixels) {
    return mean<uint64_t>(src, mask, pixels);
}
double plainMean(const Zmo32f* src, const Zmo8u* mask, size_t pixels) {
    return mean<double>(src, mask, pixels);
}

}  // namespace bench
