// The module as the library reaches it, linked into the target instead of
// loaded with dlopen: the target has the module's objects (ediprot_obj),
// instrumented like the rest, and runs wherever libediprot.so lies.  Stands
// in for src/lib/module/module.cpp, which the target leaves out.
#include "findings/report.h"
#include "module/module.h"

namespace edi {

std::recursive_mutex &modulelock()
{
    static std::recursive_mutex lock;
    return lock;
}

const Module *themodule(Report &)
{
    static const Module mod = [] {
        Module m;
        m.edifactread = &::edifactread;
        m.edifactwrite = &::edifactwrite;
        m.vdaread = &::vdaread;
        m.vdawrite = &::vdawrite;
        m.seg_sep = &::seg_sep;
        m.charsetB = &::charsetB;
        return m;
    }();
    return &mod;
}

}  // namespace edi
