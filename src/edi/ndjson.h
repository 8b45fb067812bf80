// edi read --format ndjson: one line of JSON per message, written as soon
// as the library's message iterator gives the message.
#ifndef EDI_NDJSON_H
#define EDI_NDJSON_H

#include <string>

#include "options.h"

namespace edi {

// The lines of `input` ("-": standard input) to standard output (`out`
// "" or "-") as they come, or to the file `out` whole once the input is
// read; findings on stderr as they arise.
Exit readndjson(const Options &opt, const std::string &input, const std::string &out);

}  // namespace edi

#endif
