// Nodes and texts of parsed trees, taken from the memory that
// edihost_reservenodes made ready when the thread has some, else from
// calloc/malloc.  freedatatree gives each back the right way.
#ifndef EDIHOST_NODESTORE_H
#define EDIHOST_NODESTORE_H

#include <stddef.h>

#include "ediprot.h"

namespace edihost {

// A zeroed node.
datatree_t *newnode();

// A copy of the `len` bytes at `s`, with a NUL behind.
char *newtext(const char *s, size_t len);

// True once any store was reserved: only then does freeing need a look.
bool anystore();

// Free a node or a text, wherever it came from.
void freenode(datatree_t *tp);
void freetext(char *p);

}  // namespace edihost

#endif
