// Segment tags the module would misread.  The module takes the first three
// characters of a segment as its tag whatever follows, so "BBBB+f1+f2"
// became a segment BBB holding "+f1+f2": a fourth letter, a tag of two
// letters or of other characters ran into the values without a word.  A
// tag is three letters or digits, followed by a separator or the end of
// the segment.
#ifndef EDI_SEGMENTTAGS_H
#define EDI_SEGMENTTAGS_H

#include <string>
#include <vector>

namespace edi {

struct BadTag {
    int message = 0;      // counted from 1 in the text
    size_t position = 0;  // the segment's place in its message, UNH is 1
    std::string tag;      // what stands where the tag belongs, up to its first separator
};

// `text` (a working copy: UNA, UNB, messages, UNZ) without the message
// segments (from the first UNH on) whose tag is no tag, which `bad`
// receives.  Empty segments are no tags' business and stay.
std::string withoutbadtags(const std::string &text, std::vector<BadTag> &bad);

}  // namespace edi

#endif
