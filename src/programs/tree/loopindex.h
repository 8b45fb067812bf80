// Index of long sibling chains for the writers' lookup (searchlooppath).
// A writer finds every element again from the root; on a chain of many
// loop instances the plain walk makes a write quadratic.  While a
// LoopIndexScope lives, a chain longer than kLoopIndexMin is indexed once,
// on first use, by (name, loop number) and searchlooppath visits only the
// siblings that match, in chain order - the same candidates the plain walk
// would accept, so every answer stays the same.  The data tree must not
// change while the scope lives (the writers only read it).
#ifndef EDIPROT_LOOPINDEX_H
#define EDIPROT_LOOPINDEX_H

#include <stddef.h>
#include <stdint.h>

#include <span>
#include <vector>

#include "ediprot.h"

namespace ediprot {

// By default chains of at most this many siblings keep the plain walk.
constexpr size_t kLoopIndexMin = 32;

// Makes the index available for its lifetime; nested scopes share one.
class LoopIndexScope {
public:
    LoopIndexScope();
    ~LoopIndexScope();
    LoopIndexScope(const LoopIndexScope &) = delete;
    LoopIndexScope &operator=(const LoopIndexScope &) = delete;
};

// True while a LoopIndexScope lives (and the index is not switched off).
bool loopindex_active();

// For tests that compare the index with the plain walk: chains longer than
// `min` siblings are indexed from the next scope on; kLoopIndexOff leaves
// every lookup to the plain walk.  The writers never call it.
constexpr size_t kLoopIndexOff = SIZE_MAX;
void loopindex_setmin(size_t min);

// The siblings of chain `head` named name[0..n) in chain order; for a loop
// name ('*' first) only those whose loopcnt equals `lct`.  False when no
// index is active or the chain is short: the caller then walks the chain.
bool loopindex_find(datatree_t *head, const char *name, size_t n, long lct,
                    std::span<datatree_t *const> *cands);

}  // namespace ediprot

#endif
