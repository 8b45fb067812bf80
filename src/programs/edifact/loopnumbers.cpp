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

// Numbers the loop nodes of the filled chain `data` after the configuration
// chain `conf` that it was filled from.  The filled chain holds, for each
// configuration node in order, its copies: consecutive nodes of the same
// name (none for a pruned loop).
void numberloops(datatree_t *conf, datatree_t *data)
{
    int i = 0;
    datatree_t *dp = data;
    for (datatree_t *cp = conf; cp != nullptr; cp = cp->next) {
        const bool isloop = cp->xmltag[0] == '*';
        const bool istag = cp->xmltag[0] == '$';
        while (dp != nullptr && strcmp(dp->xmltag, cp->xmltag) == 0) {
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
