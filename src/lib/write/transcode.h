// Values written in another character set than they were read in: a tree
// read from a UTF-8 interchange written with --syntax UNOC:3 gets its
// values in ISO 8859-1.  For the time of the write each value is decoded
// from the tree's set and encoded into the output's; a character the
// output's set has no code for is named (path and character) and fails the
// write, or with keep-going is written as '?' and listed.  The tree's own
// values are back when the object goes.
#ifndef EDI_TRANSCODE_H
#define EDI_TRANSCODE_H

#include <string>
#include <utility>
#include <vector>

#include "ediprot.h"
#include "text/charset.h"

namespace edi {

class Report;

class Transcoding {
public:
    // The values of the messages under `root` (envelope nodes passed over),
    // from `from` into `to`; `name` names the tree in findings.
    Transcoding(datatree_t *root, Charset from, Charset to, bool keepgoing,
                const std::string &name, Report &rep);
    ~Transcoding();
    Transcoding(const Transcoding &) = delete;
    Transcoding &operator=(const Transcoding &) = delete;

    // False when a character could not be written and keep-going was not given.
    bool ok() const { return ok_; }

private:
    std::vector<std::pair<datatree_t *, char *>> values_;  // node, its own value
    bool ok_ = true;
};

}  // namespace edi

#endif
