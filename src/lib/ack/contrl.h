// CONTRL acknowledgements: the syntax and service report a receiver sends
// back for an interchange, built from the findings of its validation.
#ifndef EDI_CONTRL_H
#define EDI_CONTRL_H

#include <string>

namespace edi {

class Report;

struct AckSettings {
    bool errorsonly = false;    // only interchanges with a rejected message
    std::string reference;      // control reference of the CONTRL interchange; "" new
    size_t maxfindings = 0;     // findings collected per input; 0 all
};

// One CONTRL interchange for each interchange of `bytes` (the file `input`),
// addressed back to its sender: the inbound syntax identifier and version,
// UCI with the inbound control reference, sender and recipient, and for
// each message a UCM accepting (7) or rejecting (4) it, with a UCS for
// each faulty segment (its position) and a UCD for each faulty element
// (its position and syntax error code).  The validation findings go to
// `rep` as well.  The text is empty when `errorsonly` and nothing was
// rejected.
std::string contrl(const std::string &input, const std::string &bytes, const AckSettings &opt,
                   Report &rep);

}  // namespace edi

#endif
