// Parameters: named values that are read from g_istrm, printed, and written to
// the performance table.
#pragma once

#include <concepts>
#include <initializer_list>
#include <limits>
#include <optional>

#include "pslist.h"
#include "psstring.h"
#include "zmotypes.h"

class psCStream;
class psOStream;

// "WxH", read back with x, X or *; both sides are decimal integers.
psString psText(const ZmoiSize& size);
bool psFromText(const psString& text, ZmoiSize& size);
bool operator==(const ZmoiSize& a, const ZmoiSize& b);

// The texts of parameter values. They read back to the same value: a number that
// the general formatter would round gets the digits it needs.
template <class T>
psString psValueText(const T& value) {
    return psText(value);
}
psString psValueText(float value);
psString psValueText(double value);
inline psString psValueText(const psString& value) {
    return value;
}
template <class T>
bool psValueFromText(const psString& text, T& value) {
    return psFromText(text, value);
}
inline bool psValueFromText(const psString& text, psString& value) {
    value = text;
    return true;
}

// What the text of a value is, for who has given another one; empty where any
// text will do.
template <class T>
psString psFormAbove(T least) {
    if constexpr (std::floating_point<T>)
        return "a value is a number, at least " + psText(least);
    else
        return "a value is a whole number from " + psText(least) + " to " +
               psText(std::numeric_limits<T>::max());
}
template <class T>
psString psFormOf() {
    if constexpr (std::integral<T>)
        return psFormAbove(std::numeric_limits<T>::min());
    else if constexpr (std::floating_point<T>)
        return "a value is a number, such as 0.5";
    else if constexpr (std::same_as<T, ZmoiSize>)
        return "a size is WIDTHxHEIGHT, both at least 1";
    else
        return {};
}

// Throws the psException of a text that is no value of the parameter.
[[noreturn]] void psInvalidValue(const psString& name, const psString& text);

// Constructors run before main: they store, and neither print nor throw.
class psParameter {
  public:
    enum DisplayFlags { QUOTED = 2 };  // quote the value in the table

    explicit psParameter(const psString& name, const psString& title = {});
    psParameter(const psParameter&) = default;
    psParameter& operator=(const psParameter&) = default;
    virtual ~psParameter();

    const psString& name() const { return m_name; }
    const psString& title() const { return m_title; }
    bool isInput() const { return m_input; }
    // Without input the value is shown but never asked for.
    void setInput(bool on) { m_input = on; }
    int displayFlags() const { return m_display; }
    void setDisplayFlags(int flags) { m_display = flags; }

    virtual void reset();
    virtual psString valueString() const;
    virtual psString defaultString() const;  // translate() takes it back
    virtual psString validString() const;
    // What a text must be that translate() takes, for one that it has refused.
    virtual psString form() const;
    virtual psString description() const;
    virtual psString prompt() const;

    // A plain parameter yields one value. Walks start with firstValue().
    virtual void resetIterator();
    virtual bool firstValue();
    virtual bool nextValue();

    // A deprecated value is measured as ever, but its table line also appears
    // under an older text.
    virtual bool isDeprecatedParm() const;
    virtual bool isDeprecatedValue() const;
    // True when `on` and the current value is deprecated: the table then shows
    // the older text until the flag is cleared.
    virtual bool setDeprecatedFlag(bool on);

    virtual void toOStream(psOStream& stream) const;
    virtual int colmIndex() const;  // -1: the next free column
    virtual void toCStream(psCStream& table) const;
    virtual void nameToCStream(psCStream& table) const;

    // Takes the value from g_istrm and prints it. A text that is no value is
    // reported and leaves the parameter as it is.
    virtual void fromIStream();
    // Throws psException for a text that is no value; nothing has changed then.
    virtual void translate(const psString& text);

    // A default is the current value, so what one test reads would become the
    // default of the next: the session saves the definitions once the common
    // data are known and restores them before each test. Restoring what was
    // never saved does nothing.
    virtual void saveDefinition();
    virtual void restoreDefinition();

  protected:
    bool m_iteration = false;
    bool m_deprecated = false;
    psString m_deprecatedText;

  private:
    psString takeValue();  // why it was refused; empty when it was not
    void putColm(psCStream& table, const psString& text) const;

    psString m_name;
    psString m_title;
    bool m_input = true;
    int m_display = 0;
};

// A parameter of one value without text conversions.
template <class T>
class psDefault_NSC : public psParameter {
  public:
    explicit psDefault_NSC(const T& value, const psString& name, const psString& title = {})
        : psParameter(name, title), m_value(value) {}

    void setValue(const T& value) { m_value = value; }
    // `text` is what the table shows when the value is flagged.
    void addDeprecated(const T& value, const psString& text) {
        m_deprecatedValues.push_back(value);
        m_deprecatedTexts.push_back(text);
    }

    void reset() override {
        psParameter::reset();
        m_value = T{};
    }
    psString valueString() const override { return valueToString(value()); }
    psString defaultString() const override { return valueString(); }

    bool isDeprecatedParm() const override { return !m_deprecatedValues.empty(); }
    bool isDeprecatedValue() const override { return deprecatedText() != nullptr; }
    bool setDeprecatedFlag(bool on) override {
        const psString* text = on ? deprecatedText() : nullptr;
        m_deprecated = text != nullptr;
        m_deprecatedText = text ? *text : psString();
        return m_deprecated;
    }

    void translate(const psString& text) override { m_value = validItem(text); }

    void saveDefinition() override { m_savedValue = m_value; }
    void restoreDefinition() override {
        if (m_savedValue) m_value = *m_savedValue;
    }

    virtual const T& value() const { return m_value; }
    virtual psString valueToString(const T& value) const = 0;
    // Marks the text as failed when it is no value.
    virtual T stringToValue(psString& text) const = 0;
    virtual T validItem(const psString& text) const {
        psString item(text);
        T value = stringToValue(item);
        if (item.failed()) psInvalidValue(name(), text);
        return value;
    }

  private:
    const psString* deprecatedText() const {
        auto text = m_deprecatedTexts.begin();
        for (const T& deprecated : m_deprecatedValues) {
            if (valueToString(deprecated) == valueString()) return &*text;
            ++text;
        }
        return nullptr;
    }

    T m_value;
    psList<T> m_deprecatedValues;
    psStringList m_deprecatedTexts;
    std::optional<T> m_savedValue;
};

// Values with the general text form of their type (numbers, texts, sizes).
template <class T>
class psDefault : public psDefault_NSC<T> {
  public:
    using psDefault_NSC<T>::psDefault_NSC;

    psString valueToString(const T& value) const override { return psValueText(value); }
    T stringToValue(psString& text) const override {
        T value{};
        if (!psValueFromText(text, value)) text.setFailed();
        return value;
    }
    psString form() const override { return psFormOf<T>(); }
};

// A number that has a least value.
template <class T>
class psAtLeast : public psDefault<T> {
  public:
    psAtLeast(T least, const T& value, const psString& name, const psString& title = {})
        : psDefault<T>(value, name, title), m_least(least) {}

    T validItem(const psString& text) const override {
        const T value = psDefault<T>::validItem(text);
        if (value < m_least) psInvalidValue(this->name(), text);
        return value;
    }
    psString form() const override { return psFormAbove(m_least); }

  private:
    T m_least;
};

// A misalignment: what is entered is taken modulo PS_ALIGN_MAX.
class DefaultAlign : public psDefault<int> {
  public:
    using psDefault<int>::psDefault;
    int validItem(const psString& text) const override;
};

// A mutual shift: rounded down to a multiple of PS_ALIGN_MAX.
class DefaultShift : public psDefault<int> {
  public:
    using psDefault<int>::psDefault;
    int validItem(const psString& text) const override;
};

// One line of a table of names.
template <class T>
struct psNamed {
    T key{};
    psString name;
};

// Keys and names in the order in which they were entered. A typed text chooses
// the first name that begins with it (fitString), so names should differ early.
template <class T>
class psNameMap {
  public:
    psNameMap() = default;
    psNameMap(std::initializer_list<psNamed<T>> lines) {
        for (const psNamed<T>& line : lines) m_lines.push_back(line);
    }

    // The name of the key; an unknown key is appended with an empty name.
    psString& operator[](const T& key) {
        for (psNamed<T>& line : m_lines) {
            if (line.key == key) return line.name;
        }
        m_lines.push_back({key, {}});
        return m_lines.back().name;
    }
    psString nameOf(const T& key) const {
        for (const psNamed<T>& line : m_lines) {
            if (line.key == key) return line.name;
        }
        return {};
    }
    // The first key that `admits` and whose name fits; marks the text as failed
    // when there is none.
    template <class Admits>
    T keyOf(psString& text, Admits admits) const {
        for (const psNamed<T>& line : m_lines) {
            if (admits(line.key) && fitString(line.name, text)) return line.key;
        }
        text.setFailed();
        return T{};
    }
    template <class Admits>
    psString names(Admits admits) const {
        psString all;
        for (const psNamed<T>& line : m_lines) {
            if (!admits(line.key)) continue;
            if (!all.empty()) all += "|";
            all += line.name;
        }
        return all;
    }
    void clear() { m_lines.clear(); }

  private:
    psList<psNamed<T>> m_lines;
};

// Values with names: psMapDefault<bool> Ask(false, "Ask"); Ask[true] = "yes";
template <class T>
class psMapDefault : public psDefault_NSC<T> {
  public:
    using psDefault_NSC<T>::psDefault_NSC;
    psMapDefault(const psString& name, const psString& title,
                 std::initializer_list<psNamed<T>> names, const T& value)
        : psDefault_NSC<T>(value, name, title), m_names(names) {}

    psString& operator[](const T& key) { return m_names[key]; }

    psString validString() const override { return m_names.names(all); }
    psString form() const override { return "a value is one of " + validString(); }
    psString valueToString(const T& value) const override { return m_names.nameOf(value); }
    T stringToValue(psString& text) const override { return m_names.keyOf(text, all); }

  private:
    static bool all(const T&) { return true; }

    psNameMap<T> m_names;
};
