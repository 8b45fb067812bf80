// The input bytes as a tree in the tree text format, handed to both
// writers: as the data tree with the bundled configurations, and, when the
// first byte is odd, as the configuration of itself.
#include <unistd.h>

#include "edihost.h"
#include "fuzzsupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzzsupport::quiet();
    if (size == 0)
        return 0;
    bool asconfig = (data[0] & 1) != 0;
    datatree_t *tree = edihost_parsetree(reinterpret_cast<const char *>(data + 1), size - 1, "fuzz");
    if (tree == nullptr)
        return 0;
    char sender[] = "SENDER";
    char recipient[] = "RECIPIENT";
    char *out = fuzzsupport::outname();
    datatree_t *edicf = asconfig ? tree : fuzzsupport::config("orders-d96a-out.tree");
    datatree_t *vdacf = asconfig ? tree : fuzzsupport::config("vda4905.tree");
    edifactwrite(tree, out, nullptr, nullptr, edicf, sender, recipient, 0);
    vdawrite(tree, out, nullptr, nullptr, vdacf, sender, recipient, 0);
    unlink(out);
    freedatatree(tree);
    return 0;
}
