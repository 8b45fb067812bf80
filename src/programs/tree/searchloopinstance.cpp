#include <string.h>

#include "tree.h"

namespace ediprot {

// A writer counts through the instances of a loop until one is missing.
// searchlooppath alone cannot say "missing" where a childless node above
// the loop answers every number, so the instance counts only when the
// whole path was matched down to a loop node of the same name.
datatree_t *searchloopinstance(const char *path, const char *lb,
                               datatree_t *head, const char *looptag)
{
    if (path == nullptr)
        return nullptr;
    int complete = 0;
    datatree_t *xnode = searchlooppath(path, lb, head, &complete);
    if (xnode == nullptr || !complete || xnode->xmltag[0] != '*' ||
        strcmp(xnode->xmltag, looptag) != 0)
        return nullptr;
    return xnode;
}

}  // namespace ediprot
