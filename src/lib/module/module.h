// The ediprot module as libedi uses it: loaded once per process the way any
// host loads it (its host services resolve to libedihost.so, already in the
// process), its entry points looked up by name, and one call at a time let
// into it, since it keeps its state in globals.
#ifndef EDI_MODULE_H
#define EDI_MODULE_H

#include <mutex>
#include <string>

#include "ediprot.h"

namespace edi {

class Report;

struct Module {
    decltype(&::edifactread) edifactread = nullptr;
    decltype(&::edifactwrite) edifactwrite = nullptr;
    decltype(&::vdaread) vdaread = nullptr;
    decltype(&::vdawrite) vdawrite = nullptr;
    decltype(&::makerecord) makerecord = nullptr;
    char *seg_sep = nullptr;  // the module's service characters
    char **charsetB = nullptr;  // the module's table for written characters
    void *handle = nullptr;
};

// The process's module, loaded on first use from the first of
// modulecandidates() that loads; NULL after "edi: cannot load module:
// <reason>" is reported (and on every later call).
const Module *themodule(Report &rep);

// Held by whoever calls into the module or sets its input or trace level.
std::recursive_mutex &modulelock();

}  // namespace edi

#endif
