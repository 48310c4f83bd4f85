// What g_ostrm writes during a scope, at a level of its own; the sinks and the
// level of before are back at its end.
#pragma once

#include <cstdio>
#include <string>

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
    std::string text() { return from(0); }
    // The text since the last call.
    std::string take() {
        const std::string part = from(m_taken);
        m_taken += static_cast<long>(part.size());
        return part;
    }

  private:
    std::string from(long begin) {
        m_sink.flush();
        std::fseek(m_file, begin, SEEK_SET);
        std::string part;
        for (int c = std::getc(m_file); c != EOF; c = std::getc(m_file))
            part.push_back(static_cast<char>(c));
        std::fseek(m_file, 0, SEEK_END);
        return part;
    }

    psOutLevelGuard m_level;
    std::FILE* m_file = std::tmpfile();
    o_stream m_sink;
    psSinkList m_own;
    long m_taken = 0;
};
