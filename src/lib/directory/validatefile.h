// Validation of an interchange file against the directories its message
// headers name: one line per finding, "FILE: message N, segment P (TAG): ...".
#ifndef EDI_VALIDATEFILE_H
#define EDI_VALIDATEFILE_H

#include <stdio.h>

#include <string>

namespace edi {

class Report;

// Adds the findings for the EDIFACT file `input` (its `bytes`) to `rep`
// and returns their number; a message whose directory or type the data
// lacks counts as one finding, and so does a file without any message.
// With `maxfindings` above 0, collecting stops after that many.
int validatefile(const std::string &input, const std::string &bytes, Report &rep,
                 size_t maxfindings = 0);

}  // namespace edi

#endif
