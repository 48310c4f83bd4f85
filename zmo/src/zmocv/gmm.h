// Mixtures of Gaussians: what entry points and kernels share.
#pragma once

#include "common/image.h"
#include "common/level.h"

namespace zmo {

constexpr int mostGmmComponents = 8;

struct GmmRules {
    int components;  // at most, a pixel
    float learningRate;
    float matchThreshold;
    float backgroundShare;
    float complexity;
    float initialVariance;
};

// The model lies row by row. A row holds the first components of all its pixels, then their second
// ones, and so on: those that are used are read in one go. Pixels form blocks of 16, the last one
// of a row being padded. A component of a block is five times 16 floats: weights, the three means,
// variances. Components that a pixel does not have weigh 0.
constexpr ptrdiff_t gmmBlock = 16;
constexpr ptrdiff_t gmmFloatsOfComponent = 5 * gmmBlock;

// Local to each file: levels share no function.
static constexpr ptrdiff_t gmmBlocks(ptrdiff_t width) {
    return (width + gmmBlock - 1) / gmmBlock;
}

struct GmmKernels {
    void (*foreground)(Source src, Target dst, Region roi, const GmmRules* rules, void* model);
    void (*background)(Target dst, Region roi, const GmmRules* rules, const void* model);
};
ZMO_LEVEL_TABLES(GmmKernels, gmmKernels);

}  // namespace zmo
