// The four commands of the edi program.
#ifndef EDI_COMMANDS_H
#define EDI_COMMANDS_H

#include "module.h"
#include "options.h"

namespace edi {

Exit readcommand(const Module &mod, const Options &opt);   // read, vda-read
Exit writecommand(const Module &mod, const Options &opt);  // write, vda-write

}  // namespace edi

#endif
