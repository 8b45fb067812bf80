// Release characters in a form the module's reader takes as the sender
// meant them.  In the syntax a release character makes the next character
// plain text, so "??'" is a question mark followed by the end of the
// segment.  The module's reader releases any separator or terminator that
// has a release character directly in front of it, so it reads "??'" as a
// question mark and a released terminator, and the segment runs on into
// the next one.  Values that end in a question mark meet this whenever a
// partner (or our own writer) releases them correctly.
//
// Where a working copy holds such a place, it is rewritten with a release
// character that occurs nowhere in it, declared in its UNA: every release
// pair becomes that character followed by the released one, and a plain
// question mark is then plain text for the module too.  The values the
// module stores are the same, since it takes the release characters out.
#ifndef EDI_REESCAPE_H
#define EDI_REESCAPE_H

#include <string>

namespace edi {

// `text` (one interchange, UNA first if it has one) rewritten as above if
// it needs it; else `text` itself.  `changed` tells which; `release`
// receives the release character chosen (0 when none was free, which
// leaves the text unchanged).
std::string reescape(const std::string &text, bool &changed, char &release);

}  // namespace edi

#endif
