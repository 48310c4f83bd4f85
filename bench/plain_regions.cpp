#include "plain_regions.h"

#include <algorithm>
#include <cmath>

void plainTrueDistance(const Zmo8u* src, Zmo32f* dst, ZmoiSize roi, std::vector<int>& columns) {
    const int far = roi.width + roi.height;
    int* const column = columns.data();
    for (int x = 0; x < roi.width; ++x) {
        int distance = far;
        for (int y = 0; y < roi.height; ++y) {
            distance = src[y * roi.width + x] == 0 ? 0 : distance + 1;
            column[y * roi.width + x] = distance;
        }
        distance = far;
        for (int y = roi.height - 1; y >= 0; --y) {
            distance = src[y * roi.width + x] == 0 ? 0 : distance + 1;
            column[y * roi.width + x] = std::min(column[y * roi.width + x], distance);
        }
    }
    for (int y = 0; y < roi.height; ++y) {
        const int* const row = column + y * roi.width;
        for (int x = 0; x < roi.width; ++x) {
            int least = row[x] * row[x];
            for (int d = 1; d * d < least && d < roi.width; ++d) {
                if (x >= d) least = std::min(least, d * d + row[x - d] * row[x - d]);
                if (x + d < roi.width) least = std::min(least, d * d + row[x + d] * row[x + d]);
            }
            dst[y * roi.width + x] = static_cast<Zmo32f>(std::sqrt(static_cast<double>(least)));
        }
    }
}

int plainLabels(const Zmo8u* src, Zmo32s* dst, ZmoiSize roi, int connectivity,
                std::vector<int>& stack) {
    const int pixels = roi.width * roi.height;
    std::fill(dst, dst + pixels, 0);
    int labels = 0;
    for (int first = 0; first < pixels; ++first) {
        if (src[first] == 0 || dst[first] != 0) continue;
        dst[first] = ++labels;
        stack.assign(1, first);
        while (!stack.empty()) {
            const int x = stack.back() % roi.width;
            const int y = stack.back() / roi.width;
            stack.pop_back();
            for (int j = std::max(y - 1, 0); j <= std::min(y + 1, roi.height - 1); ++j) {
                for (int i = std::max(x - 1, 0); i <= std::min(x + 1, roi.width - 1); ++i) {
                    if (connectivity == 4 && i != x && j != y) continue;
                    const int place = j * roi.width + i;
                    if (src[place] == 0 || dst[place] != 0) continue;
                    dst[place] = labels;
                    stack.push_back(place);
                }
            }
        }
    }
    return labels;
}
