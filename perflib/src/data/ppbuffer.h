// Work memory of a library function: bytes of the test-data allocator without
// an element type.
#pragma once

#include <cstdint>

#include "psdata.h"

class ppBuffer {
  public:
    ppBuffer() = default;
    ppBuffer(const ppBuffer&) = delete;
    ppBuffer& operator=(const ppBuffer&) = delete;
    ~ppBuffer() { release(); }

    // False, after a message, when there is no memory.
    bool create(int64_t size);
    void release() {
        psFree(m_data);
        m_data = nullptr;
    }
    unsigned char* get() const { return static_cast<unsigned char*>(m_data); }

  private:
    void* m_data = nullptr;
};
