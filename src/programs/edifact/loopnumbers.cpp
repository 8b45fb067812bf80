// Loop numbers of a filled tree, so that the EDIFACT writer, walking the
// same configuration, finds every occurrence under the number it tries.
//
// The writer keeps one counter per chain of configuration siblings.  Each
// loop node of the chain takes the next numbers for its occurrences, and
// the try that finds no further occurrence uses up one number as well.  The
// counter starts afresh for the children of every loop occurrence and of
// every plain node with children; tag nodes consume no number and their
// children are not walked.
//
// The filled chain holds, for each configuration node in order, its
// copies: one for a plain or tag node (pruning never takes those away),
// the surviving occurrences for a loop node.  The fill records which
// configuration node each loop copy stems from, so that two sibling loops
// of one name are told apart whatever they hold.
#include <string.h>

#include "edifact.h"

namespace ediprot {

namespace {

// True if `dp` is a copy of `cp`: by the recorded configuration node, or,
// for a node the fill did not record (tag nodes and what lies below them),
// by name.
bool copies(const datatree_t *dp, const datatree_t *cp, originfn origin)
{
    const datatree_t *o = origin(dp);
    return o != nullptr ? o == cp : strcmp(dp->xmltag, cp->xmltag) == 0;
}

}  // namespace

void numberloops(const datatree_t *conf, datatree_t *data, originfn origin,
                 bool inner)
{
    int i = 0;
    datatree_t *dp = data;
    for (const datatree_t *cp = conf; cp != nullptr; cp = cp->next) {
        const bool isloop = cp->xmltag[0] == '*';
        const bool walk = inner && cp->xmltag[0] != '$' && cp->child != nullptr;
        if (isloop) {
            for (; dp != nullptr && copies(dp, cp, origin); dp = dp->next) {
                dp->loopcnt = ++i;
                if (walk && dp->child != nullptr)
                    numberloops(cp->child, dp->child, origin, true);
            }
            // The writer's try that finds no further occurrence.
            ++i;
        } else {
            // One copy; several only where each is recorded (the messages
            // of an interchange, all copies of the configuration's root).
            for (bool first = true; dp != nullptr && copies(dp, cp, origin) &&
                                    (first || origin(dp) != nullptr);
                 first = false) {
                if (walk && dp->child != nullptr)
                    numberloops(cp->child, dp->child, origin, true);
                dp = dp->next;
            }
        }
    }
}

}  // namespace ediprot
