// A folder of a test's own in the framework's strings.
#pragma once

#include <string>

#include "process.h"
#include "psstring.h"

class TempDir : public support::TempDir {
  public:
    std::string path() const { return support::TempDir::path().string(); }
    psString operator/(const char* name) const { return file(name).c_str(); }

    psString write(const char* name, const std::string& content) const {
        support::writeFile(file(name), content);
        return *this / name;
    }
    std::string read(const char* name) const { return support::readFile(file(name)); }
};

// So that GoogleTest compares and prints these as texts.
inline std::string str(const psString& text) {
    return std::string(text.view());
}
