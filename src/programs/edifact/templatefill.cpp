// Template filling: the segments of one message, starting at xdata, poured
// into a copy of the configuration.  The walk goes strictly forward: each
// segment goes to the next tag node of the same name, and a loop node whose
// first child received data gets an empty copy of itself behind it (with
// one node of each inner loop, whatever number of times it repeated).
#include <string.h>
#include <strings.h>

#include <unordered_set>

#include "../internal.h"

namespace ediprot {

// Stores the element values of the input chain `isrc` in the leaves of the
// template chain `idst`, by position.  A simple input element on a
// composite feeds the composite's components from itself and the elements
// behind it.
void copytag(datatree_t *idst, datatree_t *isrc)
{
    for (datatree_t *dst = idst, *src = isrc; dst != nullptr && src != nullptr;
         dst = dst->next, src = src->next) {
        if (dst->child != nullptr) {
            copytag(dst->child, src->child != nullptr ? src->child : src);
        } else if (src->data != nullptr) {
            TRACE(2, "got data <%s> for <%s> type (%d)\n", src->data,
                  pathfornode(dst, 0), src->editype);
            char *val = edirevconvert(
                dst, reinterpret_cast<unsigned char *>(src->data));
            dst->data = EDI_STRSAV(val);
        }
    }
}

namespace {

const char *tagornone(const datatree_t *tp, const char *none)
{
    return tp != nullptr ? tp->xmltag : none;
}

// ediforce read as the int it is stored as: the host may put any value
// there, and only ef_mand counts.
bool ismandatory(const datatree_t *tp)
{
    int force;
    memcpy(&force, &tp->ediforce, sizeof force);
    return force == ef_mand;
}

datatree_t *copyshape(const datatree_t *head);

// A copy of the node `tp` and its children, without values.
datatree_t *copynode(const datatree_t *tp)
{
    datatree_t *np = newnode();
    np->xmltag = EDI_STRSAV(tp->xmltag);
    copynodeparms(np, const_cast<datatree_t *>(tp), __LINE__);
    np->child = copyshape(tp->child);
    return np;
}

// The loop nodes that the running fill made as repetitions of an earlier
// occurrence.  Known by address, not by name: a configuration may hold two
// different sibling loops of one name, and the second is no repetition of
// the first.  Reset at the start of each message's fill; nothing is freed
// while a fill runs, so every address in it is a live node of this fill.
std::unordered_set<const datatree_t *> repetitions;

// A copy of the chain `head` without values, in which an inner loop's
// repetitions are left out, so that each of its loop nodes comes as its
// first occurrence alone.  A repetition thus starts with the shape of the
// configuration, not with the inner repetitions of the occurrence before
// it: those would be copied again at every level of nesting, doubling the
// template with each level.
datatree_t *copyshape(const datatree_t *head)
{
    datatree_t *start = nullptr;
    datatree_t **tpp = &start;
    for (const datatree_t *tp = head; tp != nullptr; tp = tp->next) {
        if (tp->xmltag[0] == '*' && repetitions.count(tp) != 0)
            continue;
        *tpp = copynode(tp);
        tpp = &(*tpp)->next;
    }
    return start;
}

}  // namespace

// Fills the template chain `out` from xdata on.  Returns -1 when a
// mandatory tag node meets the end of the input, otherwise whether the last
// node handled took data (1) or not (0).
int xydatatohead(datatree_t *out, int lvl)
{
    if (lvl == 0)
        repetitions.clear();
    int match = 0;
    for (datatree_t *tp = out; tp != nullptr; tp = tp->next) {
        TRACE(2,
              "xydatatohead: lvl %d, in next <%s>, iseditag %d, xdata <%s>, "
              "tp %p\n",
              lvl, tp->xmltag, tp->iseditag, tagornone(xdata, "no xdata"),
              static_cast<void *>(tp));
        if (tp->iseditag != 0) {
            if (xdata != nullptr) {
                if (strncasecmp(xdata->xmltag, tp->xmltag, 4) == 0) {
                    copytag(tp->child, xdata->child);
                    xdata = xdata->next;
                    match = 1;
                    TRACE(2, "match 1 on %s\n", tp->xmltag);
                } else {
                    TRACE(2, "skip no next outtag, parent <%s>, match %d\n",
                          tagornone(tp->parent, "no parent"), match);
                }
            } else if (ismandatory(tp)) {
                fprintf(stderr, "mandatory tag <%s> not found\n", tp->xmltag);
                return -1;
            }
            continue;
        }
        if (tp->child == nullptr)
            continue;
        // A node with children; a loop node repeats for as long as the
        // first child of its newest occurrence takes data.
        for (;;) {
            int rc = xydatatohead(tp->child, lvl + 1);
            TRACE(2, "xydatatohead: rc %d, tp <%s>, child <%s>\n", rc,
                  tp->xmltag, tagornone(tp->child, "no child"));
            if (rc < 0)
                return -1;
            TRACE(2, "check data in <%s>\n", tp->child->xmltag);
            match = hasdata(tp->child);
            if (tp->xmltag[0] != '*')
                break;
            TRACE(2, "xydatatohead: lvl %d, looptag <%s>, match %d\n", lvl,
                  tp->xmltag, match);
            if (match == 0)
                break;
            TRACE(2, "xydatatohead: start copysubtree <%s>\n",
                  pathfornode(tp, 0));
            datatree_t *orgnext = tp->next;
            tp->next = nullptr;
            datatree_t *sp = copynode(tp);
            TRACE(2,
                  "xydatatohead: after copysubtree sp %p, sp->next %p, "
                  "tp->next %p, orgnext %p, xdata %p\n",
                  static_cast<void *>(sp), static_cast<void *>(sp->next),
                  static_cast<void *>(tp->next), static_cast<void *>(orgnext),
                  static_cast<void *>(xdata));
            sp->next = orgnext;
            tp->next = sp;
            tp = sp;
            repetitions.insert(sp);
        }
    }
    TRACE(2, "xydatatohead says %d, lvl %d\n", match, lvl);
    return match;
}

}  // namespace ediprot
