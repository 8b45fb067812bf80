#include "../debug.h"
#include "tree.h"

namespace ediprot {

namespace {

// The child of `tp` at position `pos` along `next`, from 0; below 0 counts as 0.
datatree_t *nthchild(datatree_t *tp, int pos)
{
    datatree_t *cp = tp->child;
    for (int i = 0; cp != nullptr && i < pos; i++)
        cp = cp->next;
    return cp;
}

}  // namespace

// Component `cde` of element `dst` of the node at `path`: always exactly
// two levels below that node, so an element without components fails even
// though it holds a value.  Each miss writes its own message.
datatree_t *searchtagval(datatree_t *tree, const char *path, int dst, int cde)
{
    TRACE(2, "searchtagval: path <%s>, dst %d, cde %d\n", path, dst, cde);
    datatree_t *tp = searchpath(tree, path);
    if (tp == nullptr) {
        fprintf(stderr, "searchtagval: node <%s> not found\n", path);
        return nullptr;
    }
    datatree_t *ep = nthchild(tp, dst);
    if (ep == nullptr) {
        fprintf(stderr, "searchtagval: node not found: dst %d\n", dst);
        return nullptr;
    }
    datatree_t *cp = nthchild(ep, cde);
    if (cp == nullptr) {
        fprintf(stderr, "searchtagval: node not found: cde %d\n", cde);
        return nullptr;
    }
    return cp;
}

}  // namespace ediprot
