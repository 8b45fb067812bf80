// The lines of a VDA record file as the library reads them.
#ifndef EDI_VDA_LINES_H
#define EDI_VDA_LINES_H

#include <stddef.h>

#include <string>
#include <vector>

namespace edi {

constexpr size_t kRecordWidth = 128;

// The lines of the working copy, each with its line end: a byte-order mark
// taken off, a file without line ends cut into records of 128 characters,
// every line closed by a line end (the module takes the last character of
// a line off unseen).  With `raw` nothing is changed but the line end
// behind the last line.  Each change is noted in `changes`.
std::vector<std::string> workinglines(const std::string &bytes, bool raw,
                                      std::vector<std::string> &changes);

// A line without any character but blanks, line ends and the end-of-file
// mark (Ctrl-Z) of old transfer programs carries nothing.
bool blankline(const std::string &l);

// The line without its line end.
std::string content(const std::string &line);

}  // namespace edi

#endif
