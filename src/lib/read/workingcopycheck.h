// What the reader settles in a working copy before the module reads it:
// the repetitions of syntax version 4 on the configuration's places, and
// segments whose tag is no tag.  Each change is noted; what cannot be
// read as sent is a finding that fails the read, or with --keep-going a
// warning, and the rest is read.
#ifndef EDI_WORKINGCOPYCHECK_H
#define EDI_WORKINGCOPYCHECK_H

#include <string>
#include <vector>

#include "ediprot.h"
#include "findings/report.h"
#include "text/envelope.h"

namespace edi {

// `text` (the working copy of `u`, read with `config`) with its repeated
// elements on their places and without segments of a bad tag; false when
// the read must stop (repetitions or segments left out and no
// `keepgoing`).  Findings name `input`; what is left out is added to
// `changes`, what was changed to `notes`, for the caller to record.
bool checkworkingcopy(const Unit &u, const datatree_t *config, const std::string &input,
                      bool keepgoing, std::string &text, std::vector<std::string> &changes,
                      std::vector<std::string> &notes, Report &rep);

}  // namespace edi

#endif
