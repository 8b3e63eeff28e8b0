// libFuzzer target over every export, on headers built from the input.
#include "header_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    zanfuzz::runHeaderInput(data, size);
    return 0;
}
