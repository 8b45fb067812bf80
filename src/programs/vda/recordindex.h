// Index of the chains insrecord hangs records into.  Without it every
// record walks the whole chain of its place (all loop instances in front
// of it), which makes a read quadratic.  While a RecordIndexScope lives,
// each chain (named by the address of its head pointer) is walked once and
// then kept up to date as insrecord appends to it.  Only appends may change
// the tree while the scope lives: vdaread's tree is built by insrecord alone.
#ifndef EDIPROT_RECORDINDEX_H
#define EDIPROT_RECORDINDEX_H

#include "ediprot.h"

namespace ediprot {

class RecordIndexScope {
public:
    RecordIndexScope();
    ~RecordIndexScope();
    RecordIndexScope(const RecordIndexScope &) = delete;
    RecordIndexScope &operator=(const RecordIndexScope &) = delete;
};

// The slot where insrecord's walk along chain *head stops: the first node
// named `name` (for a loop name, with loopcnt `cnt`), else the empty slot
// at the end of the chain.  NULL when no scope is active.
datatree_t **recordindex_find(datatree_t **head, const char *name, int cnt);
// Tells the index that *slot (the end slot recordindex_find gave) is filled.
void recordindex_appended(datatree_t **head);

// For tests that compare the index with the plain walk: off, every scope
// leaves insrecord to walk its chains.  vdaread never calls it.
void recordindex_setenabled(bool on);

}  // namespace ediprot

#endif
