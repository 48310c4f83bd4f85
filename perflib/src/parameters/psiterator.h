// Parameters that are walked through a list or a range of values.
//
// A definition is a text: "1;2;4" is a list, and for the step iterators
// "64;1024;*2" (or +n, -n) is a range from the first to the last value. A test
// module declares its iterators at file scope, one line each:
//
//   psIterator<ZmoiSize> ImageSize("ImageSize", "Image size", {{64, 64}, {640, 480}});
//   psStepIterator<int> Len("Len", "Vector length", "64;1024;*2");
//   psMapIterator<_ZmoiBorderType> Border("Border", "Border type",
//       {{zmoiBorderReplicate, "replicate"}, {zmoiBorderConst, "const"}}, {zmoiBorderReplicate});
//
// A default text that is no definition leaves such an iterator empty.
#pragma once

#include <functional>
#include <type_traits>
#include <utility>
#include <vector>

#include "psdefault.h"
#include "psexcept.h"

class psObject;

// Splits at ";", trims, drops empty items; throws when none is left.
psStringList psDefinitionItems(const psString& text);

// The form of a list of values that have this one.
psString psListForm(const psString& value);

// A list of values; the current one is the parameter's value.
template <class T>
class psIterator_NSC : public psDefault_NSC<T>, public psList<T> {
  public:
    explicit psIterator_NSC(const psString& name, const psString& title = {},
                            std::initializer_list<T> values = {})
        : psDefault_NSC<T>(T{}, name, title) {
        for (const T& value : values) add(value);
    }
    psIterator_NSC(const psIterator_NSC& other)
        : psDefault_NSC<T>(other), psList<T>(other), m_savedList(other.m_savedList) {
        resetIterator();
    }
    psIterator_NSC& operator=(const psIterator_NSC& other) {
        psDefault_NSC<T>::operator=(other);
        psList<T>::operator=(other);
        m_savedList = other.m_savedList;
        resetIterator();
        return *this;
    }

    void reset() override {
        psDefault_NSC<T>::reset();
        this->clear();
        resetIterator();
    }
    void add(const T& value) { this->push_back(value); }

    // Default definitions: a text, one value, two values.
    void init(const char* text) { translate(text); }
    void init(const psString& text) { translate(text); }
    template <std::same_as<T> Value>
    requires(!std::same_as<Value, psString>) void init(const Value& value) {
        reset();
        add(value);
    }
    void init(const T& first, const T& last) {
        reset();
        add(first);
        add(last);
    }

    psString defaultString() const override { return listDescr(); }
    psString listDescr() const {
        psString text;
        for (const T& value : *this) {
            if (!text.empty()) text += "; ";
            text += this->valueToString(value);
        }
        return text;
    }

    void resetIterator() override {
        psDefault_NSC<T>::resetIterator();
        m_current = this->end();
    }
    bool nextValue() override {
        if (!this->m_iteration)
            m_current = this->begin();
        else if (m_current != this->end())
            ++m_current;
        this->m_iteration = true;
        const bool reached = m_current != this->end();
        this->setValue(reached ? *m_current : T{});
        return reached;
    }

    void translate(const psString& text) override {
        psList<T> values;
        for (const psString& item : psDefinitionItems(text))
            values.push_back(this->validItem(item));
        setList(values);
    }

    void saveDefinition() override {
        psDefault_NSC<T>::saveDefinition();
        m_savedList = static_cast<const psList<T>&>(*this);
    }
    void restoreDefinition() override {
        psDefault_NSC<T>::restoreDefinition();
        if (m_savedList) psList<T>::operator=(*m_savedList);
        resetIterator();
    }

  protected:
    void setList(psList<T>& values) {
        this->swap(values);
        resetIterator();
    }

  private:
    typename psList<T>::iterator m_current = this->end();
    std::optional<psList<T>> m_savedList;
};

// Lists of values with the general text form of their type.
template <class T>
class psIterator : public psIterator_NSC<T> {
  public:
    using psIterator_NSC<T>::psIterator_NSC;
    psIterator(const psString& name, const psString& title, const char* definition)
        : psIterator_NSC<T>(name, title) {
        try {
            psIterator_NSC<T>::translate(definition);
        } catch (const psException&) {
            this->clear();
        }
    }

    psString valueToString(const T& value) const override { return psValueText(value); }
    T stringToValue(psString& text) const override {
        T value{};
        if (!psValueFromText(text, value)) text.setFailed();
        return value;
    }
    psString form() const override { return psListForm(psFormOf<T>()); }
};

// Lists, and ranges from first to last by adding, subtracting or multiplying.
// A list of exactly three values whose third is negative cannot be distinguished from a
// range by its text.
template <class T>
class psStepIterator : public psIterator<T> {
    static_assert(std::same_as<T, int> || std::same_as<T, float>);

  public:
    explicit psStepIterator(const psString& name, const psString& title = {},
                            std::initializer_list<T> values = {})
        : psIterator<T>(name, title, values) {}
    psStepIterator(const psString& name, const psString& title, const char* definition)
        : psIterator<T>(name, title) {
        initQuietly([&] { translate(definition); });
    }
    psStepIterator(const psString& name, const psString& title, T first, T last, T step,
                   char operation)
        : psIterator<T>(name, title) {
        initQuietly([&] { setRange({first, last, step, operation}); });
    }

    using psIterator<T>::init;
    void init(const T& first, const T& last) {
        setRange({first, last, T{1}, first > last ? '-' : '+'});
    }
    // A text that is not empty goes before the other arguments.
    void init(T first, T last, T step, char operation, const psString& text = {}) {
        if (text.empty())
            setRange({first, last, step, operation});
        else
            translate(text);
    }

    T firstLimit() const { return m_range.first; }
    T lastLimit() const { return m_range.last; }
    T step() const { return m_range.step; }
    char operation() const { return m_range.operation; }  // '?': the list form
    bool descending() const { return m_range.descending(); }

    void reset() override {
        psIterator<T>::reset();
        m_range = {};
    }
    psString defaultString() const override;
    psString form() const override;
    bool nextValue() override;
    void translate(const psString& text) override;

    void saveDefinition() override {
        psIterator<T>::saveDefinition();
        m_savedRange = m_range;
    }
    void restoreDefinition() override {
        psIterator<T>::restoreDefinition();
        if (m_savedRange) m_range = *m_savedRange;
    }

  private:
    // Holds every sum and product of two values.
    using Wide = std::conditional_t<std::is_integral_v<T>, long long, double>;

    struct Range {
        T first{};
        T last{};
        T step{};
        char operation = '?';
        bool descending() const { return first > last; }
    };

    template <class Define>
    void initQuietly(Define define) {
        try {
            define();
        } catch (const psException&) {
            reset();
        }
    }
    static void validate(const Range& range);
    void setRange(const Range& range);
    T limit(const psString& item, const char* what) const;
    Wide applied(Wide value) const;

    Range m_range;
    std::optional<Range> m_savedRange;
};

extern template class psStepIterator<int>;
extern template class psStepIterator<float>;

// Lists of values out of a table of names.
template <class T>
class psEnumIterator_NCS : public psIterator_NSC<T> {
  public:
    psString validString() const override { return m_names.names(admits()); }
    psString form() const override { return psListForm("a value is one of " + validString()); }
    psString valueToString(const T& value) const override { return m_names.nameOf(value); }
    T stringToValue(psString& text) const override { return m_names.keyOf(text, admits()); }

    // Narrows the table for one test: until resetValidation() only the values
    // given are valid, and those that are not leave the list. Each call starts
    // from the whole table and list. Whoever narrows a shared iterator in
    // canStart() undoes it in flushStart().
    void initValidation(std::initializer_list<T> values) {
        resetValidation();
        m_narrowed = {{}, static_cast<const psList<T>&>(*this)};
        for (const T& value : values) m_narrowed->admitted.push_back(value);
        for (auto pos = this->begin(); pos != this->end();)
            pos = admits()(*pos) ? std::next(pos) : this->erase(pos);
        this->resetIterator();
    }
    void resetValidation() {
        if (!m_narrowed) return;
        psList<T>::operator=(m_narrowed->all);
        m_narrowed.reset();
        this->resetIterator();
    }
    void resetMap() {
        m_names.clear();
        m_narrowed.reset();
    }

    void saveDefinition() override {
        psIterator_NSC<T>::saveDefinition();
        m_saved = true;
        m_savedNarrowed = m_narrowed;
    }
    void restoreDefinition() override {
        psIterator_NSC<T>::restoreDefinition();
        if (m_saved) m_narrowed = m_savedNarrowed;
    }

  protected:
    using psIterator_NSC<T>::psIterator_NSC;

    psNameMap<T> m_names;

  private:
    struct Narrowed {
        psList<T> admitted;
        psList<T> all;  // the list of before
    };

    auto admits() const {
        return [this](const T& value) {
            if (!m_narrowed) return true;
            for (const T& admitted : m_narrowed->admitted) {
                if (admitted == value) return true;
            }
            return false;
        };
    }

    std::optional<Narrowed> m_narrowed;
    std::optional<Narrowed> m_savedNarrowed;
    bool m_saved = false;
};

// Values with names of their own.
template <class T>
class psMapIterator : public psEnumIterator_NCS<T> {
  public:
    explicit psMapIterator(const psString& name, const psString& title = {})
        : psEnumIterator_NCS<T>(name, title) {}
    psMapIterator(const psString& name, std::initializer_list<psNamed<T>> names,
                  std::initializer_list<T> values)
        : psMapIterator(name, {}, names, values) {}
    psMapIterator(const psString& name, const psString& title,
                  std::initializer_list<psNamed<T>> names, std::initializer_list<T> values)
        : psEnumIterator_NCS<T>(name, title, values) {
        this->m_names = names;
    }

    psString& operator[](const T& key) { return this->m_names[key]; }
};

// Values that are named by their own text, out of a set of valid ones. The
// abbreviation rule holds here too: a number that begins with another one must
// stand behind it.
template <class T>
class psEnumIterator : public psEnumIterator_NCS<T> {
  public:
    explicit psEnumIterator(const psString& name, const psString& title = {})
        : psEnumIterator_NCS<T>(name, title) {}
    psEnumIterator(const psString& name, const psString& title, std::initializer_list<T> valid,
                   std::initializer_list<T> values)
        : psEnumIterator_NCS<T>(name, title, values) {
        for (const T& value : valid) addValid(value);
    }

    void addValid(const T& value) { this->m_names[value] = psValueText(value); }
};

// Brings the data of a test into the largest cache, then out of it, by changing
// a size parameter by powers of two. In a test's list it takes the place of that
// parameter: it is read, printed and written as the parameter is.
class psCacheIterator : public psIterator<int> {
  public:
    enum { IN_CACHE = 0, OUT_OF_CACHE = 1 };
    static constexpr int maxTries = 10;

    // The size in bytes of the processor's largest cache; a negative status
    // counts as 0. Unset: the library's query.
    static ZmoStatus (*maxCacheSize)(int* size);

    // Without `owner` the total of all test data counts; neither is owned.
    psCacheIterator(psParameter& parm, const psObject* owner);

    psParameter& parm() const { return m_parm; }
    // "inCache" or "outofCache".
    psString comment() const { return valueString(); }
    // Changes the parameter until the data have the size wanted. False when that
    // is out of reach; the parameter's value is meaningless then.
    bool validateSize();
    // What one call has taken in the cache, by the values of the set's other
    // parameters; out of the cache it is taken to need as much for each byte.
    void noteCall(const psString& others, double seconds);
    // Why the set is not to be measured out of the cache: a call on the data that
    // validateSize() aims at, or has made, would take too long. Else empty.
    psString tooLong(const psString& others) const;
    static constexpr double mostSeconds = 10;
    // About the last try, without a line end.
    const psString& infoString() const { return m_info; }

    psString valueToString(const int& value) const override;
    int stringToValue(psString& text) const override;
    psString description() const override { return m_parm.description(); }
    psString prompt() const override { return m_parm.prompt(); }
    psString form() const override { return m_parm.form(); }
    bool firstValue() override;
    bool nextValue() override;
    bool isDeprecatedParm() const override { return m_parm.isDeprecatedParm(); }
    bool isDeprecatedValue() const override { return m_parm.isDeprecatedValue(); }
    bool setDeprecatedFlag(bool on) override { return m_parm.setDeprecatedFlag(on); }
    void toOStream(psOStream& stream) const override { m_parm.toOStream(stream); }
    int colmIndex() const override { return m_parm.colmIndex(); }
    void toCStream(psCStream& table) const override { m_parm.toCStream(table); }
    void nameToCStream(psCStream& table) const override { m_parm.nameToCStream(table); }
    void fromIStream() override { m_parm.fromIStream(); }
    void saveDefinition() override { m_parm.saveDefinition(); }
    void restoreDefinition() override { m_parm.restoreDefinition(); }

  protected:
    // Changes the parameter by 2 to the power of `shift` and rebuilds the data;
    // false when the value would be 0 or too large, or the rebuilding fails.
    virtual bool shiftParm(int shift) = 0;

  private:
    struct Range {
        long long low;
        long long high;
    };
    Range wanted() const;  // sizes of the data, in bytes
    long long dataSize() const;
    psString tryText(long long size) const;
    bool reached(long long size);
    void noteTry(long long size, const char* relation, long long limit);

    psParameter& m_parm;
    const psObject* m_owner;
    psString m_info;
    std::vector<std::pair<psString, double>> m_secondsOfByte;  // by the other values
};

// The value times 2^shift; 0 when it leaves the range of int (or is 0).
int psShifted(int value, int shift);

// `resize` rebuilds the test's data when the parameter has a new value.
class psCacheIteratorInt : public psCacheIterator {
  public:
    using Resize = std::function<bool(int)>;
    psCacheIteratorInt(psIterator<int>& parm, const psObject* owner, Resize resize);

  private:
    bool shiftParm(int shift) override;

    psIterator<int>& m_int;
    Resize m_resize;
};

// The area changes by the power of two: the width takes the odd half.
class psCacheIteratorSize : public psCacheIterator {
  public:
    using Resize = std::function<bool(const ZmoiSize&)>;
    psCacheIteratorSize(psIterator<ZmoiSize>& parm, const psObject* owner, Resize resize);

  private:
    bool shiftParm(int shift) override;

    psIterator<ZmoiSize>& m_size;
    Resize m_resize;
};

// What most modules declare is compiled once, in psiterator.cpp.
extern template class psDefault_NSC<int>;
extern template class psIterator_NSC<int>;
extern template class psIterator<int>;
extern template class psDefault_NSC<ZmoiSize>;
extern template class psIterator_NSC<ZmoiSize>;
extern template class psIterator<ZmoiSize>;
