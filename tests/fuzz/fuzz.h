// What the harnesses share: the input as text, and as a file that a loader opens.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "psstring.h"

// Bytes up to the first NUL, as every text of the system ends there.
inline psString fuzzText(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    return text.c_str();
}

// A file in memory, removed with the object.
class FuzzFile {
  public:
    FuzzFile(const std::uint8_t* data, std::size_t size) : m_handle(memfd_create("fuzz", 0)) {
        if (m_handle < 0 || write(m_handle, data, size) != static_cast<ssize_t>(size)) std::abort();
    }
    FuzzFile(const FuzzFile&) = delete;
    FuzzFile& operator=(const FuzzFile&) = delete;
    ~FuzzFile() { close(m_handle); }

    psString path() const { return psFormat("/proc/self/fd/%d", m_handle); }

  private:
    int m_handle;
};

// Assertions of the harnesses: they hold in every build.
inline void fuzzExpect(bool holds) {
    if (!holds) std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
