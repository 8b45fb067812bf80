// Segments in their minimal form, as strict receivers expect them: a
// composite without its trailing empty components, a segment without its
// trailing empty elements ("BGM+380:::+20051098+9" is "BGM+380+20051098+9").
#ifndef EDI_MINIMAL_H
#define EDI_MINIMAL_H

#include <string>

namespace edi {

// `text` (one or more interchanges) with every segment but UNA in minimal
// form; release characters and released separators stay as they are, and
// empty elements or components in front of a value keep their places.
// `count` receives the number of segments changed.  Each segment is
// shaped in one pass over its bytes; with `plain` (for tests that compare
// both) from its elements and components cut into lists, as is done
// anyway where service characters coincide.
std::string minimalform(const std::string &text, size_t &count, bool plain = false);

}  // namespace edi

#endif
