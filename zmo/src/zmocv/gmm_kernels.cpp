#include "zmocv/gmm.h"

#include "common/kernel.h"

// Sixteen pixels at a time take each step together, with masks of all bits in place of branches.
// Only as many components are met as one of them has. Weights, variances and squared distances are
// never negative, and their bits as integers have the order of the floats: comparisons of integers
// vectorise, those of floats do not.
namespace zmo::ZMO_LEVEL {
namespace {

using Plane = float[gmmBlock];
using Flags = int32_t[gmmBlock];  // 0 or -1

struct Component {
    Plane weight;
    Plane mean[3];
    Plane variance;
};
static_assert(sizeof(Component) == gmmFloatsOfComponent * sizeof(float));

constexpr float leastWeight = 0x1p-24F;
constexpr float leastVariance = 4.0F;

// For values that are not negative; a negative one on the left is below all of them.
int32_t isBelow(float a, float b) {
    return -static_cast<int32_t>(bitsOf(a) < bitsOf(b));
}
float smaller(float a, float b) {
    return floatOf(bitsOf(a) < bitsOf(b) ? bitsOf(a) : bitsOf(b));
}
float larger(float a, float b) {
    return floatOf(bitsOf(a) < bitsOf(b) ? bitsOf(b) : bitsOf(a));
}
float selected(int32_t flag, float a, float b) {
    return floatOf((bitsOf(a) & flag) | (bitsOf(b) & ~flag));
}

bool any(const Flags& flags) {
    int32_t all = 0;
    for (const int32_t flag : flags) all |= flag;
    return all != 0;
}

// The components of a block that some of its pixels have. In memory they lie `distance` bytes
// apart.
class Mixture {
  public:
    Mixture(const void* model, ptrdiff_t distance, int most) : m_most(most) {
        const char* from = static_cast<const char*>(model);
        for (; m_count < most; ++m_count) {
            Component& next = m_components[m_count];
            __builtin_memcpy(&next, from, sizeof next);
            from += distance;
            int32_t weights = 0;
            for (const float weight : next.weight) weights |= bitsOf(weight);
            if (weights == 0) break;
        }
    }

    void store(void* model, ptrdiff_t distance) const {
        char* to = static_cast<char*>(model);
        for (int k = 0; k < m_count; ++k) {
            __builtin_memcpy(to, &m_components[k], sizeof m_components[k]);
            to += distance;
        }
    }

    int count() const { return m_count; }
    Component& operator[](int k) { return m_components[k]; }

    // The place for components that pixels take up: free, or that of the last component.
    Component& last() {
        if (m_count < m_most) ++m_count;
        return m_components[m_count - 1];
    }

  private:
    int m_most;
    int m_count = 0;
    Component m_components[mostGmmComponents];
};

struct Pixels {
    Plane value[3];  // plus 1
    Plane before;    // sum of the weights of the components met so far
    Flags found;     // the own component is among them
    Flags background;
};

void loadPixels(Pixels& pixels, const uint8_t* src, ptrdiff_t count) {
    uint8_t memory[3 * gmmBlock] = {};
    if (count < gmmBlock) {
        __builtin_memcpy(memory, src, static_cast<size_t>(3 * count));
        src = memory;
    }
    for (ptrdiff_t i = 0; i < gmmBlock; ++i) {
        pixels.value[0][i] = static_cast<float>(src[3 * i] + 1);
        pixels.value[1][i] = static_cast<float>(src[3 * i + 1] + 1);
        pixels.value[2][i] = static_cast<float>(src[3 * i + 2] + 1);
        pixels.before[i] = 0;
        pixels.found[i] = 0;
        pixels.background[i] = 0;
    }
}

// One component of all pixels learns.
[[gnu::noinline]] void learn(Component& __restrict component, Pixels& __restrict pixels,
                             const GmmRules* rules) {
    const float rate = rules->learningRate;
    const float rest = 1.0F - rate;
    const float loss = rate * rules->complexity;
    const float threshold = rules->matchThreshold;
    const float share = rules->backgroundShare;
    const float mostVariance = 4 * rules->initialVariance;
    for (ptrdiff_t i = 0; i < gmmBlock; ++i) {
        const float weight = component.weight[i];
        const float variance = component.variance[i];
        const float d0 = pixels.value[0][i] - component.mean[0][i];
        const float d1 = pixels.value[1][i] - component.mean[1][i];
        const float d2 = pixels.value[2][i] - component.mean[2][i];
        const float distance = (d0 * d0 + d1 * d1) + d2 * d2;
        const int32_t own =
            isBelow(distance, threshold * variance) & isBelow(0, weight) & ~pixels.found[i];
        pixels.found[i] |= own;
        pixels.background[i] |= own & isBelow(pixels.before[i], share);
        pixels.before[i] += weight;

        const float aged = (rest * weight - loss) + floatOf(bitsOf(rate) & own);
        // An integer comparison also finds a negative weight.
        const float next = floatOf(bitsOf(aged) & isBelow(leastWeight, aged));
        const float weighed = smaller(rate / selected(own, next, 1.0F), 1.0F);
        const float a = floatOf(bitsOf(weighed) & own);
        component.weight[i] = next;
        component.mean[0][i] += a * d0;
        component.mean[1][i] += a * d1;
        component.mean[2][i] += a * d2;
        const float changed = variance + a * (distance - variance);
        component.variance[i] = smaller(larger(changed, leastVariance), mostVariance);
    }
}

// The pixels without an own component take up one.
[[gnu::noinline]] void takeUp(Component& __restrict component, const Pixels& __restrict pixels,
                              const GmmRules* rules) {
    const float rate = rules->learningRate;
    const float variance = rules->initialVariance;
    for (ptrdiff_t i = 0; i < gmmBlock; ++i) {
        const int32_t found = pixels.found[i];
        component.weight[i] = selected(found, component.weight[i], rate);
        component.variance[i] = selected(found, component.variance[i], variance);
    }
    for (int c = 0; c < 3; ++c) {
        for (ptrdiff_t i = 0; i < gmmBlock; ++i) {
            component.mean[c][i] =
                selected(pixels.found[i], component.mean[c][i], pixels.value[c][i]);
        }
    }
}

// Where the later component weighs more, both change places.
[[gnu::noinline]] void sortPair(Component& __restrict first, Component& __restrict second) {
    Flags wrong;
    for (ptrdiff_t i = 0; i < gmmBlock; ++i) wrong[i] = isBelow(first.weight[i], second.weight[i]);
    if (!any(wrong)) return;
    const auto swap = [&wrong](Plane& a, Plane& b) {
        for (ptrdiff_t i = 0; i < gmmBlock; ++i) {
            const float before = a[i];
            a[i] = selected(wrong[i], b[i], before);
            b[i] = selected(wrong[i], before, b[i]);
        }
    };
    swap(first.weight, second.weight);
    for (int c = 0; c < 3; ++c) swap(first.mean[c], second.mean[c]);
    swap(first.variance, second.variance);
}

void normalise(Mixture& mixture) {
    Plane sums = {};
    for (int k = 0; k < mixture.count(); ++k) {
        for (ptrdiff_t i = 0; i < gmmBlock; ++i) sums[i] += mixture[k].weight[i];
    }
    for (float& sum : sums) sum = 1.0F / sum;
    for (int k = 0; k < mixture.count(); ++k) {
        for (ptrdiff_t i = 0; i < gmmBlock; ++i) mixture[k].weight[i] *= sums[i];
    }
}

void update(Mixture& mixture, Pixels& pixels, const GmmRules* rules) {
    for (int k = 0; k < mixture.count(); ++k) learn(mixture[k], pixels, rules);
    int32_t found = -1;
    for (const int32_t flag : pixels.found) found &= flag;
    if (found == 0) takeUp(mixture.last(), pixels, rules);
    for (int k = mixture.count() - 1; k > 0; --k) sortPair(mixture[k - 1], mixture[k]);
    normalise(mixture);
}

// Calls body(x, count, at, distance) for each block of a row: its pixels x ... x + count - 1, and
// where its components lie in the model.
template <class Body>
void forBlocks(ptrdiff_t y, ptrdiff_t width, const GmmRules* rules, Body body) {
    constexpr ptrdiff_t bytes = sizeof(Component);
    const ptrdiff_t distance = gmmBlocks(width) * bytes;
    ptrdiff_t at = y * rules->components * distance;
    for (ptrdiff_t x = 0; x < width; x += gmmBlock) {
        body(x, width - x < gmmBlock ? width - x : gmmBlock, at, distance);
        at += bytes;
    }
}

void foreground(Source src, Target dst, Region roi, const GmmRules* rules, void* model) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        forBlocks(y, roi.width, rules,
                  [&](ptrdiff_t x, ptrdiff_t count, ptrdiff_t at, ptrdiff_t distance) {
                      char* const place = static_cast<char*>(model) + at;
                      Mixture mixture(place, distance, rules->components);
                      Pixels pixels;
                      loadPixels(pixels, rowOf<uint8_t>(src, y) + 3 * x, count);
                      update(mixture, pixels, rules);
                      mixture.store(place, distance);
                      uint8_t* const row = rowOf<uint8_t>(dst, y) + x;
                      for (ptrdiff_t i = 0; i < count; ++i)
                          row[i] = static_cast<uint8_t>(~pixels.background[i]);
                  });
    }
}

// Until the weights reach the share, their sum is that of all components met.
[[gnu::noinline]] void addBackground(Plane (&__restrict sums)[3], Plane& __restrict weights,
                                     const Component& __restrict component, float share) {
    for (ptrdiff_t i = 0; i < gmmBlock; ++i) {
        const float weight = floatOf(bitsOf(component.weight[i]) & isBelow(weights[i], share));
        weights[i] += weight;
        sums[0][i] += weight * component.mean[0][i];
        sums[1][i] += weight * component.mean[1][i];
        sums[2][i] += weight * component.mean[2][i];
    }
}

void background(Target dst, Region roi, const GmmRules* rules, const void* model) {
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
        forBlocks(y, roi.width, rules,
                  [&](ptrdiff_t x, ptrdiff_t count, ptrdiff_t at, ptrdiff_t distance) {
                      Mixture mixture(static_cast<const char*>(model) + at, distance,
                                      rules->components);
                      Plane sums[3] = {};
                      Plane weights = {};
                      for (int k = 0; k < mixture.count(); ++k) {
                          addBackground(sums, weights, mixture[k], rules->backgroundShare);
                      }
                      int32_t values[3][gmmBlock];
                      for (int c = 0; c < 3; ++c) {
                          for (ptrdiff_t i = 0; i < gmmBlock; ++i) {
                              // Without a component 0 - 0 remains.
                              const int32_t known = isBelow(0, weights[i]);
                              const float mean = sums[c][i] / selected(known, weights[i], 1.0F);
                              const float value = mean - floatOf(bitsOf(1.0F) & known);
                              // Means lie in 1 ... 256, but for an error that rounding removes.
                              values[c][i] = wholeOf(value);
                          }
                      }
                      uint8_t* const row = rowOf<uint8_t>(dst, y) + 3 * x;
                      for (ptrdiff_t i = 0; i < count; ++i) {
                          for (int c = 0; c < 3; ++c)
                              row[3 * i + c] = static_cast<uint8_t>(values[c][i]);
                      }
                  });
    }
}

}  // namespace

const GmmKernels gmmKernels = {foreground, background};

}  // namespace zmo::ZMO_LEVEL
