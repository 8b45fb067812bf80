// Loop numbers of a filled tree, so that the EDIFACT writer, walking the
// same configuration, finds every occurrence under the number it tries.
//
// The writer keeps one counter per chain of configuration siblings.  Each
// loop node of the chain takes the next numbers for its occurrences, and
// the try that finds no further occurrence uses up one number as well.  The
// counter starts afresh for the children of every loop occurrence and of
// every plain node with children; tag nodes consume no number and their
// children are not walked.
#include <string.h>

#include "readstages.h"

namespace ediprot {

namespace {

// True if the filled node `dp` can be a copy of the configuration node
// `cp`: the names of its children, each run of one name taken once, come
// in the order of `cp`'s children.  Tells apart two sibling loops of one
// name whose contents differ.
bool fits(const datatree_t *dp, const datatree_t *cp)
{
    const datatree_t *c = cp->child;
    const char *last = nullptr;
    for (const datatree_t *d = dp->child; d != nullptr; d = d->next) {
        if (last != nullptr && strcmp(last, d->xmltag) == 0)
            continue;
        last = d->xmltag;
        while (c != nullptr && strcmp(c->xmltag, d->xmltag) != 0)
            c = c->next;
        if (c == nullptr)
            return false;
        c = c->next;
    }
    return true;
}

// True if a later sibling of `cp` bears its name.
bool namesake(const datatree_t *cp)
{
    for (const datatree_t *n = cp->next; n != nullptr; n = n->next)
        if (strcmp(n->xmltag, cp->xmltag) == 0)
            return true;
    return false;
}

}  // namespace

// Numbers the loop nodes of the filled chain `data` after the configuration
// chain `conf` that it was filled from.  The filled chain holds, for each
// configuration node in order, its copies: consecutive nodes of the same
// name (none for a pruned loop); two sibling loops of one name are told
// apart by their contents.
void numberloops(datatree_t *conf, datatree_t *data)
{
    int i = 0;
    datatree_t *dp = data;
    for (datatree_t *cp = conf; cp != nullptr; cp = cp->next) {
        const bool isloop = cp->xmltag[0] == '*';
        const bool istag = cp->xmltag[0] == '$';
        // Where a later sibling loop has the same name, a copy that does
        // not fit this one belongs to that one.
        const bool shared = isloop && namesake(cp);
        while (dp != nullptr && strcmp(dp->xmltag, cp->xmltag) == 0 && (!shared || fits(dp, cp))) {
            if (isloop)
                dp->loopcnt = ++i;
            if (!istag && cp->child != nullptr && dp->child != nullptr)
                numberloops(cp->child, dp->child);
            dp = dp->next;
        }
        // The writer's try that finds no further occurrence.
        if (isloop)
            ++i;
    }
}

}  // namespace ediprot
