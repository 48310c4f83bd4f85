// Work memory of a library function: bytes of the test-data allocator without
// an element type.
#pragma once

#include "psdata.h"

class ppBuffer {
  public:
    ppBuffer() = default;
    ppBuffer(const ppBuffer&) = delete;
    ppBuffer& operator=(const ppBuffer&) = delete;
    ~ppBuffer() { release(); }

    // False, after the allocator's message, when there is no memory.
    bool create(int size) {
        release();
        m_data = psMalloc(size, 0, 0, psBufferOwner());
        return m_data != nullptr;
    }
    void release() {
        psFree(m_data);
        m_data = nullptr;
    }
    unsigned char* get() const { return static_cast<unsigned char*>(m_data); }

  private:
    void* m_data = nullptr;
};
