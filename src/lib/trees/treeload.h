// Trees from files or memory, in the tree text format or JSON (told apart
// by the first character that is not white space), and the memory a large
// tree is built in.
#ifndef EDI_TREELOAD_H
#define EDI_TREELOAD_H

#include <stddef.h>

#include <string>
#include <string_view>

#include "ediprot.h"

namespace edi {

class Report;

// The tree of `text`; `name` names it in findings and in the nodes' `file`.
// NULL after the reason is reported.
datatree_t *parsetree(std::string_view text, const std::string &name, Report &rep);

// The same for a file ("-": standard input).
datatree_t *loadtree(const std::string &path, Report &rep);

// A configuration tree file in the tree text format.
datatree_t *loadconfig(const std::string &path, Report &rep);

// The tree text of `tree`.
std::string treetext(const datatree_t *tree);

// Before a tree of about `nodes` nodes is built: from 10,000 nodes on,
// they are taken from one reservation (edihost_reservenodes).
void reservetree(size_t nodes);

}  // namespace edi

#endif
