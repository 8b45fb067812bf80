// The interchange envelope as nodes of a read's tree, so that every form
// of the tree (tree text, JSON, the library's records) carries what the
// partner sent and a write can send it back.  Before the messages of each
// interchange the root gets a node `#envelope`:
//
//   #envelope
//     UNA      the six service characters as received (absent without UNA),
//              and each as a child (component, element, decimal, release,
//              repetition, terminator)
//     charset  the character set the values are decoded with in JSON
//     UNB      S001/0001, S001/0002, ..., S002/0004, S002/0007, ..., 0020, ...
//     UNZ      0036 (message count) and 0020 as received
//
// and before the messages of each functional group a node `#group` with
// the UNG's elements (0038, S006/0040, ...) and a child UNE (0060, 0048)
// as received.  The trailers are for reading: a write counts anew.  Values are bytes as sent,
// release characters taken out; only the elements the segment has are
// nodes.  Root children whose name begins with '#' are never messages.
#ifndef EDI_ENVELOPENODES_H
#define EDI_ENVELOPENODES_H

#include <string>
#include <vector>

#include "ediprot.h"

namespace edi {

inline constexpr const char *envelopenodename = "#envelope";
inline constexpr const char *groupnodename = "#group";

// True for a root child that is an envelope or group node.
bool isenvelopenode(const datatree_t *tp);

// The `#envelope` node of an interchange: `una` ("" when none), `unb` and
// `unz` ("" when none) segments as received, `charset` the set its values
// are decoded with.
datatree_t *envelopenode(const std::string &una, const std::string &unb,
                         const std::string &unz, const std::string &charset);
// The `#group` node of a UNG (and its UNE, "" when none) as received, in
// the service characters of `una` ("" for the defaults).
datatree_t *groupnode(const std::string &una, const std::string &ung, const std::string &une);

// One segment's values by element and component, release characters out.
using SegmentValues = std::vector<std::vector<std::string>>;

// Component `c` of element `e` (both from 0), "" where there is none.
std::string segmentvalue(const SegmentValues &els, size_t e, size_t c);

// The UNB (or UNG) values an envelope (group) node holds, by position;
// elements it lacks are empty.
SegmentValues unbvalues(const datatree_t *envelope);
SegmentValues ungvalues(const datatree_t *group);
// The UNA characters an envelope node holds ("" when none), and its charset.
std::string unaof(const datatree_t *envelope);
std::string charsetof(const datatree_t *envelope);

}  // namespace edi

#endif
