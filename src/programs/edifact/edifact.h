// EDIFACT internals: the reader's state, its stages from bytes to a filled
// and numbered message (segment nodes, the template fill, the pruning of
// empty loops, the loop numbers), and the segment writer.  The pending
// shapes that the fill builds its template from are in pendingshape.h.
#ifndef EDIPROT_EDIFACT_H
#define EDIPROT_EDIFACT_H

#include <stdio.h>

#include <vector>

#include "ediprot.h"
#include "../tree/pathscope.h"

namespace ediprot {

// ---- reader state (defined in state.cpp) --------------------------------

// Running number of segment nodes; 0 per file, raised before each use.
extern int tagcnt;
// Next segment of the message being filled; NULL when its input has ended.
extern datatree_t *xdata;

// ---- segments -----------------------------------------------------------

datatree_t *mknode(const char *what, const char *name, const char *value);
datatree_t *makeelem(char *str, int sep, const char *what);
datatree_t *maketag(char *segbuf);
// Reads every segment of fp.  Returns the root of the flat chain, or NULL
// (after its message, with everything released) when a segment overflows
// the segment buffer.
datatree_t *readseg(FILE *fp, const char *fn);

// ---- message fill -------------------------------------------------------

int xydatatohead(datatree_t *out, int lvl);
void copytag(datatree_t *idst, datatree_t *isrc);

// Drops the fill's state: before a read's first message, and after its
// last or a failure.
void resetfill();
// Fills one message, from the segment `first` on, into a copy of the
// configuration chain `conf`, prunes it and numbers its loops.  Returns the
// copy: the message's node, then empty copies of conf's siblings.
datatree_t *fillmessage(datatree_t *conf, datatree_t *first);
// Links every node below the result's root `head` to its parent.  The
// fill links the nodes of each message; behind `lastmsg`, the last message
// filled, the copies of the configuration root's further children are
// linked here.
void linkheads(datatree_t *head, const datatree_t *lastmsg);
// The chain `chain` below the result's root is about to be freed.
void forgetheads(const datatree_t *chain);
// Whether the fill's pruning left data below the message node `msg`: 1,
// 0, or -1 for a node that is no message filled in this read.
int keptdata(const datatree_t *msg);
// Numbers the nodes directly below the result's root after `conf`, the
// configuration root's children (what lies below is numbered per message).
void numberheads(const datatree_t *conf, datatree_t *data);

// ---- pruning ------------------------------------------------------------

// Prunes empty loop nodes of the chain held by the link *headp.
int searchemptyloop(datatree_t **headp);
// searchemptyloop for one message just filled, without trace lines: its
// pending nodes are settled on the way, and the nodes it removes are
// unlinked but kept in `removed`, since pending copies may still read the
// chains they stood in.  freeremoved frees them once nothing reads them.
int prunemessage(datatree_t **headp, std::vector<datatree_t *> &removed);
void freeremoved(std::vector<datatree_t *> &removed);
// searchemptyloop for the chain below the result's root once every
// message is filled: a message node's subtree was pruned with its fill,
// and pruning it again removes nothing, so what it holds is taken from
// `kept` (1 data, 0 none, -1 not known: pruned here) instead of a walk
// of the whole result.  With trace lines on, the whole result is walked.
int pruneheads(datatree_t **headp, int (*kept)(const datatree_t *));

// ---- loop numbers -------------------------------------------------------

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

// ---- output -------------------------------------------------------------

int editraverse(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop);
// `inner`: the scope of the paths below the tag node (tree/pathscope.h);
// plain looks each value up from the root by the loop string.
int writeeditag(FILE *fp, datatree_t *head, datatree_t *outcf, const LoopString &loop,
                const PathScope &inner = PathScope{});

}  // namespace ediprot

#endif
