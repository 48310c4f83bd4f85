// Byte string, word parsing, number texts and name tables.
#pragma once

#include <memory>
#include <string_view>

#include "pslist.h"

class psStringList;

// The system's byte string. The buffer is always NUL-terminated and zero behind
// the text; its capacity is the next multiple of 16 strictly above the length.
class psString {
  public:
    psString();
    psString(const char* text);  // null counts as empty
    explicit psString(char c);
    psString(std::string_view text);
    psString(const psString& other);
    psString(psString&& other) noexcept;
    psString& operator=(const psString& other);
    psString& operator=(psString&& other) noexcept;
    psString& operator=(const char* text) { return assign(text); }
    virtual ~psString();

    psString& assign(const char* text);
    psString& assign(char c);
    psString& assign(const psString& other);
    void allocate(int length);  // empty text in a buffer for `length` bytes
    void free();
    void growBy(int n);
    void resize(int length, char fill = ' ');

    const char* c_str() const { return m_data.get(); }
    std::string_view view() const { return {m_data.get(), static_cast<std::size_t>(m_length)}; }
    int length() const { return m_length; }
    int capacity() const { return m_capacity; }
    bool empty() const { return m_length == 0; }
    char& operator[](int i) { return m_data[static_cast<std::size_t>(i)]; }
    char operator[](int i) const { return m_data[static_cast<std::size_t>(i)]; }

    // The mark of a text that could not be converted to a value.
    bool failed() const { return m_failed; }
    void setFailed(bool failed = true) { m_failed = failed; }

    psString& operator+=(const psString& other);

    // Bytes compare as signed characters: -1 or 1 at the first difference; a
    // prefix gives the difference of the lengths.
    int compare(const psString& other) const;

    int find(const psString& s, int from = 0) const;
    int rfind(const psString& s) const;
    bool contains(const psString& s) const { return find(s) >= 0; }
    bool startsWith(const psString& s) const { return view().starts_with(s.view()); }
    bool endsWith(const psString& s) const { return view().ends_with(s.view()); }
    psString substr(int pos, int n) const;
    psString substr(int pos) const;
    psString& trim();  // blanks, tabs and carriage returns; a line feed stays
    psString toLower() const;

    psString getFileName() const;
    psString getFileDir() const;    // without the separator
    psString getFileTitle() const;  // up to the last '.'; a leading '.' opens no extension

    static const char* prefixI64() { return "L"; }

    // Words of this text at the separators (see psParse); each returns the
    // number of words found, also of those beyond the outputs.
    int parse(psStringList& words, const psString& separators) const;
    int parse(psString& first, psString& second, const psString& separators) const;
    int parse(psString& first, psString& second, psString& third, const psString& separators) const;

  private:
    void assignBytes(const char* bytes, int length);

    std::unique_ptr<char[]> m_data;
    int m_length = 0;
    int m_capacity = 0;
    bool m_failed = false;
};

bool operator==(const psString& a, const psString& b);
bool operator==(const psString& a, const char* b);
psString operator+(const psString& a, const psString& b);
psString operator+(const psString& a, const char* b);
psString operator+(const char* a, const psString& b);
psString operator+(const psString& a, int number);

class psStringList : public psList<psString> {
  public:
    bool contains(const psString& text) const;
};

// The candidate that `name` was probably meant to be, whatever the case: equal, or
// the nearest by edit distance, at most two letters and a third of the name away.
// Empty when there is none.
psString psNearest(const psString& name, const psStringList& candidates);

// Editors of other systems put the mark EF BB BF before a text; it is no part of it.
std::string_view psWithoutByteOrderMark(std::string_view text);

// Splits a text into words at a set of separators; runs of separators count as
// one, so no word is empty. A double quote in the separator set switches quote
// mode on: a word that begins with a quote runs to the closing one, may hold
// separators, loses its quotes and keeps a doubled quote as one; an open quote
// runs to the end of the text.
class psParse {
  public:
    psParse(const psString& text, const psString& separators);

    bool nextWord(psString& word);
    static int parse(const psString& text, const psString& separators, psStringList& words);

  private:
    bool nextWord_quote(psString& word);
    bool isSeparator(char c) const;
    void skipSeparators();

    psString m_text;
    psString m_separators;
    int m_position = 0;
    bool m_quote = false;
};

// printf into a string.
[[gnu::format(printf, 1, 2)]] psString psFormat(const char* format, ...);

// The general number formatters: no cell of a table ever gets a comma from them.
psString psText(int value);
psString psText(unsigned value);
psString psText(long value);
psString psText(unsigned long value);
psString psText(long long value);
psString psText(unsigned long long value);
psString psText(float value);   // %g
psString psText(double value);  // %g
psString psText(bool value);    // 0 or 1
psString psText(const void* value);

// Whole seconds as hh:mm:ss, the hours with as many digits as they need; less than
// none counts as none.
psString psTimeText(double seconds);

// The value of a whole text (blanks around it are allowed); false leaves the
// value alone.
bool psFromText(const psString& text, int& value);
bool psFromText(const psString& text, unsigned& value);
bool psFromText(const psString& text, long long& value);
bool psFromText(const psString& text, float& value);
bool psFromText(const psString& text, double& value);
bool psFromText(const psString& text, bool& value);
bool psFromText(const psString& text, void*& value);

// Tables of names, given as parallel arrays of n values and names.
psString enumString(int value, const int* values, const char* const* names, int n);
psString flagString(int value, const int* flags, const char* const* names, int n);

// The abbreviation rule: name begins with text, whatever the case; a text
// shorter than minLength fits nothing. The first name that fits wins, 0 is the
// value when none does.
bool fitString(const psString& name, const psString& text, int minLength = 0);
int enumValue(const psString& text, const int* values, const char* const* names, int n,
              int minLength = 0);
int flagValue(const psString& text, const int* flags, const char* const* names, int n,
              int minLength = 0);
