// Loads libediprot.so the way any host program does: the host services
// come from libedihost.so, which this program links, and the module's
// entry points are looked up by name.
#ifndef EDI_MODULE_H
#define EDI_MODULE_H

#include <string>

#include "ediprot.h"

namespace edi {

struct Module {
    decltype(&::edifactread) edifactread = nullptr;
    decltype(&::edifactwrite) edifactwrite = nullptr;
    decltype(&::vdaread) vdaread = nullptr;
    decltype(&::vdawrite) vdawrite = nullptr;
    char *seg_sep = nullptr;  // the module's service characters
    char **charsetB = nullptr;  // the module's table for written characters
    void *handle = nullptr;
};

// Opens the module from the first of modulecandidates() that loads.
// On failure writes "edi: cannot load module: <reason>" and returns false.
bool loadmodule(Module &mod);

}  // namespace edi

#endif
