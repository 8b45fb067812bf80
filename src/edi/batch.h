// Many inputs at once: the module is not re-entrant, so each input is read
// in a process of its own, N at a time.
#ifndef EDI_BATCH_H
#define EDI_BATCH_H

#include <functional>
#include <string>
#include <vector>

#include "options.h"

namespace edi {

// The inputs with each folder replaced by the plain files in it (not
// hidden ones, not below sub-folders), sorted by name.
std::vector<std::string> expandinputs(const std::vector<std::string> &inputs);

// Runs `readone` for every input in a child process, opt.jobs at a time.
// Each child's stdout and stderr are passed on whole when it ends.  On a
// terminal, stderr carries a progress line; at the end a summary: one line
// "INPUT: failed: REASON" per failed input, then
// "edi: N files: R read, F failed".  exit_failed if any failed.
Exit readbatch(const std::vector<std::string> &inputs, const Options &opt,
               const std::function<Exit(const std::string &)> &readone);

}  // namespace edi

#endif
