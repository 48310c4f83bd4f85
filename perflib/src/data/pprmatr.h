// Test matrices: rows of one data block, reached through an array of pointers.
#pragma once

#include "ppvector.h"

class pprMatrice : public ppVector {
  public:
    pprMatrice() = default;
    explicit pprMatrice(ppType type) : ppVector(type) {}
    pprMatrice(const ppFunc& f, int argIndex) : ppVector(f, argIndex) {}
    pprMatrice(const ppFunc& f, ppArg arg) : ppVector(f, arg) {}
    ~pprMatrice() override;

    int rows() const { return m_rows; }
    int columns() const { return m_columns; }
    int step() const { return m_step; }  // bytes from row to row
    void* const* rowPtrs() const { return m_rowPtrs; }

    // Zeroed. A step below 1 is chosen: the next multiple of 16 bytes.
    bool createMatrice(int rows, int columns, int step = 0, int misalign = -1);
    bool createMatrice(int rows, int columns, int rowStep, ppMisalign place) {
        return createMatrice(rows, columns, rowStep, place.bytes(item()));
    }
    bool createMatrice(int rows, int columns, SetMode mode, double a = 0, double b = 0);
    bool createMatriceExt(int rows, int columns, int misalign, SetMode mode, double a = 0,
                          double b = 0);
    void deleteMatrice() { deleteVector(); }
    void deleteVector() override;

    psString objectInfo() const override;
    int getNumRows() const override { return m_rows; }
    int getRowLen() const override { return m_columns; }
    void* getRowPointer(int row) const override;

    // Null, 0 or false for a place that is not in the matrix.
    void* getPointerAt(int i) const override;
    void* getPointerAt(int row, int column) const;
    double getMatriceAt(int row, int column) const;
    bool getMatriceAt(int row, int column, double& re, double& im) const;
    bool setMatriceAt(int row, int column, double re, double im = 0);

  private:
    int m_rows = 0;
    int m_columns = 0;
    int m_step = 0;
    void** m_rowPtrs = nullptr;
};
