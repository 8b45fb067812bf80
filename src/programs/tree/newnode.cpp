#include <stdlib.h>

#include "tree.h"

namespace ediprot {

datatree_t *newnode(void)
{
    // calloc: zero-filled as a whole, and freeable by the host's free().
    datatree_t *tp = static_cast<datatree_t *>(calloc(1, sizeof(datatree_t)));
    if (tp == nullptr) {
        fputs("ediprot: out of memory\n", stderr);
        abort();
    }
    return tp;
}

}  // namespace ediprot
