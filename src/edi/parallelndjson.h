// edi read -j N of one interchange to NDJSON: N processes read a share of
// its messages each, and their lines are merged in file order.
#ifndef EDI_PARALLELNDJSON_H
#define EDI_PARALLELNDJSON_H

#include <string>

#include "options.h"

namespace edi {

// The lines of `input` (a file) to standard output (`out` "" or "-") or
// to the file `out`, whole once every worker is done; the same lines in the
// same order as one process gives.
Exit readndjsonparallel(const Options &opt, const std::string &input, const std::string &out);

}  // namespace edi

#endif
