// The writers' walk over an outbound configuration: each loop node as
// often as the data tree has instances of it, each tag node once per
// instance of the loops around it, plain nodes passed through.  The
// EDIFACT and the VDA writer differ only in what they write for a tag node,
// in how loop instances are numbered, and in their trace lines; those are
// the format's part (walkformat).
#ifndef EDIPROT_CONFIGWALK_H
#define EDIPROT_CONFIGWALK_H

#include <stdio.h>

#include "ediprot.h"
#include "pathscope.h"

namespace ediprot {

struct walkformat {
    // The segment or record of the tag node `tag` for the loop string;
    // `inner` is the scope of the paths below the tag node (plain: look
    // them up from the root).
    void (*writetag)(FILE *fp, datatree_t *head, datatree_t *tag, const LoopString &loop,
                     const PathScope &inner);
    // EDIFACT numbers the loop nodes of one chain with one counter, each
    // going on where the one before stopped; VDA numbers each from 1.
    bool onecounter;
    // A loop string that would not fit (kTextMax) ends the loop's walk;
    // NULL says nothing.
    void (*toolong)(const datatree_t *loopnode);
    // Trace lines: the start of a chain, each node of it, the search for a
    // loop instance (`path` as the search got it, `xnode` its answer), and
    // each instance found.  Any of them may be NULL.
    void (*tracestart)(const datatree_t *outcf, const char *loop);
    void (*tracenode)(const datatree_t *tp);
    void (*tracesearch)(const char *path, const char *lb, const datatree_t *xnode);
    void (*tracefound)(const datatree_t *tp, const char *lb, const datatree_t *xnode);
};

// Walks the chain from `outcf` with the loop string `loop` ("" at the top).
// Loop instances and tag nodes are found through the scopes of
// tree/pathscope.h where rootscope allows it (no trace is on then, and the
// trace functions are not called); else each is looked up from the root.
// Returns 0.
int configwalk(const walkformat &fmt, FILE *fp, datatree_t *head, datatree_t *outcf,
               const char *loop);

}  // namespace ediprot

#endif
