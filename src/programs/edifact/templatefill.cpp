// Template filling: the segments of one message, starting at xdata, poured
// into a copy of the configuration.  The walk goes strictly forward: each
// segment goes to the next tag node of the same name, and a loop node whose
// first child received data gets an empty copy of itself behind it, inner
// repetitions included.  The copies are pending shapes (pendingshape.h):
// built as far as the walk can take segments in them, passed whole where
// it cannot.
#include <string.h>
#include <strings.h>

#include "../convert/convert.h"
#include "../debug.h"
#include "../state.h"
#include "../tree/tree.h"
#include "edifact.h"
#include "pendingshape.h"

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

}  // namespace

// Fills the template chain `out` from xdata on.  Returns -1 when a
// mandatory tag node meets the end of the input, otherwise whether the last
// node handled took data (1) or not (0).
int xydatatohead(datatree_t *out, int lvl)
{
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
        if (tp->child == nullptr) {
            // A node without children is ignored, unless its children are
            // pending: then it is walked as its empty copy would be.
            if (!pending::ispending(tp))
                continue;
            const char *mandtag = nullptr;
            switch (pending::judge(tp, &mandtag)) {
            case pending::Verdict::missing:
                fprintf(stderr, "mandatory tag <%s> not found\n", mandtag);
                return -1;
            case pending::Verdict::pass:
                match = 0;
                continue;
            case pending::Verdict::open:
                pending::open(tp);
                break;
            }
        }
        // A node with children; a loop node repeats for as long as the
        // first child of its newest occurrence takes data.
        for (;;) {
            int rc = xydatatohead(tp->child, lvl + 1);
            TRACE(2, "xydatatohead: rc %d, tp <%s>, child <%s>\n", rc,
                  tp->xmltag, tagornone(tp->child, "no child"));
            if (rc < 0)
                return -1;
            TRACE(2, "check data in <%s>\n", tagornone(tp->child, "no child"));
            match = tp->child != nullptr ? hasdata(tp->child) : 0;
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
            datatree_t *sp = pending::repetitionof(tp);
            TRACE(2,
                  "xydatatohead: after copysubtree sp %p, sp->next %p, "
                  "tp->next %p, orgnext %p, xdata %p\n",
                  static_cast<void *>(sp), static_cast<void *>(sp->next),
                  static_cast<void *>(tp->next), static_cast<void *>(orgnext),
                  static_cast<void *>(xdata));
            sp->next = orgnext;
            tp->next = sp;
            tp = sp;
            // The repetition is walked as its empty copy would be.
            const char *mandtag = nullptr;
            const pending::Verdict v = pending::judge(tp, &mandtag);
            if (v == pending::Verdict::missing) {
                fprintf(stderr, "mandatory tag <%s> not found\n", mandtag);
                return -1;
            }
            if (v == pending::Verdict::pass) {
                match = 0;
                break;
            }
            pending::open(tp);
        }
    }
    TRACE(2, "xydatatohead says %d, lvl %d\n", match, lvl);
    return match;
}

}  // namespace ediprot
