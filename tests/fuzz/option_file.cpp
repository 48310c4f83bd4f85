// The bytes of an option file.
#include "fuzz.h"
#include "pscmdline.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const FuzzFile file(data, size);
    psCommandList list;
    list.setArgs("-B -fCanny");
    fuzzExpect(list.insertFromFile(file.path(), ++list.begin()));
    psString arg;
    fuzzExpect(list.front().key() == 'B' && (--list.end())->key() == ' ');
    fuzzExpect(list.getArg('f', arg) && arg == "Canny");
    return 0;
}
