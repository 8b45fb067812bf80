// What a partner's translator checks in an interchange the module wrote:
// each UNT's segment count and message reference (the same as its UNH's),
// the UNZ's message count, and a control reference in UNB and UNZ that is
// the same in both and new for every interchange.  The command corrects
// these in its copy of the module's output.
#ifndef EDI_COUNTFIX_H
#define EDI_COUNTFIX_H

#include <time.h>

#include <string>
#include <vector>

namespace edi {

// The interchange `text` with UNT counts, UNT message references (from
// the UNH in front, element 1), UNZ count and the reference `ref` in UNB
// (element 5) and UNZ (element 2) set.  Segments the text does not have
// are left alone.  Each value that changed is noted in `changes` ("UNT
// element 1: 35 -> 34").
std::string fixcounts(const std::string &text, const std::string &ref,
                      std::vector<std::string> &changes);

// The interchange with the date and time of UNB (element 4) set to
// `when` in UTC, for output that is the same at every run.
std::string setdate(const std::string &text, time_t when);

// One interchange from several that the module wrote with the same UNA and
// UNB: the header of the first, the messages of all, the UNZ of the first.
std::string joininterchanges(const std::vector<std::string> &texts);

// A control reference of 14 digits: the time in seconds and four digits
// from the microseconds and the process id.
std::string newreference();

}  // namespace edi

#endif
