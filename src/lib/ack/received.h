// Acknowledgements received from a partner, told in words: which
// interchange and messages a CONTRL accepted or rejected and why, and the
// errors an APERAK reports.
#ifndef EDI_RECEIVED_H
#define EDI_RECEIVED_H

#include <string>

namespace edi {

class Report;

// One finding (kind note) per statement of each CONTRL and APERAK message
// in `bytes` (the file `input`); the number of messages read so.
int tellacknowledgements(const std::string &input, const std::string &bytes, Report &rep);

// The name of a syntax error code (0085), "" for an unknown one.
const char *syntaxerrorname(int code);

}  // namespace edi

#endif
