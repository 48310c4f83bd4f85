// A folder of a test's own, removed with everything in it.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "psstring.h"

class TempDir {
  public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "pscvXXXXXX").string();
        m_path = mkdtemp(pattern.data());
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir() { std::filesystem::remove_all(m_path); }

    const std::string& path() const { return m_path; }
    psString operator/(const char* name) const { return psString((m_path + "/" + name).c_str()); }

    psString write(const char* name, const std::string& content) const {
        std::ofstream(m_path + "/" + name, std::ios::binary) << content;
        return *this / name;
    }
    std::string read(const char* name) const {
        std::ifstream file(m_path + "/" + name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::string m_path;
};

// So that GoogleTest compares and prints these as texts.
inline std::string str(const psString& text) {
    return std::string(text.view());
}
