// Stages of the EDIFACT reader beyond those declared in internal.h.
#ifndef EDIPROT_READSTAGES_H
#define EDIPROT_READSTAGES_H

#include <vector>

#include "../internal.h"

namespace ediprot {

// Where the numbering finds the configuration node that a filled node
// copies.
using originfn = const datatree_t *(*)(const datatree_t *);

// Gives the loop nodes of the filled chain `data` the numbers under which
// the EDIFACT writer, walking the configuration chain `conf`, looks for
// them.  A loop node belongs to the configuration node that `origin`
// names; any other node is the one copy of its configuration node.  With
// `inner` false only the chain itself is numbered, not what lies below.
void numberloops(const datatree_t *conf, datatree_t *data, originfn origin,
                 bool inner);

// searchemptyloop for one message just filled, without trace lines: its
// pending nodes are settled on the way, and the nodes it removes are
// unlinked but kept in `removed`, since pending copies may still read the
// chains they stood in.  freeremoved frees them once nothing reads them.
int prunemessage(datatree_t **headp, std::vector<datatree_t *> &removed);
void freeremoved(std::vector<datatree_t *> &removed);

// Drops the fill's state: before a read's first message, and after its
// last or a failure.
void resetfill();
// Fills one message, from the segment `first` on, into a copy of the
// configuration chain `conf`, prunes it and numbers its loops.  Returns the
// copy: the message's node, then empty copies of conf's siblings.
datatree_t *fillmessage(datatree_t *conf, datatree_t *first);
// The chain `chain` below the result's root is about to be freed.
void forgetheads(const datatree_t *chain);
// Numbers the nodes directly below the result's root after `conf`, the
// configuration root's children (what lies below is numbered per message).
void numberheads(const datatree_t *conf, datatree_t *data);

}  // namespace ediprot

#endif
