// Segments the module's reader left out of the tree.  The reader places a
// message's segments strictly forward through the configuration; a segment
// for which no tag node remains at that point is not placed, and neither
// is anything behind it in that message, without a message from the
// module.  The command finds each such place so that no data is lost
// without a word.
#ifndef EDI_PLACEMENT_H
#define EDI_PLACEMENT_H

#include <string>
#include <vector>

#include "ediprot.h"

namespace edi {

struct LeftOut {
    int message = 0;        // counted from 1 in the working copy
    size_t position = 0;    // the segment's place in its message, UNH is 1
    std::string tag;        // the first segment left out
    size_t count = 0;       // it and the segments behind it up to UNT
};

// Compares the segments of `text` (a working copy the module read) with
// the tag nodes of `tree` that received values, in order.  A segment
// without any element stores nothing even when it is placed; it is taken
// to be placed.
std::vector<LeftOut> leftout(const std::string &text, const datatree_t *tree);

// The first tag of a message segment of `text` that no tag node of
// `config` bears, or "" if the configuration knows every one.
std::string unknowntag(const std::string &text, const datatree_t *config);

}  // namespace edi

#endif
