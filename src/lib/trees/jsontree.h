// The JSON form of a tree, both ways.
//
// A node is an object: "name", then only the fields that are set ("data",
// "loopcnt", "defval", "deffunc", "iseditag", "type", "edidata", "edilen",
// "edimaxlen", "editype", "ediforce", "edialign", "valid"), then
// "children" as an array when the node has any.  A missing "data" is no
// value; "data": "" is the empty value.  Texts are byte strings: each byte
// is written as the character of the same number (bytes 0x80 to 0xFF as
// U+0080 to U+00FF), so every byte survives and Latin-1 text reads
// naturally.  Enumerations are written as the words of the tree text
// format.
#ifndef EDI_JSONTREE_H
#define EDI_JSONTREE_H

#include <string>
#include <utility>
#include <vector>

#include "ediprot.h"

namespace edi {

class Report;

// Further fields of the document, each an array of texts: what the command
// changed in its working copy ("changes"), the keys of several working
// copies ("keys").  A reader of the document ignores them.
using JsonMeta = std::vector<std::pair<std::string, std::vector<std::string>>>;

// The document for `tree` (one root, or a chain when tree->next is set):
// {"format": "ediprot-tree", "version": 1, "key": ..., meta..., "tree": node-or-array}.
// `key` is left out when NULL.  `indent` as nlohmann's dump (-1: one line).
std::string treetojson(const datatree_t *tree, const char *key, const JsonMeta &meta = {},
                       int indent = 1);

// The full JSON of the node `tree` (an array for a chain) as treetojson
// writes it under "tree", for documents built around a tree.
std::string fullnodes(const datatree_t *tree, int indent);

// A node text (name or value) as a JSON string literal, quotes included:
// the one conversion of texts that every JSON form of a tree shares.
std::string jsonquote(const char *text);

// Parses a document made by treetojson (or a bare node object / array).
// On error reports "NAME: reason" and returns NULL.
datatree_t *jsontotree(std::string_view text, const std::string &name, Report &rep);

}  // namespace edi

#endif
