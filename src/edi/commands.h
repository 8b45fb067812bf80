// The commands of the edi program.
#ifndef EDI_COMMANDS_H
#define EDI_COMMANDS_H

#include <string>

#include "module.h"
#include "options.h"

namespace edi {

// A tree file in the tree text format or JSON, told apart by its first
// character that is not white space; NULL after a message.
datatree_t *loadtree(const std::string &path);

Exit readcommand(const Module &mod, const Options &opt);   // read, vda-read
Exit writecommand(const Module &mod, const Options &opt);  // write, vda-write
// validate: findings against the directories on stdout; exit 1 if any.
Exit validatecommand(const Options &opt);

}  // namespace edi

#endif
