// Values of a message that hold characters outside the character set their
// interchange declares (syntax error code 37, invalid type of characters).
#ifndef EDI_VALIDATECHARSET_H
#define EDI_VALIDATECHARSET_H

#include <vector>

#include "directory/validate.h"
#include "text/charset.h"

namespace edi::dirs {

struct CharsetFinding {
    Finding finding;
    // Lower case letters in level A only: so common that they are
    // reported without failing the validation.
    bool warning = false;
};

// One finding per value of `segs` (UNH to UNT, values without release
// characters) that the declared set `cs` cannot hold; `syntaxid` names the
// set in the sentences.  None for Charset::unknown: the caller reports the
// syntax identifier itself.
std::vector<CharsetFinding> charsetfindings(Charset cs, const std::string &syntaxid,
                                            const std::vector<SegmentValues> &segs);

}  // namespace edi::dirs

#endif
