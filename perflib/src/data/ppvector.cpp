#include "ppvector.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "ppfill.h"
#include "psdata.h"
#include "psstream.h"

using enum MessageLevel;

unsigned ppVector::m_seed = 7;

namespace {

void* at(void* p, long long bytes) {
    return static_cast<unsigned char*>(p) + bytes;
}

const void* at(const void* p, long long bytes) {
    return static_cast<const unsigned char*>(p) + bytes;
}

// The misalignment that the session is set to, in bytes.
int sessionMisalign(int elementSize) {
    return psGetVectorAlign() * (psGetAlignByByte() ? 1 : elementSize);
}

template <class T>
void appendElement(std::string& text, const char* format, const void* p, bool complex) {
    char buffer[128];
    const int n = complex ? std::snprintf(buffer, sizeof buffer, format, ppLoad<T>(p),
                                          ppLoad<T>(at(p, sizeof(T))))
                          : std::snprintf(buffer, sizeof buffer, format, ppLoad<T>(p));
    text.append(buffer, static_cast<std::size_t>(n));
}

void appendElements(std::string& text, ppType type, const void* p, int n) {
    if (!p) return;
    const ppTypeInfo info = ppInfo(type);
    ppVisitType(type, [&]<class T>(T) {
        for (int i = 0; i < n; ++i)
            appendElement<T>(text, info.format, at(p, static_cast<long long>(i) * ppItem(type)),
                             ppIsComplex(type));
    });
}

}  // namespace

int ppMisalign::bytes(int elementSize) const {
    long long bytes = static_cast<long long>(m_k) * psGetVectorShift();
    if (m_k == 0 || !psGetAlignSrc()) bytes += sessionMisalign(elementSize);
    return static_cast<int>(std::clamp<long long>(bytes, INT_MIN, INT_MAX));
}

ppVector::~ppVector() {
    ppVector::deleteVector();
}

void ppVector::setName(const ppFunc& name) {
    m_name = name;
    m_type = m_name.type(0);
}

psString ppVector::nameOf(ppType type) {
    return psString("_") + ppFunc::typeToString(type) + "_";
}

void ppVector::init(ppType type) {
    deleteVector();
    setName(nameOf(type));
}

void ppVector::init(const ppFunc& f, int argIndex) {
    deleteVector();
    setName(nameOf(f.type(argIndex)) + f.channelsName(argIndex));
}

void ppVector::init(const ppFunc& f, ppArg arg) {
    deleteVector();
    setName(nameOf(f.type(arg)) + f.channelsName(arg));
}

bool ppVector::allocateVector(long long bytes, int misalign, void* owner) {
    deleteVector();
    if (bytes < 1 || bytes > INT_MAX) {
        g_ostrm << ERR << "-- Memory fail: can't allocate " << bytes << " bytes\n" << END;
        return false;
    }
    int shift = 0, offset = 0;
    if (misalign >= 0) {
        shift = misalign % PS_ALIGN_MAX;
        offset = misalign - shift;
    } else if (!psGetAlignSrc() || !psMallocHasData()) {
        shift = sessionMisalign(item());
    }
    if (!owner) owner = static_cast<psObject*>(this);
    void* block = psMalloc(static_cast<int>(bytes), shift, offset, owner);
    if (!block) return false;
    std::memset(block, 0, static_cast<std::size_t>(bytes));
    m_data = block;
    m_bytes = bytes;
    return true;
}

bool ppVector::createZeroed(int len, int misalign, void* owner) {
    if (!allocateVector(size(m_name, len), misalign, owner)) return false;
    m_len = len;
    return true;
}

bool ppVector::createVector(int len, int misalign, void* owner) {
    return createZeroed(len, misalign, owner) && setConst();
}

bool ppVector::createVector(int len, SetMode mode, double a, double b) {
    return createVector(len, -1) && setVector(mode, a, b);
}

bool ppVector::createVectorExt(int len, int /*misalign*/, SetMode mode, double a, double b) {
    return createVector(len, mode, a, b);
}

void ppVector::deleteVector() {
    psFree(m_data);
    m_data = nullptr;
    m_bytes = 0;
    m_len = 0;
    ppVector::deleteReservedCopy();
}

long long ppVector::size(const ppFunc& name, int len) {
    return static_cast<long long>(ppItem(name.type(1))) * len;
}

psString ppVector::objectInfo() const {
    return psString("Vector ") + ppFunc::typeToString(m_type) + " len=" + m_len;
}

int ppVector::reserveCopy() {
    deleteReservedCopy();
    if (!m_data) return false;
    const auto bytes = static_cast<std::size_t>(m_bytes);
    m_reserved.reset(new (std::nothrow) unsigned char[bytes]);
    if (!m_reserved) return false;
    std::memcpy(m_reserved.get(), m_data, bytes);
    return true;
}

int ppVector::setReservedCopy() {
    if (!m_data || !m_reserved) return false;
    std::memcpy(m_data, m_reserved.get(), static_cast<std::size_t>(m_bytes));
    return true;
}

void ppVector::deleteReservedCopy() {
    m_reserved.reset();
}

void* ppVector::getRowPointer(int /*row*/) const {
    return m_data;
}

template <class Fill>
bool ppVector::fillRows(Fill fill) {
    const int rows = getNumRows();
    for (int row = 0; row < rows; ++row) {
        if (!fill(getRowPointer(row), getRowLen())) return false;
    }
    return rows > 0;
}

bool ppVector::setConst() {
    const double value = ppIsFloat(m_type) ? 1.00001 : 2.0;
    return setConst(value, value);
}

bool ppVector::setConst(double re, double im) {
    return fillRows([=, this](void* p, int n) { return setDataConst(p, n, re, im); });
}

bool ppVector::setConst_64s(long long re, long long im) {
    if ((m_type & ~ppTypeComplex) != pp64s) return false;
    return fillRows([=, this](void* p, int n) { return ppFillConst64(m_type, p, n, re, im); });
}

bool ppVector::setMinValue() {
    if ((m_type & ~ppTypeComplex) == pp64s) return setConst_64s(LLONG_MIN, LLONG_MIN);
    return setConst(minValue(), minValue());
}

bool ppVector::setMaxValue() {
    if ((m_type & ~ppTypeComplex) == pp64s) return setConst_64s(LLONG_MAX, LLONG_MAX);
    return setConst(maxValue(), maxValue());
}

bool ppVector::setJaehne() {
    return setJaehne(ppIsFloat(m_type) ? 1.0 : (maxValue() - minValue()) / 2);
}

bool ppVector::setJaehne(double magnitude) {
    return fillRows([=, this](void* p, int n) { return setVectorJaehne(p, n, magnitude); });
}

bool ppVector::setSequence(double a, double b) {
    const int len = getRowLen();
    return len == 1 ? setConst(a, 0) : setSequence(a, b, (b - a) / (len - 1), true);
}

bool ppVector::setSequence(double start, double hi, double step, bool wrap) {
    return fillRows(
        [=, this](void* p, int n) { return setDataSequence(p, n, start, hi, step, wrap); });
}

bool ppVector::setRandom() {
    return ppIsFloat(m_type) ? setRandom(-1.0, 1.0) : setRandom(minValue(), maxValue());
}

bool ppVector::setRandom(double lo, double hi) {
    return fillRows([=, this](void* p, int n) { return setDataRandom(p, n, lo, hi); });
}

bool ppVector::setRandom(double lo, double hi, unsigned seed) {
    m_seed = seed;
    return setRandom(lo, hi);
}

bool ppVector::setVector(SetMode mode, double a, double b) {
    switch (mode) {
        case SET_DEFAULT:
            return setConst();
        case SET_ZERO:
            return setConst(0, 0);
        case SET_ONE:
            return setConst(1.0, 0);
        case SET_MAX:
            return setMaxValue();
        case SET_MIN:
            return setMinValue();
        case SET_CONST:
            return setConst(a, b);
        case SET_RANDOM:
            return a == b ? setRandom() : setRandom(a, b);
        case SET_SEQUENCE: {
            const int len = getRowLen();
            double step = (b - a) / (len > 0 ? len : 256);
            if (!ppIsFloat(m_type)) step = std::max(step, 1.0);
            return setSequence(a, b, step, true);
        }
    }
    return true;  // an unknown mode leaves the data as it is
}

bool ppVector::setDataConst(void* p, int n, double re, double im) const {
    return ppFillConst(m_type, p, n, re, im);
}

bool ppVector::setDataRandom(void* p, int n, double lo, double hi) const {
    return ppFillRandom(m_type, p, n, lo, hi, m_seed);
}

bool ppVector::setDataSequence(void* p, int n, double start, double hi, double step,
                               bool wrap) const {
    return ppFillSequence(m_type, p, n, start, hi, step, wrap);
}

bool ppVector::setVectorJaehne(void* p, int n, double magnitude) const {
    return ppFillJaehne(m_type, p, n, magnitude);
}

bool ppVector::updateJaehneMagn(double& magnitude, double& offset) const {
    return ppJaehneMagnitude(m_type, magnitude, offset);
}

bool ppVector::setIndex(int i, SetMode mode, double a, double b) {
    if (i < 0 || i >= m_len) return false;
    ppVector view(m_type);
    view.m_data = getPointerAt(i);
    view.m_len = 1;
    const bool done = view.setVector(mode, a, b);
    view.m_data = nullptr;  // it owns nothing
    return done;
}

double ppVector::getIndex(int i) const {
    double re = 0, im = 0;
    getIndex(i, re, im);
    return re;
}

bool ppVector::getIndex(int i, double& re, double& im) const {
    re = im = 0;
    return i >= 0 && i < m_len && getElement(getPointerAt(i), re, im);
}

void* ppVector::getPointerAt(int i) const {
    return m_data ? at(m_data, static_cast<long long>(item()) * i) : nullptr;
}

bool ppVector::getElement(const void* p, double& re, double& im) const {
    re = im = 0;
    return p && ppVisitType(m_type, [&]<class T>(T) {
               re = static_cast<double>(ppLoad<T>(p));
               if (ppIsComplex(m_type)) im = static_cast<double>(ppLoad<T>(at(p, sizeof(T))));
           });
}

bool ppVector::setElement(void* p, double re, double im) const {
    return p && setDataConst(p, 1, re, im);
}

long long ppVector::blockSize(long long step, long long rows) {
    if (step < 1 || rows < 1) return 0;
    return rows > LLONG_MAX / step ? LLONG_MAX : step * rows;
}

bool ppVector::checkStep(int step, long long rowBytes) const {
    if (step >= rowBytes && step % item() == 0) return true;
    g_ostrm << ERR << "-- Memory fail: step " << step << " does not fit rows of " << rowBytes
            << " bytes\n"
            << END;
    return false;
}

psString ppVector::getString() const {
    std::string text;
    const int rows = getNumRows();
    for (int row = 0; row < rows; ++row) {
        if (row > 0) text += row % planeRows() == 0 ? "\n\n" : "\n";
        appendElements(text, m_type, getRowPointer(row), getRowLen());
    }
    return psString(std::string_view(text));
}

psString ppVector::getDataString(ppType type, const void* p, int n) {
    std::string text;
    appendElements(text, type, p, n);
    return psString(std::string_view(text));
}

psString ppVector::getByteString(const void* p, int n) {
    if (!p || n < 1) return {};
    std::string text;
    char buffer[8];
    for (int i = 0; i < n; ++i) {
        std::snprintf(buffer, sizeof buffer, " %02X", ppLoad<unsigned char>(at(p, i)));
        text += buffer;
    }
    return psString(std::string_view(text));
}
