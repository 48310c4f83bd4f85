// What a function reads and what it brings back, as its test names it.
#pragma once

#include <type_traits>

#include "ppbuffer.h"
#include "ppimage.h"

// Scratch is what a call may leave in any condition: work memory and the inside of states.
enum class ppRole { in, out, inOut, scratch };

// The element type of a number.
template <class T>
constexpr ppType ppTypeOf() {
    constexpr int bits = 8 * static_cast<int>(sizeof(T));
    if constexpr (std::is_floating_point_v<T>)
        return bits | ppTypeFloat;
    else
        return bits | (std::is_signed_v<T> ? ppTypeSigned : 0);
}

// An image, a vector, numbers or a buffer, seen as rows of elements. It refers to the test's data
// and is valid as long as these are.
class ppArgument {
  public:
    // A call touches so many of the elements, or all of them where that is negative.
    ppArgument(ppRole role, const char* name, const ppVector& vector, double touched);
    ppArgument(ppRole role, const char* name, ppType type, const void* data, int count);
    ppArgument(ppRole role, const char* name, const ppBuffer& buffer);

    ppRole role() const { return m_role; }
    const char* name() const { return m_name; }
    ppType type() const { return m_type; }
    // Element i of a row is channel i % channels() of pixel i / channels().
    int channels() const { return m_channels; }
    int rows() const { return m_rows; }
    int rowLength() const { return m_length; }
    long long rowBytes() const { return static_cast<long long>(m_length) * ppItem(m_type); }
    const void* row(int y) const { return m_vector ? m_vector->getRowPointer(y) : m_data; }

    bool isRead() const { return m_role == ppRole::in || m_role == ppRole::inOut; }
    bool isResult() const { return m_role == ppRole::out || m_role == ppRole::inOut; }
    // What one call reads, once, and what it writes.
    double trafficBytes() const;

  private:
    ppRole m_role;
    const char* m_name;
    ppType m_type;
    int m_channels = 1;
    int m_rows = 1;
    int m_length = 0;
    const ppVector* m_vector = nullptr;
    const void* m_data = nullptr;
    double m_touched = -1;
};
