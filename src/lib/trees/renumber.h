// Loop numbers of a tree set afresh after the configuration that writes it.
#pragma once

#include "ediprot.h"

namespace edi {

// The writer finds a loop occurrence by a number that depends on the
// configuration's layout (each chain of siblings counts its loops' tries
// together).  A tree read with another layout, e.g. a configuration with
// fewer segments, or made by hand without numbers would lose occurrences;
// these number its loops as a read with `config` would have.  Nodes the
// configuration does not name keep their numbers; an occurrence without
// any value gets 0, a number the writer never looks for.

// The whole tree, its message nodes included.
void renumbertree(const datatree_t *config, datatree_t *tree);

// The loops inside one message node, after the configuration's message
// node of the same name.
void renumbermessage(const datatree_t *config, datatree_t *message);

}  // namespace edi
