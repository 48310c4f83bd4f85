// Collects what the message stream writes while it lives.
#pragma once

#include <algorithm>
#include <cstdio>
#include <string>

#include "psstream.h"

class Capture {
  public:
    explicit Capture(OutputLevel level) : m_level(level) { g_ostrm.push_back(&m_sink); }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;
    ~Capture() {
        g_ostrm.erase(std::find(g_ostrm.begin(), g_ostrm.end(), &m_sink));
        std::fclose(m_file);
    }

    // The text since the last call.
    std::string take() {
        std::fflush(m_file);
        const long end = std::ftell(m_file);
        std::string text(static_cast<std::size_t>(end - m_taken), '\0');
        std::fseek(m_file, m_taken, SEEK_SET);
        const std::size_t got = std::fread(text.data(), 1, text.size(), m_file);
        text.resize(got);
        std::fseek(m_file, 0, SEEK_END);
        m_taken = end;
        return text;
    }

  private:
    std::FILE* m_file = std::tmpfile();
    o_stream m_sink{m_file};
    psOutLevelGuard m_level;
    long m_taken = 0;
};
