// What a file picks up on its way from a partner that is no part of the
// interchange: a byte-order mark, line ends and indentation between
// segments, filler behind the last segment.
#ifndef EDI_TRANSPORT_H
#define EDI_TRANSPORT_H

#include <string>
#include <vector>

namespace edi {

struct TransportNotes {
    bool bom = false;          // a UTF-8 byte-order mark was taken off
    size_t between = 0;        // bytes taken out between segments
    size_t trailing = 0;       // bytes taken off behind the last terminator
    size_t wrapped = 0;        // the width of a file wrapped at a fixed width
    std::vector<std::string> describe() const;  // one line per change
};

// The interchange without transport bytes.  Line ends and blanks inside a
// segment stay; only bytes that stand between a terminator and the next
// tag (CR, LF, blank, tab, unless one of them is a service character) and
// blanks, line ends, NUL and Ctrl-Z behind the last terminator go.  A file
// wrapped at a fixed width (all lines but the last of one length, line
// ends inside segments) loses every line end.
// The text is taken by value: a caller that moves its input in gets it
// back compacted, without a second copy.
std::string striptransport(std::string bytes, TransportNotes &notes);

}  // namespace edi

#endif
