// The tag nodes of a configuration, each with the segment tag it reads: the
// working copy's passes that follow the configuration's layout of a
// segment (composites, repetitions) look them up by tag.
#ifndef EDI_TAGNODES_H
#define EDI_TAGNODES_H

#include <functional>
#include <string>

#include "ediprot.h"

namespace edi {

// Calls `visit(tag, node)` for every tag node below `config` (NULL: none);
// the tag is the first three characters behind the name's mark, upper case.
void eachtagnode(const datatree_t *config,
                 const std::function<void(const std::string &, const datatree_t *)> &visit);

}  // namespace edi

#endif
