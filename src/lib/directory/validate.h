// Checks one message against its directory: where each segment may stand
// and how often, which segments and elements must be there, and that each
// value fits its representation and code list.
#pragma once
#include <string>
#include <vector>

#include "directory/configgen.h"

namespace edi::dirs {

// A value in quotes as findings show it, bytes outside printable ASCII as
// \xNN.
std::string shown(const std::string &v);

// One segment of a message: its tag and its elements, each a list of
// components (a simple element has one), values without release characters.
struct SegmentValues {
    std::string tag;
    std::vector<std::vector<std::string>> elements;
    // Syntax version 4 with a repetition separator: how many repetitions
    // each element of the segment holds, `elements` holding them one after
    // the other.  Empty: one entry of `elements` per position, a repeated
    // element taking as many positions as it may repeat (as the generator
    // lays it out).
    std::vector<size_t> repeats;
};

struct Finding {
    size_t segment = 0;  // position in the message, from 1 (UNH)
    std::string tag;     // the tag of that segment
    std::string text;    // what is wrong
    int code = 0;        // syntax error code (0085): 12, 13, 15, 16, 28, 29, 35 ...
    int element = 0;     // element position in the segment, from 1; 0: the segment
    int component = 0;   // component position in the element, from 1; 0: none
    int repetition = 0;  // repetition of the element, from 1; 0: none
    std::string id;      // data element, composite or component number (C002, 1001)
    std::string value;   // the value found
};

// The findings for a message of `type`, which the directory `d` has, with
// the segments `segs` from UNH to UNT; none for a message that conforms.
std::vector<Finding> validate(const Directory &d, const std::string &type,
                              const std::vector<SegmentValues> &segs);

}  // namespace edi::dirs
