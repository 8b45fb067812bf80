// Loop numbering of a tree filled by the EDIFACT reader.
#ifndef EDIPROT_LOOPNUMBERS_H
#define EDIPROT_LOOPNUMBERS_H

#include "../internal.h"

namespace ediprot {

// Gives the loop nodes of the filled chain `data` the numbers under which
// the EDIFACT writer, walking the configuration chain `conf`, looks for
// them.
void numberloops(datatree_t *conf, datatree_t *data);

}  // namespace ediprot

#endif
