// The ediprot module as libedi uses it: loaded once per process the way any
// host loads it (its host services resolve to libedihost.so, already in the
// process), its entry points looked up by name, and one call at a time let
// into it, since it keeps its state in globals.
#ifndef EDI_MODULE_H
#define EDI_MODULE_H

#include <mutex>
#include <string>
#include <vector>

#include "ediprot.h"
#include "module/capture.h"

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

// Runs `call` inside the module: under its lock, with the trace level
// `level` (0..15; -1 leaves it) and, when `capture`, what the module
// writes to stderr caught and given back line by line.
template <typename F>
std::vector<std::string> inmodule(int level, bool capture, F call)
{
    std::lock_guard<std::recursive_mutex> hold(modulelock());
    int saved = tracelevel;
    if (level >= 0)
        tracelevel = static_cast<int>(static_cast<unsigned>(level) << 28);
    std::vector<std::string> lines;
    {
        StderrCapture cap(capture);
        call();
        lines = cap.lines();
    }
    tracelevel = saved;
    return lines;
}

}  // namespace edi

#endif
