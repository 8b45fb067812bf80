// The libFuzzer target of one entry: FUZZ_ENTRY names it (set per target
// in CMakeLists.txt).
#include "fuzzentries.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzzentry::FUZZ_ENTRY(data, size);
    return 0;
}
