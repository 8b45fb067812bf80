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
#include <vector>

#include "ediprot.h"

namespace edi {

// What the reader saw on its way, so that the steps behind it need not
// look at the whole document or tree again.
struct JsonSeen {
    bool envelopekey = false;  // the document has a key "envelope" at the top
    bool ascii = true;         // every string is ASCII (names and values)
    std::vector<datatree_t *> envelopes;  // the `#envelope` nodes
    bool inorder = true;       // ... in document order (each named before its children)
};

// The tree (or chain of roots) of a document whose first key is "format"
// with the value "ediprot-tree", parent links set; NULL to decline.
// `seen`, when given, is filled.
datatree_t *jsonfast(std::string_view text, JsonSeen *seen = nullptr);

}  // namespace edi

#endif
