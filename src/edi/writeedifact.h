// edi write: the module writes each run of messages of one type with its
// configuration, the command joins the runs into one interchange and
// corrects what a partner checks (counts, control reference).
#ifndef EDI_WRITEEDIFACT_H
#define EDI_WRITEEDIFACT_H

#include "module.h"
#include "options.h"

namespace edi {

Exit writeedifact(const Module &mod, const Options &opt);

}  // namespace edi

#endif
