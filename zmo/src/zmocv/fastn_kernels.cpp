#include "zmocv/fastn.h"

#include "common/runs.h"

// Blocks of neighbouring pixels are scored together, in bytes. Of n >= 9 neighbours on the circle
// at least one lies at either end of each diameter, or at both: a block whose two main diameters
// all have an end near the centre's value is left at once, one whose eight diameters have, after
// the differences.
namespace zmo::ZMO_LEVEL {
namespace {

constexpr int circle = 16;
constexpr int block = 32;
constexpr int8_t circleX[circle] = {0, 1, 2, 3, 3, 3, 2, 1, 0, -1, -2, -3, -3, -3, -2, -1};
constexpr int8_t circleY[circle] = {-3, -3, -2, -1, 0, 1, 2, 3, 3, 3, 2, 1, 0, -1, -2, -3};

// Where the circle lies from its centre, and what makes a corner.
struct Test {
    ptrdiff_t offsets[circle];
    int n;
    uint8_t threshold;
};

uint8_t least(uint8_t a, uint8_t b) {
    return a < b ? a : b;
}
uint8_t most(uint8_t a, uint8_t b) {
    return a < b ? b : a;
}
// How much a lies above b, or 0.
uint8_t above(uint8_t a, uint8_t b) {
    return static_cast<uint8_t>(most(a, b) - b);
}

template <int lanes>
bool anyExceeds(const uint8_t* values, uint8_t threshold) {
    uint8_t flags[lanes];
    for (int i = 0; i < lanes; ++i) flags[i] = values[i] > threshold;
    return findSet(flags, 0, lanes) < lanes;
}

// An upper bound of the scores, from the ends of the two main diameters.
template <int lanes>
bool mayHoldCorner(const uint8_t* centre, const Test& test) {
    const uint8_t* const north = centre + test.offsets[0];
    const uint8_t* const east = centre + test.offsets[4];
    const uint8_t* const south = centre + test.offsets[8];
    const uint8_t* const west = centre + test.offsets[12];
    uint8_t bound[lanes];
    for (int i = 0; i < lanes; ++i) {
        const uint8_t brighter = least(most(north[i], south[i]), most(east[i], west[i]));
        const uint8_t darker = most(least(north[i], south[i]), least(east[i], west[i]));
        bound[i] = most(above(brighter, centre[i]), above(centre[i], darker));
    }
    return anyExceeds<lanes>(bound, test.threshold);
}

template <int lanes>
using Ring = uint8_t[circle][lanes];

// to[k] = the least of from[k] and from[k + distance] around the circle.
template <int lanes>
void narrow(const Ring<lanes>& from, int distance, Ring<lanes>& to) {
    for (int k = 0; k < circle; ++k) {
        const uint8_t* __restrict a = from[k];
        const uint8_t* __restrict b = from[(k + distance) % circle];
        uint8_t* __restrict out = to[k];
        for (int i = 0; i < lanes; ++i) out[i] = least(a[i], b[i]);
    }
}

// Raises the scores to those of the differences in d, which is overwritten.
template <int lanes>
void raiseScores(Ring<lanes>& d, const Test& test, uint8_t* __restrict scores) {
    uint8_t bound[lanes];
    for (int i = 0; i < lanes; ++i) bound[i] = most(d[0][i], d[8][i]);
    for (int k = 1; k < circle / 2; ++k) {
        for (int i = 0; i < lanes; ++i) bound[i] = least(bound[i], most(d[k][i], d[k + 8][i]));
    }
    if (!anyExceeds<lanes>(bound, test.threshold)) return;
    Ring<lanes> other;
    narrow<lanes>(d, 1, other);
    narrow<lanes>(other, 2, d);
    narrow<lanes>(d, 4, other);  // each the least of eight neighbours
    narrow<lanes>(other, test.n - 8, d);
    for (const auto& arc : d) {
        for (int i = 0; i < lanes; ++i) scores[i] = most(scores[i], arc[i]);
    }
}

template <int lanes>
void scoreBlock(const uint8_t* centre, const Test& test, uint8_t* __restrict out) {
    uint8_t scores[lanes] = {};
    if (mayHoldCorner<lanes>(centre, test)) {
        Ring<lanes> differences;
        for (int k = 0; k < circle; ++k) {
            const uint8_t* const other = centre + test.offsets[k];
            for (int i = 0; i < lanes; ++i) differences[k][i] = above(other[i], centre[i]);
        }
        raiseScores<lanes>(differences, test, scores);
        for (int k = 0; k < circle; ++k) {
            const uint8_t* const other = centre + test.offsets[k];
            for (int i = 0; i < lanes; ++i) differences[k][i] = above(centre[i], other[i]);
        }
        raiseScores<lanes>(differences, test, scores);
    }
    for (int i = 0; i < lanes; ++i) {
        const uint8_t score = scores[i];
        out[i] = score > test.threshold ? score : uint8_t{0};
    }
}

void scoreRow(Source src, ptrdiff_t y, Region roi, const Test& test, uint8_t* scores) {
    fillRun<uint8_t>(scores, 0, roi.width, 0);
    if (y < fastRadius || y >= roi.height - fastRadius) return;
    const uint8_t* const row = rowOf<uint8_t>(src, y);
    const ptrdiff_t end = roi.width - fastRadius;
    ptrdiff_t x = fastRadius;
    for (; x + block <= end; x += block) scoreBlock<block>(row + x, test, scores + x);
    if (end - fastRadius >= block) {
        // The last block overlaps the one before, and gives the same there.
        if (x < end) scoreBlock<block>(row + end - block, test, scores + end - block);
    } else {
        for (; x < end; ++x) scoreBlock<1>(row + x, test, scores + x);
    }
}

// The rows have an empty pixel on either side.
void suppressRow(const uint8_t* before, const uint8_t* row, const uint8_t* after, ptrdiff_t width,
                 uint8_t* __restrict out) {
    for (ptrdiff_t x = 0; x < width; ++x) {
        const uint8_t earlier =
            most(most(before[x - 1], before[x]), most(before[x + 1], row[x - 1]));
        const uint8_t later = most(most(after[x - 1], after[x]), most(after[x + 1], row[x + 1]));
        const uint8_t score = row[x];
        out[x] = ((score > earlier) & (score >= later)) ? score : uint8_t{0};
    }
}

int64_t countCorners(const uint8_t* row, ptrdiff_t width) {
    int64_t count = 0;
    for (ptrdiff_t x = 0; x < width;) {
        // As many as a byte can count.
        const ptrdiff_t end = width - x < 255 ? width : x + 255;
        uint8_t some = 0;
        for (; x < end; ++x) some = static_cast<uint8_t>(some + (row[x] != 0));
        count += some;
    }
    return count;
}

int64_t findAll(Source src, Target dst, Region roi, const Test& test) {
    int64_t count = 0;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        scoreRow(src, y, roi, test, rowOf<uint8_t>(dst, y));
        count += countCorners(rowOf<uint8_t>(dst, y), roi.width);
    }
    return count;
}

int64_t findMaxima(Source src, Target dst, Region roi, const Test& test, void* buffer) {
    Carver carver(buffer);
    const ptrdiff_t pitch = roi.width + 2;
    uint8_t* const memory = carver.take<uint8_t>(fastRows * pitch);
    fillRun<uint8_t>(memory, 0, fastRows * pitch, 0);
    const auto row = [&](ptrdiff_t y) { return memory + 1 + (y + fastRows) % fastRows * pitch; };
    scoreRow(src, 0, roi, test, row(0));
    int64_t count = 0;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        // Row roi.height is empty too.
        scoreRow(src, y + 1, roi, test, row(y + 1));
        uint8_t* const out = rowOf<uint8_t>(dst, y);
        suppressRow(row(y - 1), row(y), row(y + 1), roi.width, out);
        count += countCorners(out, roi.width);
    }
    return count;
}

int64_t find(Source src, Target dst, Region roi, int n, int threshold, bool suppress,
             void* buffer) {
    Test test;
    test.n = n;
    test.threshold = static_cast<uint8_t>(threshold);
    for (int k = 0; k < circle; ++k) test.offsets[k] = circleY[k] * src.step + circleX[k];
    return suppress ? findMaxima(src, dst, roi, test, buffer) : findAll(src, dst, roi, test);
}

int list(Source map, ZmoiPoint* points, Region roi, int room, bool* more) {
    int count = 0;
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        const uint8_t* const row = rowOf<uint8_t>(map, y);
        for (ptrdiff_t x = findNonZero(row, 0, roi.width); x < roi.width;
             x = findNonZero(row, x + 1, roi.width)) {
            if (count == room) {
                *more = true;
                return count;
            }
            const ZmoiPoint point{static_cast<int>(x), static_cast<int>(y)};
            __builtin_memcpy(points + count, &point, sizeof point);
            ++count;
        }
    }
    return count;
}

}  // namespace

const FastNKernels fastNKernels = {find, list};

}  // namespace zmo::ZMO_LEVEL
