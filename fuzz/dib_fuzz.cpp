// libFuzzer target over the DIB readers.
#include "dib_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    zanfuzz::runDibInput(data, size);
    return 0;
}
