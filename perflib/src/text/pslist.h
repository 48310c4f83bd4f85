// The system's list, and the interface of test data.
#pragma once

#include <list>

class psString;

// A std::list with what the system's lists need besides: a virtual destructor for
// those derived from it, and a size that is an int.
template <class T>
class psList : public std::list<T> {
  public:
    psList() = default;
    psList(const psList&) = default;
    psList(psList&&) noexcept = default;
    psList& operator=(const psList&) = default;
    psList& operator=(psList&&) noexcept = default;
    virtual ~psList() = default;

    int size() const { return static_cast<int>(std::list<T>::size()); }
};

// What test data can do: report size and description, and keep a copy
// of themselves that is put back between timed calls.
class psObject {
  public:
    psObject() = default;
    psObject(const psObject&) = default;
    psObject& operator=(const psObject&) = default;
    virtual ~psObject() = default;

    virtual int objectSize() const;
    virtual psString objectInfo() const;
    virtual int reserveCopy();
    virtual int setReservedCopy();
    virtual void deleteReservedCopy();
};
