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
        std::fclose(m_file);
    }

    // Everything written so far.
    std::string text() {
        std::fflush(m_file);
        std::rewind(m_file);
        std::string all;
        for (int c = std::getc(m_file); c != EOF; c = std::getc(m_file))
            all.push_back(static_cast<char>(c));
        return all;
    }

  private:
    psOutLevelGuard m_level;
    std::FILE* m_file = std::tmpfile();
    o_stream m_sink;
    psSinkList m_own;
};
