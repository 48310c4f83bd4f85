// The bytes of an ini-file: what was read once is read alike after rewriting.
#include "fuzz.h"
#include "psinifile.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    psIniFile first;
    first.readText(reinterpret_cast<const char*>(data), size);
    const psString text = first.writeText();
    psIniFile second;
    second.readText(text.c_str(), static_cast<std::size_t>(text.length()));
    const psString again = second.writeText();
    psIniFile third;
    third.readText(again.c_str(), static_cast<std::size_t>(again.length()));
    fuzzExpect(third.writeText() == again);
    return 0;
}
