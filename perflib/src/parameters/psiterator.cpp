#include "psiterator.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

#include "psdata.h"
#include "pslib.h"
#include "psstream.h"

using enum MessageLevel;

psStringList psDefinitionItems(const psString& text) {
    psStringList words;
    text.parse(words, ";");
    psStringList items;
    for (psString& word : words) {
        if (!word.trim().empty()) items.push_back(word);
    }
    if (items.empty()) throw psException(psString("Empty iterator definition"));
    return items;
}

psString psListForm(const psString& value) {
    return value.empty() ? value : value + "; ';' divides several";
}

template <class T>
psString psStepIterator<T>::form() const {
    return psIterator<T>::form() + "; FIRST;LAST;*STEP, +STEP or -STEP is a range";
}

template <class T>
T psStepIterator<T>::limit(const psString& item, const char* what) const {
    psString text(item);
    const T value = this->stringToValue(text);
    if (text.failed()) throw psException(psString("Invalid ") + what + " = " + item);
    return value;
}

template <class T>
void psStepIterator<T>::translate(const psString& text) {
    const psStringList items = psDefinitionItems(text);
    const psString& third = items.back();
    if (items.size() != 3 || psString("*+-").find(third.substr(0, 1)) < 0) {
        psIterator<T>::translate(text);
        m_range = {};
        return;
    }
    setRange({limit(items.front(), "first value"), limit(*std::next(items.begin()), "last value"),
              limit(third.substr(1), "step"), third[0]});
}

template <class T>
void psStepIterator<T>::setRange(const Range& range) {
    validate(range);
    psIterator<T>::reset();
    m_range = range;
}

template <class T>
void psStepIterator<T>::validate(const Range& range) {
    const bool down = range.descending();
    bool conflict = true;
    switch (range.operation) {
        case '+':
            conflict = down ? range.step >= 0 : range.step < 1;
            break;
        case '-':
            conflict = down ? range.step < 1 : range.step >= 1;
            // A step against the direction, or none at all, never arrives.
            conflict = conflict || (range.first < range.last && range.step >= 0);
            break;
        case '*':
            // The size grows: away from 0 on either side.
            conflict = range.step <= 1 ||
                       (range.first < 1 || range.last < 1
                            ? range.first >= 0 || range.last >= 0 || range.first < range.last
                            : down);
            break;
        default:
            break;
    }
    if (conflict) throw psException(psString("Conflict between iterator limits and operation"));
}

template <class T>
psString psStepIterator<T>::defaultString() const {
    if (m_range.operation == '?') return psIterator<T>::defaultString();
    return this->valueToString(m_range.first) + ";" + this->valueToString(m_range.last) + ";" +
           psString(m_range.operation) + this->valueToString(m_range.step);
}

template <class T>
typename psStepIterator<T>::Wide psStepIterator<T>::applied(Wide value) const {
    switch (m_range.operation) {
        case '+':
            return value + m_range.step;
        case '-':
            return value - m_range.step;
        default:
            return value * m_range.step;
    }
}

template <class T>
bool psStepIterator<T>::nextValue() {
    if (m_range.operation == '?') return psIterator<T>::nextValue();
    if (!this->m_iteration) {
        this->m_iteration = true;
        this->setValue(m_range.first);
        return true;
    }
    const T before = this->value();
    const Wide next = applied(before);
    if (next < std::numeric_limits<T>::lowest() || next > std::numeric_limits<T>::max())
        return false;
    const T value = static_cast<T>(next);
    if (descending() ? value < m_range.last : value > m_range.last) return false;
    // A float may be too coarse for the step: it would stay for ever.
    if (value == before) return false;
    this->setValue(value);
    return true;
}

template class psDefault_NSC<int>;
template class psIterator_NSC<int>;
template class psIterator<int>;
template class psDefault_NSC<ZmoiSize>;
template class psIterator_NSC<ZmoiSize>;
template class psIterator<ZmoiSize>;
template class psStepIterator<int>;
template class psStepIterator<float>;

ZmoStatus (*psCacheIterator::maxCacheSize)(int* size) = nullptr;

psCacheIterator::psCacheIterator(psParameter& parm, const psObject* owner)
    : psIterator<int>("cacheIterator", {}, {IN_CACHE, OUT_OF_CACHE}),
      m_parm(parm),
      m_owner(owner) {}

psString psCacheIterator::valueToString(const int& value) const {
    return value == IN_CACHE ? "inCache" : "outofCache";
}

bool psCacheIterator::firstValue() {
    m_info.free();
    return m_parm.firstValue() && psIterator<int>::firstValue();
}

bool psCacheIterator::nextValue() {
    return m_parm.firstValue() && psIterator<int>::nextValue();
}

int psCacheIterator::stringToValue(psString& text) const {
    for (const int value : {IN_CACHE, OUT_OF_CACHE}) {
        if (fitString(valueToString(value), text)) return value;
    }
    text.setFailed();
    return 0;
}

long long psCacheIterator::dataSize() const {
    return m_owner ? m_owner->objectSize() : psMallocTotal();
}

psString psCacheIterator::tryText(long long size) const {
    return "cacheParm=" + m_parm.valueString() + (m_owner ? " objectSize=" : " totalSize=") +
           psText(size);
}

void psCacheIterator::noteTry(long long size, const char* relation, long long limit) {
    m_info = psString("      ") + " try: " + tryText(size) + relation + psText(limit);
    g_ostrm << PERF << m_info << "\n" << END;
}

bool psCacheIterator::reached(long long size) {
    m_info = "      " + comment() + ": " + tryText(size);
    if (g_ostrm.getOutLevel() <= showWarnings) g_ostrm << ERR << m_info << "\n" << END;
    return true;
}

namespace {

constexpr double leastFraction = 0.1;
constexpr double mostFraction = 0.9;
constexpr double leastChange = 0.01;

int doublings(long long size, long long limit) {
    int count = 0;
    for (; size < limit; size *= 2) ++count;
    return count;
}

int halvings(long long size, long long limit) {
    int count = 0;
    for (; size > limit; size /= 2) ++count;
    return count;
}

}  // namespace

void psCacheIterator::noteCall(const psString& others, double seconds) {
    const long long size = dataSize();
    if (value() == IN_CACHE && size > 0)
        m_secondsOfByte.emplace_back(others, seconds / static_cast<double>(size));
}

psString psCacheIterator::tooLong(const psString& others) const {
    const auto call =
        std::ranges::find(m_secondsOfByte, others, &std::pair<psString, double>::first);
    long long size = dataSize();
    if (value() == IN_CACHE || call == m_secondsOfByte.end() || size <= 0) return {};
    size <<= doublings(size, wanted().low);
    const double seconds = call->second * static_cast<double>(size);
    if (seconds <= mostSeconds) return {};
    return psFormat("one call on %lld bytes would take about %.0f s, more than %.0f", size, seconds,
                    mostSeconds);
}

namespace {

double cacheSize() {
    int bytes = 0;
    if ((psCacheIterator::maxCacheSize ? psCacheIterator::maxCacheSize
                                       : zmo_GetMaxCacheSizeB)(&bytes) < 0)
        return 0;
    return std::max(bytes, 0);
}

}  // namespace

psCacheIterator::Range psCacheIterator::wanted() const {
    const auto part = [](double fraction) {
        return static_cast<long long>(cacheSize() * fraction);
    };
    if (value() == IN_CACHE) return {part(leastFraction), part(mostFraction)};
    return {part(1.05), std::numeric_limits<int>::max()};
}

bool psCacheIterator::validateSize() {
    const bool inCache = value() == IN_CACHE;
    const auto [low, high] = wanted();
    // The size need not follow the parameter evenly. When growing falls short,
    // the next try aims higher, half the way to the upper end of the range.
    double fraction = leastFraction;
    for (int tries = 0;; ++tries) {
        const long long size = dataSize();
        if (size >= low && size <= high) return reached(size);
        if (size < low)
            noteTry(size, " < ", low);
        else
            noteTry(size, " > ", high);
        if (tries == maxTries || size <= 0) return false;
        int shift = 0;
        if (size > high) {
            shift = -halvings(size, high);
        } else {
            shift = doublings(size, inCache ? static_cast<long long>(cacheSize() * fraction) : low);
            const double change = (mostFraction - fraction) / 2;
            if (change >= leastChange) fraction += change;
        }
        if (!shiftParm(shift)) return false;
    }
}

int psShifted(int value, int shift) {
    if (value <= 0 || shift > 30 || shift < -30) return 0;
    if (shift < 0) return value >> -shift;
    const long long wide = static_cast<long long>(value) << shift;
    return wide > std::numeric_limits<int>::max() ? 0 : static_cast<int>(wide);
}

psCacheIteratorInt::psCacheIteratorInt(psIterator<int>& parm, const psObject* owner, Resize resize)
    : psCacheIterator(parm, owner), m_int(parm), m_resize(std::move(resize)) {}

bool psCacheIteratorInt::shiftParm(int shift) {
    const int value = psShifted(m_int.value(), shift);
    m_int.setValue(value);
    return value != 0 && m_resize(value);
}

psCacheIteratorSize::psCacheIteratorSize(psIterator<ZmoiSize>& parm, const psObject* owner,
                                         Resize resize)
    : psCacheIterator(parm, owner), m_size(parm), m_resize(std::move(resize)) {}

bool psCacheIteratorSize::shiftParm(int shift) {
    const int half = shift / 2;
    const ZmoiSize old = m_size.value();
    const ZmoiSize size{psShifted(old.width, shift - half), psShifted(old.height, half)};
    m_size.setValue(size);
    return size.width != 0 && size.height != 0 && m_resize(size);
}
