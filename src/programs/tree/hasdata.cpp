#include "../debug.h"
#include "tree.h"

namespace ediprot {

// 1 if `tree` or anything below it holds a value; "" counts as a value.
// The siblings of `tree` are not looked at.
int hasdata(datatree_t *tree)
{
    if (tree->data != nullptr) {
        TRACE(2, "data in <%s>: <%s>\n", tree->xmltag, tree->data);
        return 1;
    }
    for (datatree_t *cp = tree->child; cp != nullptr; cp = cp->next)
        if (hasdata(cp))
            return 1;
    return 0;
}

}  // namespace ediprot
