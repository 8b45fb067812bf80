// The envelope of an interchange the library writes: the UNB (and UNG/UNE
// around functional groups) built from values a caller or a received
// interchange gives, and the whole text in the partner's service
// characters.  The module always writes the default characters and a UNB
// of its own making; these passes turn its output into what the partner
// expects back.
#ifndef EDI_ENVELOPEOUT_H
#define EDI_ENVELOPEOUT_H

#include <string>
#include <vector>

#include "trees/envelopenodes.h"

namespace edi {

struct OutEnvelope {
    SegmentValues unb;  // UNB elements from element 1 (index 0), unreleased
    struct Group {
        size_t first = 0, last = 0;  // message indices (from 0) it frames
        SegmentValues ung;           // UNG elements from element 1
    };
    std::vector<Group> groups;
};

// `text` (an interchange in the default service characters) with its UNB
// replaced by one of `env.unb`'s values and each group framed by UNG and
// UNE (count and reference set).  With a syntax version of 4 or above the
// UNA declares '*' as repetition separator.  Values are released as the
// default characters need.
std::string setenvelope(const std::string &text, const OutEnvelope &env);

// `text` (with or without UNA, as its UNA says) rewritten in the service
// characters `una` (six characters as UNA gives them): every value
// unreleased and released again for the new characters.  `keepuna`: the
// result begins with UNA, else it has none.
std::string reseparate(const std::string &text, const std::string &una, bool keepuna);

// The date and time of UNB element 4 for the moment `when` (UTC): YYMMDD
// up to syntax version 3, CCYYMMDD from 4 on.
std::vector<std::string> unbdate(long long when, int version);

}  // namespace edi

#endif
