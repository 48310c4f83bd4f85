// What the tests of parameters share.
#pragma once

#include <cstdio>

#include "psdefault.h"
#include "psexcept.h"
#include "psistream.h"
#include "temp_dir.h"

// What a parameter says of a text; empty when it takes the text.
inline std::string failure(psParameter& parm, const char* text) {
    try {
        parm.translate(text);
    } catch (const psException& exception) {
        return str(exception.info());
    }
    return "";
}

// A console whose input is a text.
class Console {
  public:
    explicit Console(const char* input) : m_file(std::tmpfile()), stream(m_file) {
        std::fputs(input, m_file);
        std::rewind(m_file);
    }
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;
    ~Console() { std::fclose(m_file); }

  private:
    std::FILE* m_file;

  public:
    i_stream stream;
};
