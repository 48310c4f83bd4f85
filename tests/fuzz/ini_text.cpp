// The bytes of an ini-file: what was read once is read alike after rewriting.
#include "fuzz.h"
#include "psinifile.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto rewritten = [](std::string_view text) {
        psIniFile ini;
        ini.readText(text.data(), text.size());
        return ini.writeText();
    };
    const psString once = rewritten({reinterpret_cast<const char*>(data), size});
    const psString twice = rewritten(once.view());
    fuzzExpect(rewritten(twice.view()) == twice);
    return 0;
}
