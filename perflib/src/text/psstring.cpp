#include "psstring.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <utility>
#include <vector>

namespace {

int capacityFor(int length) {
    return (std::max(length, 0) & 0x7FFFFFF0) + 16;
}

std::unique_ptr<char[]> zeroed(int capacity) {
    return std::make_unique<char[]>(static_cast<std::size_t>(capacity));
}

std::size_t bytes(int n) {
    return static_cast<std::size_t>(n);
}

int lastSeparator(const psString& path) {
    const std::size_t pos = path.view().find_last_of("/\\");
    return pos == std::string_view::npos ? -1 : static_cast<int>(pos);
}

}  // namespace

psString::psString() {
    allocate(0);
}

psString::psString(const char* text) {
    assign(text);
}

psString::psString(char c) {
    assign(c);
}

psString::psString(std::string_view text) {
    assignBytes(text.data(), static_cast<int>(text.size()));
}

psString::psString(const psString& other) : m_failed(other.m_failed) {
    assignBytes(other.c_str(), other.m_length);
}

psString::psString(psString&& other) noexcept : psString() {
    *this = std::move(other);
}

psString& psString::operator=(const psString& other) {
    m_failed = other.m_failed;
    return assign(other);
}

psString& psString::operator=(psString&& other) noexcept {
    std::swap(m_data, other.m_data);
    std::swap(m_length, other.m_length);
    std::swap(m_capacity, other.m_capacity);
    m_failed = other.m_failed;
    return *this;
}

psString::~psString() = default;

void psString::assignBytes(const char* text, int n) {
    const int capacity = capacityFor(n);
    if (capacity != m_capacity || text == m_data.get()) {
        auto data = zeroed(capacity);
        if (n > 0) std::memcpy(data.get(), text, bytes(n));
        m_data = std::move(data);
        m_capacity = capacity;
    } else {
        // The source may be part of this buffer (a text assigned to itself).
        if (n > 0) std::memmove(m_data.get(), text, bytes(n));
        std::memset(m_data.get() + n, 0, bytes(capacity - n));
    }
    m_length = n;
}

psString& psString::assign(const char* text) {
    assignBytes(text, text ? static_cast<int>(std::strlen(text)) : 0);
    return *this;
}

psString& psString::assign(char c) {
    assignBytes(&c, 1);
    return *this;
}

psString& psString::assign(const psString& other) {
    if (this != &other) assignBytes(other.c_str(), other.m_length);
    return *this;
}

void psString::allocate(int length) {
    m_capacity = capacityFor(length);
    m_data = zeroed(m_capacity);
    m_length = 0;
}

void psString::free() {
    allocate(0);
}

void psString::growBy(int n) {
    if (n <= 0) return;
    if (m_length + n >= m_capacity) {
        const int capacity = capacityFor(m_length + n);
        auto data = zeroed(capacity);
        std::memcpy(data.get(), m_data.get(), bytes(m_length));
        m_data = std::move(data);
        m_capacity = capacity;
    }
    m_length += n;
}

void psString::resize(int length, char fill) {
    length = std::max(length, 0);
    if (length > m_length) {
        const int old = m_length;
        growBy(length - old);
        std::memset(m_data.get() + old, fill, bytes(length - old));
    } else {
        // growBy relies on zero bytes behind the text.
        std::memset(m_data.get() + length, 0, bytes(m_length - length));
        m_length = length;
    }
}

psString& psString::operator+=(const psString& other) {
    const int old = m_length;
    const int n = other.m_length;
    growBy(n);
    std::memmove(m_data.get() + old, other.m_data.get(), bytes(n));
    return *this;
}

int psString::compare(const psString& other) const {
    const int n = std::min(m_length, other.m_length);
    for (int i = 0; i < n; ++i) {
        const auto a = static_cast<signed char>((*this)[i]);
        const auto b = static_cast<signed char>(other[i]);
        if (a != b) return a < b ? -1 : 1;
    }
    return m_length - other.m_length;
}

int psString::find(const psString& s, int from) const {
    if (from < 0 || from > m_length) return -1;
    const std::size_t pos = view().find(s.view(), bytes(from));
    return pos == std::string_view::npos ? -1 : static_cast<int>(pos);
}

int psString::rfind(const psString& s) const {
    const std::size_t pos = view().rfind(s.view());
    return pos == std::string_view::npos ? -1 : static_cast<int>(pos);
}

psString psString::substr(int pos, int n) const {
    if (n < 1 || pos < 0 || pos >= m_length) return {};
    return psString(view().substr(bytes(pos), bytes(n)));
}

psString psString::substr(int pos) const {
    return substr(pos, m_length);
}

psString& psString::trim() {
    constexpr std::string_view blanks = "\t\r ";
    const std::size_t first = view().find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        resize(0);
        return *this;
    }
    const std::size_t last = view().find_last_not_of(blanks);
    *this = psString(view().substr(first, last - first + 1));
    return *this;
}

psString psString::toLower() const {
    psString lower(*this);
    std::transform(lower.m_data.get(), lower.m_data.get() + m_length, lower.m_data.get(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

psString psString::getFileName() const {
    return substr(lastSeparator(*this) + 1);
}

psString psString::getFileDir() const {
    return substr(0, lastSeparator(*this));
}

psString psString::getFileTitle() const {
    psString name = getFileName();
    const int dot = name.rfind(".");
    return dot > 0 ? name.substr(0, dot) : name;
}

int psString::parse(psStringList& words, const psString& separators) const {
    return psParse::parse(*this, separators, words);
}

int psString::parse(psString& first, psString& second, const psString& separators) const {
    psString third;
    return parse(first, second, third, separators);
}

int psString::parse(psString& first, psString& second, psString& third,
                    const psString& separators) const {
    psStringList words;
    const int count = parse(words, separators);
    auto word = words.begin();
    for (psString* out : {&first, &second, &third})
        *out = word != words.end() ? *word++ : psString();
    return count;
}

bool operator==(const psString& a, const psString& b) {
    return std::strcmp(a.c_str(), b.c_str()) == 0;
}

bool operator==(const psString& a, const char* b) {
    return std::strcmp(a.c_str(), b) == 0;
}

psString operator+(const psString& a, const psString& b) {
    psString sum;
    sum.allocate(a.length() + b.length());
    sum += a;
    sum += b;
    return sum;
}

psString operator+(const psString& a, const char* b) {
    return a + psString(b);
}

psString operator+(const char* a, const psString& b) {
    return psString(a) + b;
}

psString operator+(const psString& a, int number) {
    return a + psText(number);
}

bool psStringList::contains(const psString& text) const {
    return std::ranges::find(*this, text) != end();
}

psParse::psParse(const psString& text, const psString& separators) : m_text(text) {
    for (char c : separators.view()) {
        if (c == '"')
            m_quote = true;
        else
            m_separators += psString(c);
    }
}

int psParse::parse(const psString& text, const psString& separators, psStringList& words) {
    psParse parser(text, separators);
    int count = 0;
    for (psString word; parser.nextWord(word); ++count) words.push_back(word);
    return count;
}

bool psParse::isSeparator(char c) const {
    return m_separators.view().find(c) != std::string_view::npos;
}

void psParse::skipSeparators() {
    while (m_position < m_text.length() && isSeparator(m_text[m_position])) ++m_position;
}

bool psParse::nextWord(psString& word) {
    if (m_quote) {
        while (nextWord_quote(word)) {
            if (!word.empty()) return true;
        }
        return false;
    }
    skipSeparators();
    if (m_position >= m_text.length()) return false;
    const int start = m_position;
    while (m_position < m_text.length() && !isSeparator(m_text[m_position])) ++m_position;
    word = m_text.substr(start, m_position - start);
    return true;
}

bool psParse::nextWord_quote(psString& word) {
    skipSeparators();
    if (m_position >= m_text.length()) return false;
    word.free();
    if (m_text[m_position] != '"') {
        while (m_position < m_text.length() && !isSeparator(m_text[m_position]))
            word += psString(m_text[m_position++]);
        return true;
    }
    for (++m_position; m_position < m_text.length(); ++m_position) {
        if (m_text[m_position] == '"') {
            if (m_text.substr(m_position + 1, 1) != "\"") {
                ++m_position;
                break;
            }
            ++m_position;
        }
        word += psString(m_text[m_position]);
    }
    return true;
}

namespace {

// Insertions, deletions and exchanges of one character that make b of a.
int editDistance(std::string_view a, std::string_view b) {
    std::vector<int> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (std::size_t i = 0; i < a.size(); ++i) {
        int diagonal = std::exchange(row[0], static_cast<int>(i) + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const int exchanged = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({exchanged, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

}  // namespace

psString psNearest(const psString& name, const psStringList& candidates) {
    const psString lower = name.toLower();
    psString nearest;
    int best = std::min(2, name.length() / 3) + 1;
    for (const psString& candidate : candidates) {
        const int distance = editDistance(lower.view(), candidate.toLower().view());
        if (distance >= best) continue;
        best = distance;
        nearest = candidate;
    }
    return nearest;
}

std::string_view psWithoutByteOrderMark(std::string_view text) {
    if (text.starts_with("\xef\xbb\xbf")) text.remove_prefix(3);
    return text;
}

psString psFormat(const char* format, ...) {
    std::va_list args;
    va_start(args, format);
    std::va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, args);
    va_end(args);
    psString text;
    if (length > 0) {
        text.resize(length);
        std::vsnprintf(&text[0], bytes(length) + 1, format, again);
    }
    va_end(again);
    return text;
}

psString psTimeText(double seconds) {
    const double whole = std::floor(std::max(seconds, 0.0));
    return psFormat("%02.0f:%02d:%02d", std::floor(whole / 3600),
                    static_cast<int>(std::fmod(whole, 3600) / 60),
                    static_cast<int>(std::fmod(whole, 60)));
}

psString psText(int value) {
    return psFormat("%d", value);
}
psString psText(unsigned value) {
    return psFormat("%u", value);
}
psString psText(long value) {
    return psFormat("%ld", value);
}
psString psText(unsigned long value) {
    return psFormat("%lu", value);
}
psString psText(long long value) {
    return psFormat("%lld", value);
}
psString psText(unsigned long long value) {
    return psFormat("%llu", value);
}
psString psText(float value) {
    return psFormat("%g", static_cast<double>(value));
}
psString psText(double value) {
    return psFormat("%g", value);
}
psString psText(bool value) {
    return value ? "1" : "0";
}
psString psText(const void* value) {
    return psFormat("%p", value);
}

namespace {

// strtoX reads a number at the front; the rest of the text must be blank.
template <class T, class Read>
bool wholeNumber(const psString& text, T& value, Read read) {
    psString trimmed(text);
    trimmed.trim();
    // The C library would skip blanks that trim() leaves, such as a vertical tab.
    if (trimmed.empty() || std::isspace(static_cast<unsigned char>(trimmed[0]))) return false;
    char* end = nullptr;
    errno = 0;
    const T number = read(trimmed.c_str(), &end);
    if (end != trimmed.c_str() + trimmed.length() || errno == ERANGE) return false;
    value = number;
    return true;
}

template <class T, class Read>
bool finiteNumber(const psString& text, T& value, Read read) {
    T number = 0;
    if (!wholeNumber(text, number, read) || !std::isfinite(number)) return false;
    value = number;
    return true;
}

template <class T>
bool narrowNumber(const psString& text, T& value, long long low, long long high) {
    long long wide = 0;
    if (!psFromText(text, wide) || wide < low || wide > high) return false;
    value = static_cast<T>(wide);
    return true;
}

}  // namespace

bool psFromText(const psString& text, long long& value) {
    return wholeNumber(text, value, [](const char* s, char** e) { return std::strtoll(s, e, 10); });
}

bool psFromText(const psString& text, int& value) {
    return narrowNumber(text, value, INT_MIN, INT_MAX);
}

bool psFromText(const psString& text, unsigned& value) {
    return narrowNumber(text, value, 0, UINT_MAX);
}

bool psFromText(const psString& text, double& value) {
    return finiteNumber(text, value, [](const char* s, char** e) { return std::strtod(s, e); });
}

bool psFromText(const psString& text, float& value) {
    return finiteNumber(text, value, [](const char* s, char** e) { return std::strtof(s, e); });
}

bool psFromText(const psString& text, bool& value) {
    return narrowNumber(text, value, 0, 1);
}

bool psFromText(const psString& text, void*& value) {
    if (text == "(nil)") {  // what %p makes of null
        value = nullptr;
        return true;
    }
    unsigned long long address = 0;
    if (!wholeNumber(text, address,
                     [](const char* s, char** e) { return std::strtoull(s, e, 16); }))
        return false;
    value = reinterpret_cast<void*>(address);
    return true;
}

psString enumString(int value, const int* values, const char* const* names, int n) {
    for (int i = 0; i < n; ++i) {
        if (values[i] == value) return names[i];
    }
    return psText(value);
}

psString flagString(int value, const int* flags, const char* const* names, int n) {
    if (value == 0) return enumString(0, flags, names, n);
    psString text;
    for (int i = 0; i < n; ++i) {
        if ((flags[i] & value) == 0) continue;
        if (!text.empty()) text += "|";
        text += names[i];
    }
    return text.empty() ? psText(value) : text;
}

bool fitString(const psString& name, const psString& text, int minLength) {
    return text.length() >= minLength && name.toLower().startsWith(text.toLower());
}

int enumValue(const psString& text, const int* values, const char* const* names, int n,
              int minLength) {
    for (int i = 0; i < n; ++i) {
        if (fitString(names[i], text, minLength)) return values[i];
    }
    return 0;
}

int flagValue(const psString& text, const int* flags, const char* const* names, int n,
              int minLength) {
    psStringList words;
    text.parse(words, "|,;");
    int value = 0;
    for (const psString& word : words) value |= enumValue(word, flags, names, n, minLength);
    return value;
}
