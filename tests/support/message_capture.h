// What g_ostrm writes during a scope, at a level of its own; the sinks and the
// level of before are back at its end.
#pragma once

#include <cstdio>
#include <string>

#include "process.h"
#include "psstream.h"

class MessageCapture {
  public:
    explicit MessageCapture(OutputLevel level) : m_level(level), m_sink(m_file) {
        m_own.push_back(&m_sink);
        g_ostrm.swap(m_own);
    }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;
    ~MessageCapture() {
        g_ostrm.swap(m_own);
        m_sink.close();
        std::fclose(m_file);
    }

    // Everything written so far.
    std::string text() {
        m_sink.flush();
        return support::readFile("/proc/self/fd/" + std::to_string(fileno(m_file)));
    }
    // The text since the last call.
    std::string take() {
        const std::string part = text().substr(m_taken);
        m_taken += part.size();
        return part;
    }

  private:
    psOutLevelGuard m_level;
    std::FILE* m_file = std::tmpfile();
    o_stream m_sink;
    psSinkList m_own;
    std::size_t m_taken = 0;
};
