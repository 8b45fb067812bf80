// Stages of the EDIFACT reader beyond those declared in internal.h.
#ifndef EDIPROT_READSTAGES_H
#define EDIPROT_READSTAGES_H

#include "../internal.h"

namespace ediprot {

// Gives the loop nodes of the filled chain `data` the numbers under which
// the EDIFACT writer, walking the configuration chain `conf`, looks for
// them.
void numberloops(datatree_t *conf, datatree_t *data);

// searchemptyloop without its trace lines.  The reader prunes each message
// as soon as it is filled, so that the empty loop copies of one message are
// gone before the next is filled; the final pass over the whole tree then
// finds the same nodes to keep.
int searchemptyloopquiet(datatree_t **headp);

}  // namespace ediprot

#endif
