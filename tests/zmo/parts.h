// Bad arguments of functions whose argument lists have the same parts: pointers, steps, a region, and
// numbers of their own.
#pragma once

#include "kit.h"

namespace kit {

struct Parts {
    std::vector<void*> pointers;
    std::vector<int> steps;  // just a row's bytes
    ZmoiSize roi;
    std::vector<float> values;

    template <class T>
    T* at(size_t i) const {
        return static_cast<T*>(pointers[i]);
    }
    int whole(size_t i) const { return static_cast<int>(values[i]); }
};

struct WrongValue {
    size_t index;
    float value;
    ZmoStatus status;
};

template <class Run, class Untouched>
void expectBadParts(const Parts& good, Run run, const std::vector<WrongValue>& wrong,
                    Untouched untouched) {
    std::vector<Fault<Parts>> faults;
    for (size_t i = 0; i < good.pointers.size(); ++i) {
        faults.push_back({"null", zmoStsNullPtrErr, [i](Parts& c) { c.pointers[i] = nullptr; }});
    }
    faults.push_back({"width 0", zmoStsSizeErr, [](Parts& c) { c.roi.width = 0; }});
    faults.push_back({"height negative", zmoStsSizeErr, [](Parts& c) { c.roi.height = -1; }});
    for (size_t i = 0; i < good.steps.size(); ++i) {
        faults.push_back({"short step", zmoStsStepErr, [i](Parts& c) { --c.steps[i]; }});
    }
    for (const WrongValue& w : wrong) {
        faults.push_back({"value", w.status, [w](Parts& c) { c.values[w.index] = w.value; }});
    }
    expectFaults(good, run, faults, untouched);
}

// Of a query of the usual shape: type and channels are right ones, the function has no 16s and no
// second channel.
template <class Query>
void expectBadQueries(Query query, ZmoDataType type, int channels) {
    int bytes = -1;
    EXPECT_EQ(query({4, 4}, type, channels, nullptr), zmoStsNullPtrErr);
    EXPECT_EQ(query({0, 4}, zmo16s, 2, &bytes), zmoStsSizeErr);
    EXPECT_EQ(query({4, 4}, zmo16s, 2, &bytes), zmoStsDataTypeErr);
    EXPECT_EQ(query({4, 4}, type, 2, &bytes), zmoStsChannelsErr);
    EXPECT_EQ(query({INT32_MAX, 2}, type, channels, &bytes), zmoStsTooLargeErr);
    EXPECT_EQ(bytes, -1);
}

}  // namespace kit
