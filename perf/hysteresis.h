// The two thresholds of Canny edges: pixels above the higher one start an edge, pixels above the
// lower one are followed from there.
#pragma once

#include <utility>

#include "ppcv.h"

namespace hysteresis {

// These are the arguments of the module that runs.
inline Zmo32f lowThreshold;
inline Zmo32f highThreshold;

// The thresholds of the generated picture are fitted to it. Those of any other are fair for 3x3
// Sobel derivatives; other masks answer `gain` times as strongly.
inline void setThresholds(Zmo32f low, Zmo32f high, Zmo32f gain = 1) {
    lowThreshold = ppPictureGiven() ? 127.5F * gain : low;
    highThreshold = ppPictureGiven() ? 382.5F * gain : high;
}

inline double edgeShare(const ppImage& edges) {
    return ppShareOf(edges, [](double value) { return value != 0; });
}

// `call` makes the edges with the thresholds as they are; without weak pixels it finds what starts
// edges. The second call puts the edges back.
template <class Call>
psString figure(const ppImage& edges, Call call) {
    const double all = edgeShare(edges);
    const Zmo32f low = std::exchange(lowThreshold, highThreshold);
    call();
    const double strong = edgeShare(edges);
    lowThreshold = low;
    call();
    return psFormat("%.2f%% of the pixels are edges, %.2f%% of these by following weak ones",
                    100.0 * all, all > 0 ? 100.0 * (1 - strong / all) : 0.0);
}

}  // namespace hysteresis
