// Bytes above 127 carried past the module's writer, which drops them: text
// in ISO 8859 or UTF-8 written back as the partner sent it.  Before the
// module writes, each such byte of a value (and the marker byte itself)
// becomes the marker 0x1C and two hex digits; the writer passes control
// characters and digits as they are, and the library turns the markers
// back into their bytes in its copy of the output.  The lengths the
// configuration gives count characters of the output's set, so a value
// holding markers is cut to its length first and its element's length is
// raised by what the markers add for the module's own cut; every other
// value of that element is cut by the library too.  Values and lengths are
// restored when the object goes.
#ifndef EDI_HIGHBYTES_H
#define EDI_HIGHBYTES_H

#include <string>
#include <utility>
#include <vector>

#include "ediprot.h"

namespace edi {

class HighBytes {
public:
    // The messages `first` to `last` (NULL: to the end of the chain) as
    // `config` writes them; `utf8`: lengths count UTF-8 characters.
    HighBytes(datatree_t *first, datatree_t *last, datatree_t *config, bool utf8);
    ~HighBytes();
    HighBytes(const HighBytes &) = delete;
    HighBytes &operator=(const HighBytes &) = delete;

    // True if any value was changed (the output then needs restore()).
    bool any() const { return !values_.empty(); }

    // The module's output with each marker turned back into its byte.
    static std::string restore(const std::string &text);

private:
    std::vector<std::pair<datatree_t *, char *>> values_;  // node, its own value
    std::vector<std::pair<datatree_t *, int>> lengths_;    // configuration node, its edimaxlen
};

}  // namespace edi

#endif
