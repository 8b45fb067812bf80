// Repeated elements.  From syntax version 4 on a partner writes the
// repetitions of an element behind each other, apart by the repetition
// separator ("ATT+2++M*M*M"); the module knows no such separator.  A
// configuration gives a repeated element one node per repetition, named
// as the generator names them (C956, C956_2, C956_3 ...), and the module
// fills such nodes from consecutive elements.  So the working copy gets
// each repetition as an element of its own, with empty ones up to the
// element's last place, and the writer's output gets them joined again.
#ifndef EDI_REPETITIONS_H
#define EDI_REPETITIONS_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "ediprot.h"

namespace edi {

// One element of a segment as a partner writes it, and the consecutive
// element nodes the configuration has for it (1 for an element that does
// not repeat).
struct ElementPlaces {
    std::string name;   // the first node's name
    size_t places = 1;
};

// Per segment tag (upper case), its elements in order.
using RepetitionLayout = std::map<std::string, std::vector<ElementPlaces>>;

// The layout of `config`: a run of element nodes X, X_2, X_3 ... of a tag
// node counts as one element with that many places.  A tag whose tag
// nodes disagree about the places of an element gets no repeated element
// at all: no one working copy would suit them all.
RepetitionLayout repetitionlayout(const datatree_t *config);

// `layout` with only the runs the directory confirms: `maxima` holds, per
// tag, how often each of its elements may repeat.  A run where the
// directory has an element that does not repeat stands for that many
// elements of their own (ALI's five 4183).  Tags `maxima` lacks stay.
void confirmrepetitions(RepetitionLayout &layout,
                        const std::map<std::string, std::vector<int>> &maxima);

// The syntax version of an interchange (UNB S001 0002, read with the
// service characters of `una`, "" for none); 0 when it names none.
int syntaxversion(std::string_view una, std::string_view unb);

// The repetition separator an interchange declares: UNA's fifth service
// character where it is no blank (and none of the others), without UNA
// '*' from syntax version 4 on (UNB S001 0002); else 0.  `una` is "" when
// the interchange has none.
char repetitionseparator(std::string_view una, std::string_view unb);

// One element holding more repetitions than it has places.
struct TooManyRepetitions {
    int message = 0;        // counted from 1 in the text
    size_t position = 0;    // the segment's place in its message, UNH is 1
    std::string tag;
    size_t element = 0;     // the element's place in the segment, from 1
    std::string name;       // its node in the configuration
    size_t found = 0, places = 0;
};

struct RepetitionSplit {
    size_t split = 0;     // elements cut at the repetition separator
    size_t segments = 0;  // segments rewritten (cut, or given empty places)
    char separator = 0; // the separator in force (0: the text has none)
    std::vector<TooManyRepetitions> toomany;  // repetitions past the last place are left out
};

// The working copy `text` (UNA, UNB, messages, UNZ) with each element of a
// tag in `layout` written into its places: repetitions apart by element
// separators, then empty elements up to the last place where an element
// follows.  Released separators stay text.  Unchanged when the text
// declares no repetition separator.
std::string splitrepetitions(const std::string &text, const RepetitionLayout &layout,
                             RepetitionSplit &notes);

// The writer's output `text` when it is an interchange of syntax version 4
// (UNB S001 0002): the places of each repeated element joined into one
// element with the repetition separator, trailing empty repetitions and
// components dropped, and every other repetition separator in a value
// released.  The separator is UNA's fifth character where it is no blank,
// else '*', which a UNA then declares.  `count` receives the number of
// elements joined; other texts come back unchanged.
std::string joinrepetitions(const std::string &text, const RepetitionLayout &layout,
                            size_t &count);

}  // namespace edi

#endif
