#include "pprmatr.h"

#include <climits>

#include "psdata.h"

pprMatrice::~pprMatrice() {
    pprMatrice::deleteVector();
}

bool pprMatrice::createMatrice(int rows, int columns, int step, int misalign) {
    deleteMatrice();
    const long long rowBytes = static_cast<long long>(item()) * columns;
    const long long chosen = step < 1 ? (rowBytes + 15) & -16LL : step;
    const bool possible = rows > 0 && columns > 0 && item() > 0;
    const long long bytes = possible ? blockSize(chosen, rows) : 0;
    const long long ptrBytes = static_cast<long long>(sizeof(void*)) * rows;
    if (bytes < 1 || bytes > INT_MAX) return allocateVector(bytes);  // says so and fails
    if (ptrBytes > INT_MAX) return allocateVector(ptrBytes);
    if (!checkStep(static_cast<int>(chosen), rowBytes)) return false;
    auto* rowPtrs = static_cast<void**>(psMalloc(static_cast<int>(ptrBytes), 0, 0, nullptr));
    if (!rowPtrs) return false;
    if (!allocateVector(bytes, misalign)) {
        psFree(rowPtrs);
        return false;
    }
    for (int row = 0; row < rows; ++row)
        rowPtrs[row] = static_cast<unsigned char*>(data()) + chosen * row;
    m_rowPtrs = rowPtrs;
    m_rows = rows;
    m_columns = columns;
    m_step = static_cast<int>(chosen);
    setLength(rows * columns);
    return true;
}

bool pprMatrice::createMatrice(int rows, int columns, SetMode mode, double a, double b) {
    return createMatriceExt(rows, columns, -1, mode, a, b);
}

bool pprMatrice::createMatriceExt(int rows, int columns, int misalign, SetMode mode, double a,
                                  double b) {
    return createMatrice(rows, columns, 0, misalign) && setVector(mode, a, b);
}

void pprMatrice::deleteVector() {
    psFree(m_rowPtrs);
    m_rowPtrs = nullptr;
    m_rows = m_columns = m_step = 0;
    ppVector::deleteVector();
}

psString pprMatrice::objectInfo() const {
    return psString("rMatrix ") + ppFunc::typeToString(type()) + " rows=" + m_rows +
           " columns=" + m_columns;
}

void* pprMatrice::getRowPointer(int row) const {
    return row >= 0 && row < m_rows ? m_rowPtrs[row] : nullptr;
}

void* pprMatrice::getPointerAt(int i) const {
    return i >= 0 && i < length() ? getPointerAt(i / m_columns, i % m_columns) : nullptr;
}

void* pprMatrice::getPointerAt(int row, int column) const {
    void* first = getRowPointer(row);
    if (!first || column < 0 || column >= m_columns) return nullptr;
    return static_cast<unsigned char*>(first) + static_cast<std::ptrdiff_t>(item()) * column;
}

double pprMatrice::getMatriceAt(int row, int column) const {
    double re = 0, im = 0;
    getMatriceAt(row, column, re, im);
    return re;
}

bool pprMatrice::getMatriceAt(int row, int column, double& re, double& im) const {
    return getElement(getPointerAt(row, column), re, im);
}

bool pprMatrice::setMatriceAt(int row, int column, double re, double im) {
    return setElement(getPointerAt(row, column), re, im);
}
