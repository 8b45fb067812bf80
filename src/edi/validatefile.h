// Validation of an interchange file against the directories its message
// headers name: one line per finding, "FILE: message N, segment P (TAG): ...".
#ifndef EDI_VALIDATEFILE_H
#define EDI_VALIDATEFILE_H

#include <stdio.h>

#include <string>

namespace edi {

// Writes the findings for the EDIFACT file `input` to `out` and returns
// their number; a message whose directory or type the data lacks counts as
// one finding, and so does a file without any message; a file that cannot
// be read gives -1 (after a line on stderr).
int validatefile(const std::string &input, FILE *out);

}  // namespace edi

#endif
