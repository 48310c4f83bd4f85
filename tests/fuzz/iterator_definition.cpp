// Definitions of iterators: refused with an exception, or walked to their end.
#include "fuzz.h"
#include "psiterator.h"

namespace {

// A range of many steps is no fault: only its beginning is walked.
template <class Iterator>
void walk(const psString& text) {
    constexpr int enough = 1000;
    Iterator iterator("fuzz");
    try {
        iterator.translate(text);
    } catch (const psException&) {
        return;
    }
    int steps = 0;
    for (bool more = iterator.firstValue(); more && steps < enough; more = iterator.nextValue())
        ++steps;
    fuzzExpect(steps > 0);
    const psString definition = iterator.defaultString();
    iterator.translate(definition);
    fuzzExpect(iterator.defaultString() == definition);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const psString text = fuzzText(data, size);
    walk<psIterator<int>>(text);
    walk<psStepIterator<int>>(text);
    walk<psStepIterator<float>>(text);
    return 0;
}
