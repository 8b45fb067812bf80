// The input bytes as an EDIFACT file: read once with the bundled ORDERS
// configuration handed in, and once with the configuration chosen from
// the file through the service configurations.
#include <stdlib.h>

#include "fuzzsupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzzsupport::quiet();
    fuzzsupport::loadservconf();
    char *fn = fuzzsupport::asfile(data, size);
    for (datatree_t *inhead : {fuzzsupport::config("orders-d96a-in.tree"),
                               static_cast<datatree_t *>(nullptr)}) {
        envelope_t *ev = nullptr;
        datatree_t *tree = edifactread(fn, &ev, inhead, nullptr);
        if (tree != nullptr)
            freedatatree(tree);
        if (ev != nullptr) {
            free(ev->servconftag);
            free(ev);
        }
    }
    return 0;
}
