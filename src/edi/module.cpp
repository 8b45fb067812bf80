#include "module.h"

#include "locations.h"

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
    const char *reason = "not found";
    for (const std::string &candidate : modulecandidates()) {
        mod.handle = dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (mod.handle != nullptr)
            break;
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
           lookup(mod.handle, "seg_sep", mod.seg_sep) &&
           lookup(mod.handle, "charsetB", mod.charsetB);
}

}  // namespace edi
