// The segments of an interchange as the syntax cuts them: service
// characters from UNA (or the defaults), a terminator or separator behind
// an odd number of release characters is text.
#ifndef EDI_SEGMENTS_H
#define EDI_SEGMENTS_H

#include <string>
#include <string_view>
#include <vector>

namespace edi {

struct Syntax {
    char cmp = ':', dst = '+', dec = '.', rel = '?', seg = '\'';
    bool una = false;  // the text began with UNA
};

// The service characters of a text that begins with UNA, else the defaults.
Syntax syntaxof(std::string_view text);

struct Segment {
    size_t begin = 0, end = 0;  // [begin, end) in the text, terminator included
    std::string tag;            // first three characters, upper case
    bool terminated = false;    // false for a last piece without terminator
    Syntax sx;                  // the service characters in force for it
};

// True if the character at `pos` is released: an odd number of release
// characters stands directly in front of it (from `from` on).  The module's
// reader looks only at the one character in front; a working copy that
// would read differently is rewritten first (reescape.h), so that both
// agree.
bool released(std::string_view text, size_t pos, size_t from, char rel);

// The segments of a text one at a time, as cutsegments gives them, for a
// pass over a large interchange without a list of all its segments.
class SegmentReader {
public:
    explicit SegmentReader(std::string_view text) : text_(text) {}
    // The next segment into `s`; false at the end of the text.
    bool next(Segment &s);

private:
    std::string_view text_;
    Syntax sx_;
    size_t start_ = 0;
};

// Cuts `text` into segments.  A UNA (nine bytes) at the start of a segment
// is a segment of its own whose service characters hold from there on, so
// that each interchange of a file may have its own.  Bytes between
// segments are not skipped: they belong to the segment behind them, as in
// the module.
std::vector<Segment> cutsegments(std::string_view text);

// The text of a segment without its terminator.
std::string_view segmentbody(std::string_view text, const Segment &s);

// The elements of one segment text (terminator left out), cut at unreleased
// element separators; element 0 is the tag.  Values keep their release
// characters.
std::vector<std::string> elementsof(std::string_view seg, const Syntax &sx);

// The components of one element, cut at unreleased component separators.
std::vector<std::string> componentsof(std::string_view elem, const Syntax &sx);

// A value as the partner meant it: release characters taken out.
std::string unreleased(std::string_view v, char rel);

// Bytes outside printable ASCII as \xNN, so that a message stays one line.
std::string printable(std::string_view s);

}  // namespace edi

#endif
