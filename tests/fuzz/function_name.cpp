// Names of functions: every part can be asked for.
#include "fuzz.h"
#include "ppfunc.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ppFunc name(fuzzText(data, size));
    for (int i = 0; i <= 3; ++i) name.type(i);
    for (int i = 1; i <= 2; ++i) {
        name.channels(i);
        name.zmoChannels(i);
        name.plane(i);
        name.alpha(i);
    }
    ppType src, src2, dst, dst2;
    name.getTypes(src, src2, dst, dst2);
    name.coi();
    fuzzExpect(name.compare(name) == 0);
    return 0;
}
