// The bytes of a picture.
#include "fuzz.h"
#include "ppbmpfile.h"
#include "ppimage.h"
#include "psdata.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const FuzzFile file(data, size);
    {
        ppImage image;
        ppBmpFile(image).load(file.path());
    }
    psFreeAll();
    return 0;
}
