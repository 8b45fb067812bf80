// Settings of the memory allocator linked into the edi command, and the
// memory of the trees it reads.
#ifndef EDI_ALLOCATOR_H
#define EDI_ALLOCATOR_H

#include <stddef.h>

#include "ediprot.h"

namespace edi {

// Asks the allocator for large (2 MiB) pages where the system grants them
// on request.  A tree of a large file is millions of small nodes, and on
// small pages the process spends more time in page faults than in the
// conversion.  Without mimalloc, or when the environment says otherwise
// (MIMALLOC_LARGE_OS_PAGES=0), nothing changes.  Called first in main.
void tuneallocator();


// Frees a tree that the process needs no more, shortly before it ends.
// A build for the sanitizers frees it at once, so that their leak check
// still sees every tree; any other build leaves it to the system, which
// takes the process's memory back in one step instead of node by node
// (a tenth of a second for a tree of a million nodes).  The tree stays
// reachable, so memory checkers do not count it as lost.
void freeatexit(datatree_t *tree);

}  // namespace edi

#endif
