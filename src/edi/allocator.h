// Settings of the memory allocator linked into the edi command.
#ifndef EDI_ALLOCATOR_H
#define EDI_ALLOCATOR_H

namespace edi {

// Asks the allocator for large (2 MiB) pages where the system grants them
// on request.  A tree of a large file is millions of small nodes, and on
// small pages the process spends more time in page faults than in the
// conversion.  Without mimalloc, or when the environment says otherwise
// (MIMALLOC_LARGE_OS_PAGES=0), nothing changes.  Called first in main.
void tuneallocator();

}  // namespace edi

#endif
