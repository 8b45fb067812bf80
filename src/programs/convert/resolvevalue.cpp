// Placeholder until the value rule lands: the value in the data tree only.
#include "../internal.h"

namespace ediprot {

char *resolvevalue(datatree_t *tp, datatree_t *head, const char *lb)
{
    char *path = pathfornode(tp, 0);
    if (path == nullptr)
        return nullptr;
    datatree_t *dnode = searchlooppath(path, lb, head);
    return dnode != nullptr ? dnode->data : nullptr;
}

}  // namespace ediprot
