// The value rule of the writers: for one element of a configuration tree,
// the value in the data tree under the loop numbers at hand, else what its
// default function yields, else its default text.  A mandatory element
// that ends up without a value is reported and counted in errcnt; the walk
// goes on either way.  Converting the value is left to the caller, which
// also decides what "no value" means for its format.
#include <stdio.h>

#include "../debug.h"
#include "../state.h"
#include "../tree/tree.h"
#include "convert.h"

namespace ediprot {

char *resolvevalue(datatree_t *tp, datatree_t *head, const char *lb)
{
    datatree_t *dnode = nullptr;
    char *path = pathfornode(tp, 0);
    if (path == nullptr) {
        fprintf(stderr, "path for node <%s> not found\n", tp->xmltag);
    } else {
        dnode = searchlooppath(path, lb, head);
        TRACE(2, "%d: searchlooppath path <%s>, loop <%s>, %p\n", __LINE__, path, lb,
              static_cast<void *>(dnode));
    }
    return resolvefound(tp, dnode);
}

char *resolvefound(datatree_t *tp, datatree_t *dnode)
{
    char *value = nullptr;
    bool found = false;
    // An empty text in the data tree is a value too: no default is asked.
    if (dnode != nullptr && dnode->data != nullptr) {
        value = dnode->data;
        found = true;
    }

    if (!found) {
        // An unknown function name yields "" and so keeps defval out as well.
        if (tp->deffunc != nullptr)
            value = execdeffunc(tp->deffunc);
        if (value == nullptr)
            value = tp->defval;
    }

    if ((value == nullptr || value[0] == '\0') && tp->ediforce == ef_mand) {
        const char *where = pathfornode(tp, 0);
        fprintf(stderr, "%s (%d): mandatory element <%s> missing\n",
                tp->file != nullptr ? tp->file : "no file", tp->line,
                where != nullptr ? where : tp->xmltag);
        errcnt++;
    }
    return value;
}

}  // namespace ediprot
