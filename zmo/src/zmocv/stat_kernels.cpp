#include "zmocv/stat.h"

#include "common/blocks.h"

namespace zmo::ZMO_LEVEL {
namespace {

template <class T>
[[gnu::noinline]] T smallestOf(const Elem<T>* block, ptrdiff_t count) {
    T least = block[0];
    for (ptrdiff_t i = 0; i < count; ++i) least = block[i] < least ? block[i] : least;
    return least;
}
template <class T>
[[gnu::noinline]] T largestOf(const Elem<T>* block, ptrdiff_t count) {
    T most = block[0];
    for (ptrdiff_t i = 0; i < count; ++i) most = block[i] > most ? block[i] : most;
    return most;
}

// Where a value that the block holds stands first among the selected pixels.
template <class T>
ptrdiff_t firstOf(T value, const Elem<T>* block, const uint8_t* mask, ptrdiff_t count) {
    for (ptrdiff_t i = 0; i < count; ++i) {
        if (block[i] == value && (mask == nullptr || mask[i] != 0)) return i;
    }
    return 0;
}

// Values are compared through keys, integers of the same order: those of 8u and 16u are the values
// themselves; the bits of a float, the sign turned into that of the key, make both zeros 0.
template <class T>
struct KeyOf {
    using type = T;
};
template <>
struct KeyOf<float> {
    using type = int32_t;
};
template <class T>
constexpr bool isInteger = T(0.5F) == 0;

[[gnu::noinline]] void orderLikeFloats(int32_t* __restrict keys,
                                       const Elem<int32_t>* __restrict bits, ptrdiff_t count) {
    for (ptrdiff_t i = 0; i < count; ++i) {
        const int32_t sign = bits[i] >> 31;
        keys[i] = ((bits[i] & INT32_MAX) ^ sign) - sign;
    }
}

// The extreme of all blocks so far.
template <class Key>
struct Best {
    Key key;
    ptrdiff_t x;
    ptrdiff_t y;
};

const uint8_t* maskAt(Source mask, ptrdiff_t x, ptrdiff_t y) {
    return mask.data == nullptr ? nullptr : rowOf<uint8_t>(mask, y) + x;
}

bool isEmpty(const uint8_t* mask, ptrdiff_t count) {
    return mask != nullptr && !selectsAny(mask, count);
}

uint32_t numberSelected(const uint8_t* mask, ptrdiff_t count) {
    return mask == nullptr ? static_cast<uint32_t>(count) : countSelected(mask, count);
}

// Of a mask that selects any.
ptrdiff_t firstSelected(const uint8_t* mask, ptrdiff_t count) {
    ptrdiff_t i = 0;
    for (uint64_t eight = 0; i + 8 <= count; i += 8) {
        __builtin_memcpy(&eight, mask + i, sizeof eight);
        if (eight != 0) break;
    }
    while (mask[i] == 0) ++i;
    return i;
}

template <class T, int channels>
void extremes(Source src, Source mask, Region roi, Extremes<T>* result) {
    using Key = typename KeyOf<T>::type;
    Key memory[blockLength];
    [[maybe_unused]] Key ordered[blockLength];
    Best<Key> min = {};
    Best<Key> max = {};
    bool selected = false;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        for (ptrdiff_t x = 0; x < roi.width; x += blockLength) {
            const ptrdiff_t count = blockAt(x, roi.width);
            const uint8_t* const chosen = maskAt(mask, x, y);
            if (isEmpty(chosen, count)) continue;
            const Elem<Key>* const pixels = rowOf<Key>(src, y) + x * channels;
            // A selected value in place of the unselected ones changes neither extreme.
            const Key other =
                chosen == nullptr ? Key() : Key(pixels[firstSelected(chosen, count) * channels]);
            const Elem<Key>* keys = readBlock<Key, channels>(memory, pixels, chosen, count, other);
            if constexpr (!isInteger<T>) {
                orderLikeFloats(ordered, keys, count);
                keys = ordered;
            }
            const Key least = smallestOf<Key>(keys, count);
            const Key most = largestOf<Key>(keys, count);
            if (!selected || least < min.key) {
                min = {least, x + firstOf<Key>(least, keys, chosen, count), y};
            }
            if (!selected || most > max.key) {
                max = {most, x + firstOf<Key>(most, keys, chosen, count), y};
            }
            selected = true;
        }
    }
    *result = {};
    if (!selected) return;
    const auto pixel = [src](const Best<Key>& best) -> T {
        return rowOf<T>(src, best.y)[best.x * channels];
    };
    const auto position = [](const Best<Key>& best) {
        return ZmoiPoint{static_cast<int>(best.x), static_cast<int>(best.y)};
    };
    *result = {selected, pixel(min), pixel(max), position(min), position(max)};
}

template <class T, int channels, bool squares>
void integerSums(Source src, Source mask, Region roi, IntegerSums* result) {
    IntegerSums all = {};
    T memory[blockLength];
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        uint64_t rowSquares = 0;
        for (ptrdiff_t x = 0; x < roi.width; x += blockLength) {
            const ptrdiff_t count = blockAt(x, roi.width);
            const uint8_t* const chosen = maskAt(mask, x, y);
            if (isEmpty(chosen, count)) continue;
            const Elem<T>* const block = readBlock<T, channels>(
                memory, rowOf<T>(src, y) + x * channels, chosen, count, T(0));
            all.count += numberSelected(chosen, count);
            all.sum += sumOf(block, count);
            if constexpr (squares) rowSquares += sumOfSquares(block, count);
        }
        all.squares += rowSquares;
    }
    *result = all;
}

struct RowSum {
    uint64_t count;
    double sum;
};

template <int channels>
[[gnu::noinline]] RowSum sumOfRow(const Elem<float>* row, const uint8_t* mask, ptrdiff_t width) {
    RowSum result = {};
    Lanes lanes = {};
    float memory[blockLength];
    for (ptrdiff_t x = 0; x < width; x += blockLength) {
        const ptrdiff_t count = blockAt(x, width);
        const uint8_t* const chosen = mask == nullptr ? nullptr : mask + x;
        if (isEmpty(chosen, count)) continue;
        const Elem<float>* const block =
            readBlock<float, channels>(memory, row + x * channels, chosen, count, 0.0F);
        result.count += numberSelected(chosen, count);
        addTerms(lanes, count, [block](ptrdiff_t i) -> double { return block[i]; });
    }
    result.sum = folded(lanes);
    return result;
}

// 1 for the selected pixels, 0 for the others and up to the next multiple of 8.
void loadWeights(float* weights, const uint8_t* mask, ptrdiff_t count) {
    for (ptrdiff_t i = 0; i < count; ++i) weights[i] = 1;
    if (mask != nullptr) {
        for (ptrdiff_t i = 0; i < count; ++i) weights[i] = mask[i] != 0 ? 1.0F : 0.0F;
    }
    for (ptrdiff_t i = count; i % 8 != 0; ++i) weights[i] = 0;
}

// The sum of the squared distances to the row's mean.
template <int channels>
[[gnu::noinline]] double distancesOfRow(const Elem<float>* row, const uint8_t* mask,
                                        ptrdiff_t width, double mean) {
    Lanes lanes = {};
    float memory[blockLength];
    float weights[blockLength];
    for (ptrdiff_t x = 0; x < width; x += blockLength) {
        const ptrdiff_t count = blockAt(x, width);
        const uint8_t* const chosen = mask == nullptr ? nullptr : mask + x;
        if (isEmpty(chosen, count)) continue;
        const Elem<float>* const block =
            readBlock<float, channels>(memory, row + x * channels, chosen, count, 0.0F);
        loadWeights(weights, chosen, count);
        addTerms(lanes, count, [block, &weights, mean](ptrdiff_t i) {
            const double distance = (block[i] - mean) * weights[i];
            return distance * distance;
        });
    }
    return folded(lanes);
}

// What the rows above and the next one have between their means.
double distanceOfMeans(const FloatSums& above, const RowSum& row) {
    const double n = static_cast<double>(above.count);
    const double m = static_cast<double>(row.count);
    const double apart = row.sum / m - above.sum / n;
    return apart * apart * (n / (n + m) * m);
}

template <int channels, bool deviation>
void floatSums(Source src, Source mask, Region roi, FloatSums* result) {
    FloatSums all = {};
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const Elem<float>* const pixels = rowOf<float>(src, y);
        const uint8_t* const chosen = maskAt(mask, 0, y);
        const RowSum row = sumOfRow<channels>(pixels, chosen, roi.width);
        if (row.count == 0) continue;
        if constexpr (deviation) {
            const double mean = row.sum / static_cast<double>(row.count);
            all.distances += distancesOfRow<channels>(pixels, chosen, roi.width, mean);
            if (all.count != 0) all.distances += distanceOfMeans(all, row);
        }
        all.count += row.count;
        all.sum += row.sum;
    }
    *result = all;
}

template <class T>
constexpr StatKernelsOf<T> kernelsOf() {
    return {{extremes<T, 1>, extremes<T, 3>},
            {integerSums<T, 1, false>, integerSums<T, 3, false>},
            {integerSums<T, 1, true>, integerSums<T, 3, true>}};
}
template <>
constexpr StatKernelsOf<float> kernelsOf() {
    return {{extremes<float, 1>, extremes<float, 3>},
            {floatSums<1, false>, floatSums<3, false>},
            {floatSums<1, true>, floatSums<3, true>}};
}

}  // namespace

const StatKernels statKernels = {kernelsOf<uint8_t>(), kernelsOf<uint16_t>(), kernelsOf<float>()};

}  // namespace zmo::ZMO_LEVEL
