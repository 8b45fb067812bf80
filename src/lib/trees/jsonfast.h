// A fast reader for tree documents as treetojson writes them: one pass
// over the text that builds the nodes directly, without a JSON document
// in between.  It takes a strict part of JSON only and declines (returns
// NULL, writes nothing) on anything else, errors included; jsontotree
// then reads the text with the general parser, which gives the same tree
// or the message.  Large trees (100,000 loop instances, tens of MB) are
// read several times faster than through a document.
#ifndef EDI_JSONFAST_H
#define EDI_JSONFAST_H

#include <string_view>

#include "ediprot.h"

namespace edi {

// The tree (or chain of roots) of a document whose first key is "format"
// with the value "ediprot-tree", parent links set; NULL to decline.
datatree_t *jsonfast(std::string_view text);

}  // namespace edi

#endif
