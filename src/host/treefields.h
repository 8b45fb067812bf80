// The fields of a node that the tree text format carries, as one table
// shared by the writer and the parser: key, kind, place in the record and,
// for the enumerations, the word of each value.
#ifndef EDIHOST_TREEFIELDS_H
#define EDIHOST_TREEFIELDS_H

#include <stddef.h>

#include "ediprot.h"

namespace edihost {

enum class fieldkind { text, number, word };

struct treefield {
    const char *key;
    fieldkind kind;
    size_t offset;             // offsetof(datatree_t, field)
    const char *const *words;  // fieldkind::word: value i is words[i]; NULL-closed
};

// In the order the writer puts them on a line.
extern const treefield treefields[];
extern const size_t ntreefields;

// The field with this key, or NULL.
const treefield *findfield(const char *key, size_t len);

// Access to a field of a node.  Numbers and enumerations are read and
// stored through memcpy as int, so that a value outside an enumeration
// (possible when a host fills a node itself) is never loaded as that type.
char *gettext(const datatree_t *tp, const treefield &fd);
void settext(datatree_t *tp, const treefield &fd, char *value);
int getnumber(const datatree_t *tp, const treefield &fd);
void setnumber(datatree_t *tp, const treefield &fd, int value);

// The value of the `len` bytes at `word` in fd.words, or -1.
int findword(const treefield &fd, const char *word, size_t len);

}  // namespace edihost

#endif
