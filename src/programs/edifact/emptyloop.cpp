// Empty loop pruning: removes the loop nodes of a filled tree below which
// no leaf holds data, bottom-up, so that the empty occurrence that every
// repetition ends with, and loops that never occurred, go away.
#include "../debug.h"
#include "edifact.h"
#include "pendingshape.h"

namespace ediprot {

namespace {

// How one pass goes: traced or quiet; whether pending nodes may occur
// (never below a tag node); where removed nodes go when they are not
// freed at once.
struct Pass {
    bool trace;
    bool pending;
    std::vector<datatree_t *> *removed;
};

void drop(const Pass &pass, datatree_t *sp)
{
    if (pass.removed != nullptr) {
        pass.removed->push_back(sp);
        return;
    }
    sp->next = nullptr;
    if (pass.trace)
        TRACE(2, "freedatatree: %p\n", static_cast<void *>(sp));
    freedatatree(sp);
}

// Prunes the chain held by the link *headp (a parent's child field, or any
// other link), so that a removed first node moves the link itself on.
// Returns 0 when nothing in the chain counts as data after the pass.
// Leaves add 1 per value; each surviving loop node sets the running value
// back to 1; only zero against non-zero means anything.
int prune(datatree_t **headp, const Pass &pass, int (*kept)(const datatree_t *) = nullptr)
{
    int rc = 0;
    int lrc = 0;
    datatree_t **tpp = headp;

    if (*headp == nullptr)
        return 0;
    if (pass.trace)
        TRACE(2, "searchemptyloop: <%s>\n", (*headp)->xmltag);
    while (*tpp != nullptr) {
        datatree_t *tp = *tpp;
        // A pending loop node or block node stands for loop nodes whose
        // children hold nothing: each goes, and leaves lrc at 0.  A
        // pending plain node gets its empty copy and is pruned as such.
        if (pass.pending && tp->child == nullptr && tp->data == nullptr &&
            tp->iseditag == 0 && pending::settle(tp)) {
            lrc = 0;
            *tpp = tp->next;
            drop(pass, tp);
            continue;
        }
        const Pass below = {pass.trace, pass.pending && tp->iseditag == 0,
                            pass.removed};
        if (tp->xmltag[0] == '*') {
            // lrc is kept from the last loop node with children when this
            // one has none.
            if (tp->child != nullptr)
                lrc = kept != nullptr && kept(tp) >= 0 ? kept(tp) : prune(&tp->child, below);
            if (pass.trace)
                TRACE(2, "looptag <%s>, rc %d\n", pathfornode(tp, 0), rc);
            if (lrc == 0) {
                *tpp = tp->next;
                drop(pass, tp);
                continue;
            }
            rc = 1;
        } else if (tp->child != nullptr) {
            rc += prune(&tp->child, below);
        } else if (tp->data != nullptr) {
            rc += 1;
        }
        tpp = &tp->next;
    }
    if (pass.trace)
        TRACE(2, "tag <%s> returns %d\n",
              *headp != nullptr ? pathfornode(*headp, 0) : "(empty chain)", rc);
    return rc;
}

}  // namespace

int searchemptyloop(datatree_t **headp)
{
    return prune(headp, {true, false, nullptr});
}

int pruneheads(datatree_t **headp, int (*kept)(const datatree_t *))
{
    if (trace_on(2))
        return searchemptyloop(headp);
    return prune(headp, {false, false, nullptr}, kept);
}

int prunemessage(datatree_t **headp, std::vector<datatree_t *> &removed)
{
    return prune(headp, {false, true, &removed});
}

void freeremoved(std::vector<datatree_t *> &removed)
{
    for (datatree_t *sp : removed) {
        sp->next = nullptr;
        freedatatree(sp);
    }
    removed.clear();
}

}  // namespace ediprot
