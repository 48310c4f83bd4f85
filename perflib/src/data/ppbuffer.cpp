#include "ppbuffer.h"

#include <climits>

#include "psstream.h"

bool ppBuffer::create(int64_t size) {
    release();
    if (size > INT_MAX) {
        g_ostrm << MessageLevel::ERR << "-- The library asks for more than 2 GB of work memory\n"
                << MessageLevel::END;
        return false;
    }
    m_data = psMalloc(static_cast<int>(size), 0, 0, psBufferOwner());
    return m_data != nullptr;
}
