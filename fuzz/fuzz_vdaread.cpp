// The input bytes as a VDA record file, read with the VDA 4905 configuration.
#include "fuzzsupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzzsupport::quiet();
    char *fn = fuzzsupport::asfile(data, size);
    envelope_t *ev = nullptr;
    datatree_t *tree = vdaread(fn, &ev, fuzzsupport::config("vda4905.tree"), nullptr);
    if (tree != nullptr)
        freedatatree(tree);
    return 0;
}
