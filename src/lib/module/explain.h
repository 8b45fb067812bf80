// One plain sentence of the command's own behind the module's messages:
// what was wrong with the file and what to do about it.
#ifndef EDI_EXPLAIN_H
#define EDI_EXPLAIN_H

#include <string>
#include <vector>

namespace edi {

// For a refused EDIFACT read, from the module's lines and the working copy
// that the module read.
std::string explainread(const std::vector<std::string> &modlines, const std::string &text,
                        bool raw);

// For a failed EDIFACT write, from the module's lines.
std::string explainwrite(const std::vector<std::string> &modlines);

}  // namespace edi

#endif
