// The compact form of a data tree: only what a partner sent.  The writer
// walks its configuration and looks up values by name and loop number, so
// the fields a read copies from the configuration (edimaxlen, ediforce,
// iseditag, ...) and nodes without any value below them add nothing to a
// write; they are left out.  What stays: names, values, loop numbers and
// the parents needed to reach each value.
#ifndef EDI_COMPACTTREE_H
#define EDI_COMPACTTREE_H

#include <string>

#include "ediprot.h"
#include "trees/jsontree.h"

namespace edi {

// A new tree (chain of roots) of the nodes of `tree` that carry data: a
// value, or a value somewhere below.  Each root is kept, empty or not.
// Nodes hold xmltag, data and loopcnt only.  The caller frees it with
// freedatatree; NULL for NULL.
datatree_t *compactcopy(const datatree_t *tree);

// The JSON document of the compact form of `tree`, marked
// "form": "compact": one node per line, or the whole document on one
// line (`oneline`, no line feed inside).  Fields as treetojson.
std::string compactjson(const datatree_t *tree, const char *key, const JsonMeta &meta,
                        bool oneline);

// The JSON of the nodes of `tree` (already compact) as one value: a node
// object, or an array for a chain.  For documents built around a tree.
void compactnodes(std::string &out, const datatree_t *tree, bool oneline);

}  // namespace edi

#endif
