#include "fuzzentries.h"
#include "fuzzsupport.h"

namespace fuzzentry {

int vdaread(const uint8_t *data, size_t size)
{
    char *fn = fuzzsupport::asfile(data, size);
    envelope_t *ev = nullptr;
    datatree_t *tree = ::vdaread(fn, &ev, fuzzsupport::config("vda4905.tree"), nullptr);
    fuzzsupport::removefiles();
    // The configuration has its S511 and the file exists: a tree must come
    // back, whatever the lines hold.
    fuzzsupport::expect(tree != nullptr, "vdaread failed on a readable file");
    fuzzsupport::expect(ev == nullptr, "vdaread wrote the envelope");
    freedatatree(tree);
    return 1;
}

}  // namespace fuzzentry
