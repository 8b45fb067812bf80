// The values of a data tree that the module's writer would leave out.
//
// The writers walk the configuration, never the tree: for every element
// (EDIFACT) or field (VDA) of the configuration they look a value up in
// the tree by the element's path of names and by the loop numbers of the
// walk, and a tree node that no such lookup reaches is not written, without
// a word.  A tree read with another directory, with a layout taken from
// the file, or of the other format loses most of its values that way.
//
// writerreads() walks the configuration exactly as the module's writer does
// (src/programs/tree/configwalk.cpp, searchlooppath.cpp,
// searchloopinstance.cpp, the segment writer's rule that a segment without
// user data is taken back, the record writer's rule that a record is
// written only where the tree has its node) and gives the values it writes,
// each with the configuration node it is written by; unwritten() the nodes
// holding a value that none of those is.
#ifndef EDI_UNWRITTEN_H
#define EDI_UNWRITTEN_H

#include <string>
#include <vector>

#include "ediprot.h"

namespace edi {

enum class Writer { edifact, vda };

// A value the writer writes: the data node, and the configuration node
// (element, component or field) it is written by.
struct Written {
    const datatree_t *node;
    const datatree_t *config;
};

// A node holding a value that the writer never writes, with its place:
// `top` the node directly below the root that it is in (a message or a
// transmission; NULL for the root itself), `path` the names from below the
// root down to it joined by '.', with "[k]" (from 1) behind a name that
// several siblings bear ("*ORDERS[2].*SG25[2].$LIN.C212.7140"), `inner`
// the part of it below `top` ("*SG25[2].$LIN.C212.7140"; "" for `top`
// itself or the root).
// `name` and `value` are the node's, copied (the node may be freed before
// they are reported).
struct Unwritten {
    const datatree_t *node;
    const datatree_t *top;
    std::string path, inner;
    std::string name, value;
};

// The values of the tree `head` that the writer, walking `config` from its
// root, writes, in the order it writes them.  The tree's loop numbers must
// be those the write will see (after renumbering).  The walk keeps where
// each level of the configuration path stands in the tree, as the
// module's writers do (src/programs/tree/pathscope.h); with `plain` it
// looks every path up from the root instead, for tests that compare both.
std::vector<Written> writerreads(const datatree_t *head, const datatree_t *config, Writer w,
                                 bool plain = false);

// True if the writer, walking `config`, writes every value of the tree
// `head`: the walk's values, in the order it writes them, are the tree's
// in document order (the walk stops at the first that is not).  That is
// what a tree written with the configuration it was read with gives; false
// says only that unwritten(head, writerreads(...)) must be asked.
bool writesall(const datatree_t *head, const datatree_t *config, Writer w);

// The nodes of `head` (the root, everything below it) that hold a value
// other than "" and are not among `written`, in document order (with
// `written` empty: every node that holds a value).
std::vector<Unwritten> unwritten(const datatree_t *head, const std::vector<Written> &written);

// The same for the nodes of `head` that hold a value and stand outside any
// node for which `keep` is true (VDA: the values outside records, which
// the placement of records drops).
std::vector<Unwritten> outside(const datatree_t *head, bool (*keep)(const datatree_t *));

// "'VALUE'", non-printable bytes as \xNN, cut behind 60 characters ("...").
std::string quoted(const char *value);

}  // namespace edi

#endif
