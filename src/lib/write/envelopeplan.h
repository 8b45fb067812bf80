// What the UNB (and UNG) of an interchange the library writes hold: the
// envelope the tree carries (a read's `#envelope` and `#group` nodes), else
// the module's own header; the caller's options over either.
#ifndef EDI_ENVELOPEPLAN_H
#define EDI_ENVELOPEPLAN_H

#include <string>
#include <vector>

#include "ediprot.h"
#include "settings.h"
#include "text/envelopeout.h"

namespace edi {

class Report;

// A functional group of the tree: its `#group` node and the messages
// (indices from 0 in the interchange) behind it.
struct GroupSpan {
    const datatree_t *node = nullptr;
    size_t first = 0, last = 0;
};

struct EnvelopePlan {
    OutEnvelope out;
    std::string una;       // the six service characters of the output
    bool keepuna = true;   // the output begins with UNA
    std::string reference; // UNB/UNZ control reference
};

// The envelope of one interchange: `env` the tree's `#envelope` node (or
// NULL), `groups` its functional groups, `moduletext` what the module wrote
// (its UNB and first UNH give what the tree and options leave open).
// False, with failures in `rep`, when a value is refused: a separator
// inside an identification, a value longer than its element, an unknown
// syntax identifier.
bool planenvelope(const std::string &moduletext, const datatree_t *env,
                  const std::vector<GroupSpan> &groups, const Settings &opt, EnvelopePlan &plan,
                  Report &rep);

// The identification of a partner as the option gives it, cut at component
// separators: ID, ID:QUALIFIER or ID:QUALIFIER:ROUTING.
std::vector<std::string> partnerof(const std::string &option);

}  // namespace edi

#endif
