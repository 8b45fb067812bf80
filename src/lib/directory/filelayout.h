// Layouts for messages that no directory describes (a partner's own
// message, an industry subset, a version the data lacks), taken from the
// message itself so that it still reads and writes back unchanged.
//
// Every segment of the message becomes a tag node of its own, named after
// its tag and, from the second one of a tag on, a number ($DTM, $DTM_2):
// the reader matches a tag node by its first four characters and the
// writer writes the three letters behind the `$`, so the numbers never
// reach the file, while they keep every node's path unique for the writer.
// Below it come exactly the elements and components that this segment
// holds, named by position (DTM01, and DTM0102 for the second component of
// the first element).  There are no loops: nothing is regrouped, and the
// tree holds the message's segments in file order.
#ifndef EDI_FILELAYOUT_H
#define EDI_FILELAYOUT_H

#include <string>
#include <vector>

#include "ediprot.h"
#include "text/envelope.h"

namespace edi {

// Working copies of one message each, cut from a working copy that holds
// several: UNA and UNB in front, the message, UNZ behind.  A copy whose
// messages cannot be told apart (UNH without UNT) comes back unchanged.
std::vector<Unit> splitmessages(const Unit &u);

// The inbound configuration (tree text) for the first message of `text`,
// a working copy; the message node is `*` and the type from UNH.
std::string layoutfromtext(const std::string &text);

// The outbound configuration (tree text) for one message node of a data
// tree read with such a layout: the node's own segments and elements.
std::string layoutfromtree(const datatree_t *message);

}  // namespace edi

#endif
