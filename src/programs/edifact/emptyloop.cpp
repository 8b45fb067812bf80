// Empty loop pruning: removes the loop nodes of a filled tree below which
// no leaf holds data, bottom-up, so that the empty occurrence that every
// repetition ends with, and loops that never occurred, go away.
#include "readstages.h"

namespace ediprot {

namespace {

int prune(datatree_t **headp, bool trace);

}  // namespace

int searchemptyloop(datatree_t **headp)
{
    return prune(headp, true);
}

int searchemptyloopquiet(datatree_t **headp)
{
    return prune(headp, false);
}

// Prunes the chain held by the link *headp (a parent's child field, or any
// other link), so that a removed first node moves the link itself on.
// Returns 0 when nothing in the chain counts as data after the pass.
// Leaves add 1 per value; each surviving loop node sets the running value
// back to 1; only zero against non-zero means anything.
namespace {

int prune(datatree_t **headp, bool trace)
{
    int rc = 0;
    int lrc = 0;
    datatree_t **tpp = headp;

    if (*headp == nullptr)
        return 0;
    if (trace)
        TRACE(2, "searchemptyloop: <%s>\n", (*headp)->xmltag);
    while (*tpp != nullptr) {
        datatree_t *tp = *tpp;
        if (tp->xmltag[0] == '*') {
            // lrc is kept from the last loop node with children when this
            // one has none.
            if (tp->child != nullptr)
                lrc = prune(&tp->child, trace);
            if (trace)
                TRACE(2, "looptag <%s>, rc %d\n", pathfornode(tp, 0), rc);
            if (lrc == 0) {
                datatree_t *sp = tp;
                *tpp = sp->next;
                sp->next = nullptr;
                if (trace)
                    TRACE(2, "freedatatree: %p\n", static_cast<void *>(sp));
                freedatatree(sp);
                continue;
            }
            rc = 1;
        } else if (tp->child != nullptr) {
            rc += prune(&tp->child, trace);
        } else if (tp->data != nullptr) {
            rc += 1;
        }
        tpp = &tp->next;
    }
    if (trace)
        TRACE(2, "tag <%s> returns %d\n",
          *headp != nullptr ? pathfornode(*headp, 0) : "(empty chain)", rc);
    return rc;
}

}  // namespace

}  // namespace ediprot
