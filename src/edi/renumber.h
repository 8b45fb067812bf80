// Loop numbers of a tree set afresh after the configuration that writes it.
#pragma once

#include "ediprot.h"

namespace edi {

// The writer finds a loop occurrence by a number that depends on the
// configuration's layout (each chain of siblings counts its loops' tries
// together).  A tree read or made with another layout, e.g. a configuration
// with fewer segments, or made by hand without numbers, would lose
// occurrences; this numbers the loop nodes of `tree`, its messages among
// them, as a read with `config` would have.  Nodes the configuration does
// not name keep their numbers.
void renumberloops(const datatree_t *config, datatree_t *tree);

}  // namespace edi
