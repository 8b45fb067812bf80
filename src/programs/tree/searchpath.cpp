// searchpath: the lookup of the input side, on trees the module has just
// built.  The first component is compared with `head` alone, ignoring case;
// the rest is looked for among head's children in order, and a child that
// matches by name but fails further down does not end the search.
//
// Paths are walked in place, so a path of any length is handled without a
// working copy.
#include <string.h>
#include <strings.h>

#include "tree.h"

namespace ediprot {

datatree_t *searchpath(datatree_t *head, const char *path)
{
    const char *dot = strchr(path, '.');
    size_t n = dot != nullptr ? static_cast<size_t>(dot - path) : strlen(path);

    if (strlen(head->xmltag) != n || strncasecmp(head->xmltag, path, n) != 0)
        return nullptr;
    if (dot == nullptr)
        return head;
    for (datatree_t *tp = head->child; tp != nullptr; tp = tp->next) {
        datatree_t *found = searchpath(tp, dot + 1);
        if (found != nullptr)
            return found;
    }
    return nullptr;
}

}  // namespace ediprot
