// Words of a command line, one a line: paired into keys, each key echoed.
#include "fuzz.h"
#include "pscmdline.h"
#include "pscond.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    psStringList words;
    psParse::parse(fuzzText(data, size), "\n", words);
    psCommandList list;
    list.setArgs(words);
    for (const psCommandKey& entry : list) {
        psString arg;
        fuzzExpect(entry.getArg(entry.key(), arg) && arg == entry.arg());
        getCondition(arg);
    }
    fuzzExpect((--list.end())->key() == ' ');
    return 0;
}
