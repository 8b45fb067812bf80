#include "module.h"

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>

namespace edi {

namespace {

template <typename T>
bool lookup(void *handle, const char *name, T &out)
{
    out = reinterpret_cast<T>(dlsym(handle, name));
    if (out == nullptr) {
        fprintf(stderr, "edi: cannot load module: symbol %s missing\n", name);
        return false;
    }
    return true;
}

}  // namespace

bool loadmodule(Module &mod)
{
    const char *candidates[3];
    int n = 0;
    if (const char *env = getenv("EDIPROT_MODULE"); env != nullptr && *env != '\0')
        candidates[n++] = env;
#ifdef EDIPROT_MODULE_PATH
    else
        candidates[n++] = EDIPROT_MODULE_PATH;
#endif
    candidates[n++] = "libediprot.so.1";

    const char *reason = "not found";
    for (int i = 0; i < n && mod.handle == nullptr; i++) {
        mod.handle = dlopen(candidates[i], RTLD_NOW | RTLD_LOCAL);
        if (mod.handle == nullptr)
            reason = dlerror();
    }
    if (mod.handle == nullptr) {
        fprintf(stderr, "edi: cannot load module: %s\n", reason);
        return false;
    }
    return lookup(mod.handle, "edifactread", mod.edifactread) &&
           lookup(mod.handle, "edifactwrite", mod.edifactwrite) &&
           lookup(mod.handle, "vdaread", mod.vdaread) &&
           lookup(mod.handle, "vdawrite", mod.vdawrite) &&
           lookup(mod.handle, "seg_sep", mod.seg_sep);
}

}  // namespace edi
