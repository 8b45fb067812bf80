// Node and path helpers: making and copying nodes, and finding a node by
// its path, on the input side (searchpath, searchtagval) and on the output
// side (searchlooppath, searchloopinstance).  They know nodes and paths,
// not either file format, so every other subsystem may use them.
#ifndef EDIPROT_TREE_H
#define EDIPROT_TREE_H

#include "ediprot.h"

namespace ediprot {

// A new node from malloc, zero-filled as a whole.  Aborts with a message
// when memory runs out: no caller could go on without it.
datatree_t *newnode(void);
// Lookup of the input side: first component against head alone, case-blind.
datatree_t *searchpath(datatree_t *head, const char *path);
// Lookup of the output side: path and loop numbers over the chain `tree`.
// When `complete` is not NULL it receives 1 if the node returned is the
// one the whole path names, 0 if the search ran out of tree first.
datatree_t *searchlooppath(const char *path, const char *loop,
                           datatree_t *tree, int *complete = nullptr);
// Component `cde` of element `dst` of the node at `path`, with messages.
datatree_t *searchtagval(datatree_t *tree, const char *path, int dst, int cde);
// 1 if tree or anything below it (not its siblings) holds data.
int hasdata(datatree_t *tree);
// Deep copy of a chain without values; NULL for NULL.
datatree_t *copysubtree(datatree_t *head);
// The data node of instance `lb` of a configuration loop node,
// or NULL when the data tree has no loop node of its own for that number
// (also where a childless node above the loop would answer every number).
// Used by both writers to end a loop's enumeration.
// `path` is pathfornode of the loop node (NULL gives NULL), `looptag` its name.
datatree_t *searchloopinstance(const char *path, const char *lb,
                               datatree_t *head, const char *looptag);

}  // namespace ediprot

#endif
