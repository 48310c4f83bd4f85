// Version records: one a level, because the text ends with the level in use.
#pragma once

#include "common/level.h"

namespace zmo {

class VersionRecords {
  public:
    constexpr explicit VersionRecords(const char* name)
        : m_records{record(name, ZMO_VERSION " sse2"), record(name, ZMO_VERSION " sse42"),
                    record(name, ZMO_VERSION " avx2"), record(name, ZMO_VERSION " avx512")} {}

    const ZmoLibraryVersion* inUse() const { return &m_records[currentLevel()]; }

  private:
    static constexpr ZmoLibraryVersion record(const char* name, const char* version) {
        return {ZMO_VERSION_MAJOR, ZMO_VERSION_MINOR, 0, name, version, __DATE__};
    }

    ZmoLibraryVersion m_records[levelCount];
};

}  // namespace zmo
