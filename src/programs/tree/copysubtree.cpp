#include "../state.h"
#include "tree.h"

namespace ediprot {

// Deep copy of the chain `head` and everything below it.  The copies get
// their own name and the descriptive parameters (copynodeparms), but no
// value: a loop repetition relies on a fresh copy starting without data.
// Iterative along `next`, recursive only along `child`.
datatree_t *copysubtree(datatree_t *head)
{
    datatree_t *start = nullptr;
    datatree_t **tpp = &start;
    for (datatree_t *tp = head; tp != nullptr; tp = tp->next) {
        datatree_t *np = newnode();
        np->xmltag = EDI_STRSAV(tp->xmltag);
        copynodeparms(np, tp, __LINE__);
        if (tp->child != nullptr)
            np->child = copysubtree(tp->child);
        *tpp = np;
        tpp = &np->next;
    }
    return start;
}

}  // namespace ediprot
