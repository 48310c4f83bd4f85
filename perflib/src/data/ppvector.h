// Test vectors: typed, aligned (or on purpose misaligned) data with reproducible
// contents.
#pragma once

#include <memory>

#include "ppfunc.h"
#include "pptype.h"
#include "pslist.h"

enum class SetMode : int {
    SET_DEFAULT = 0,
    SET_ZERO = 1,
    SET_ONE = 2,
    SET_MAX = 3,
    SET_MIN = 4,
    SET_CONST = 5,
    SET_RANDOM = 6,    // between the two values, or the type's range when they are equal
    SET_SEQUENCE = 7,  // from the first to the second value
};
using enum SetMode;

// The place of vector k of a test: the mutual shift of the session's vectors and,
// for the vectors that it asks to misalign, the misalignment. That may count
// elements, so only the vector that is put there can turn it into bytes: it is no number.
class ppMisalign {
  public:
    explicit ppMisalign(int k) : m_k(k) {}
    int bytes(int elementSize) const;

  private:
    int m_k;
};

// A block of test data that its object owns. Type and channels come from its
// name, a function name such as "_16s_C3". Creations, fills and copies return
// false when there is nothing to work on. Objects may be built before main and
// destroyed after it: the constructors allocate no test data.
//
// The fills go row by row; a vector is one row. Descendants say where their rows
// lie.
class ppVector : public psObject {
  public:
    // Shared by all data of the process; every random fill moves it on.
    static unsigned m_seed;

    ppVector() = default;
    explicit ppVector(ppType type) { setName(nameOf(type)); }
    ppVector(const ppFunc& f, int arg) { setName(nameOf(f.type(arg)) + f.channelsName(arg)); }
    ppVector(const ppFunc& f, ppArg arg) { setName(nameOf(f.type(arg)) + f.channelsName(arg)); }
    ppVector(const ppVector&) = delete;
    ppVector& operator=(const ppVector&) = delete;
    ~ppVector() override;

    // Each releases the data and sets type and name, the latter two for an
    // argument of a function.
    void init(ppType type);
    void init(const ppFunc& f, int argIndex);
    void init(const ppFunc& f, ppArg arg);

    // A misalignment >= 0 moves the block by so many bytes from a boundary; a
    // negative one means the misalignment that the session is set to, for the
    // test's first data block alone or for all. The owner (a psObject, perhaps
    // tagged) is by default the vector. The block is zeroed.
    bool allocateVector(long long bytes, int misalign = -1, void* owner = nullptr);
    bool createZeroed(int len, int misalign = -1, void* owner = nullptr);
    bool createZeroed(int len, ppMisalign place) { return createZeroed(len, place.bytes(item())); }
    bool createVector(int len, int misalign = -1, void* owner = nullptr);
    bool createVector(int len, ppMisalign place) { return createVector(len, place.bytes(item())); }
    bool createVector(int len, SetMode mode, double a = 0, double b = 0);
    // Does not use its misalignment; the session's setting places the vector.
    bool createVectorExt(int len, int misalign, SetMode mode, double a = 0, double b = 0);
    virtual void deleteVector();

    const ppFunc& name() const { return m_name; }
    ppType type() const { return m_type; }
    int item() const { return ppItem(m_type); }
    int length() const { return m_len; }
    void* data() const { return m_data; }
    virtual const void* getDataConst() const { return m_data; }
    virtual void* getReservedData() const { return m_reserved.get(); }
    virtual long long size() const { return m_bytes; }
    static long long size(const ppFunc& name, int len);

    int objectSize() const override { return static_cast<int>(size()); }
    psString objectInfo() const override;
    int reserveCopy() override;
    int setReservedCopy() override;
    void deleteReservedCopy() override;

    virtual int getNumRows() const { return m_data ? 1 : 0; }
    virtual int getRowLen() const { return m_len; }
    virtual void* getRowPointer(int row) const;

    static double getMinValue(ppType type) { return ppInfo(type).min; }
    static double getMaxValue(ppType type) { return ppInfo(type).max; }
    static double getMinAbsValue(ppType type) { return ppInfo(type).minAbs; }
    double minValue() const { return getMinValue(m_type); }
    double maxValue() const { return getMaxValue(m_type); }
    double getMaxValue() const { return maxValue(); }

    virtual bool setConst();
    virtual bool setConst(double re, double im);
    virtual bool setConst_64s(long long re, long long im);  // 64s and 64sc only
    virtual bool setMinValue();
    virtual bool setMaxValue();
    virtual bool setJaehne();
    virtual bool setJaehne(double magnitude);
    virtual bool setSequence(double a, double b);
    virtual bool setSequence(double start, double hi, double step, bool wrap);
    virtual bool setRandom();
    virtual bool setRandom(double lo, double hi);
    virtual bool setRandom(double lo, double hi, unsigned seed);
    virtual bool setVector(SetMode mode, double a, double b);

    // The fills on n elements of the vector's type at p.
    bool setDataConst(void* p, int n, double re, double im) const;
    bool setDataRandom(void* p, int n, double lo, double hi) const;
    bool setDataSequence(void* p, int n, double start, double hi, double step, bool wrap) const;
    bool setVectorJaehne(void* p, int n, double magnitude) const;
    bool updateJaehneMagn(double& magnitude, double& offset) const;

    // One element; an index that is not there gives 0 or false.
    virtual bool setIndex(int i, SetMode mode, double a, double b);
    virtual double getIndex(int i) const;
    virtual bool getIndex(int i, double& re, double& im) const;
    virtual void* getPointerAt(int i) const;
    bool getElement(const void* p, double& re, double& im) const;

    // The elements, a line each row.
    virtual psString getString() const;
    static psString getDataString(ppType type, const void* p, int n);
    static psString getByteString(const void* p, int n);

    // The data under the C type of the elements; null unless that is the
    // vector's type.
    unsigned char* ptr8u() const { return alias<unsigned char>(pp8u); }
    unsigned short* ptr16u() const { return alias<unsigned short>(pp16u); }
    unsigned* ptr32u() const { return alias<unsigned>(pp32u); }
    unsigned long long* ptr64u() const { return alias<unsigned long long>(pp64u); }
    signed char* ptr8s() const { return alias<signed char>(pp8s); }
    short* ptr16s() const { return alias<short>(pp16s); }
    int* ptr32s() const { return alias<int>(pp32s); }
    long long* ptr64s() const { return alias<long long>(pp64s); }
    float* ptr32f() const { return alias<float>(pp32f); }
    double* ptr64f() const { return alias<double>(pp64f); }
    ppComplex<unsigned short>* ptr16uc() const { return alias<ppComplex<unsigned short>>(pp16uc); }
    ppComplex<signed char>* ptr8sc() const { return alias<ppComplex<signed char>>(pp8sc); }
    ppComplex<short>* ptr16sc() const { return alias<ppComplex<short>>(pp16sc); }
    ppComplex<int>* ptr32sc() const { return alias<ppComplex<int>>(pp32sc); }
    ppComplex<long long>* ptr64sc() const { return alias<ppComplex<long long>>(pp64sc); }
    ppComplex<float>* ptr32fc() const { return alias<ppComplex<float>>(pp32fc); }
    ppComplex<double>* ptr64fc() const { return alias<ppComplex<double>>(pp64fc); }

  protected:
    static psString nameOf(ppType type);
    void setName(const ppFunc& name);
    void setLength(int len) { m_len = len; }
    // Bytes of so many rows, or the largest number when 64 bits do not hold them;
    // 0 for nothing or less.
    static long long blockSize(long long step, long long rows);
    // False, after a message, when rows of so many bytes do not fit into the step.
    bool checkStep(int step, long long rowBytes) const;
    // Printed text has an empty line after so many rows.
    virtual int planeRows() const { return getNumRows(); }
    // Stores one element, converted as the fills convert.
    bool setElement(void* p, double re, double im) const;

  private:
    template <class T>
    T* alias(ppType type) const {
        return m_type == type ? static_cast<T*>(m_data) : nullptr;
    }
    template <class Fill>
    bool fillRows(Fill fill);

    void* m_data = nullptr;
    std::unique_ptr<unsigned char[]> m_reserved;
    long long m_bytes = 0;
    int m_len = 0;
    ppFunc m_name;
    ppType m_type = 0;
};
