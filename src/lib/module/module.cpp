#include "module/module.h"

#include <dlfcn.h>

#include "findings/report.h"
#include "module/locations.h"

namespace edi {

namespace {

template <typename T>
bool lookup(void *handle, const char *name, T &out, std::string &why)
{
    out = reinterpret_cast<T>(dlsym(handle, name));
    if (out == nullptr)
        why = std::string("symbol ") + name + " missing";
    return out != nullptr;
}

// Loads the module; "" or the reason it could not be loaded.
std::string load(Module &mod)
{
    // The module resolves its host services from the global scope.  A
    // program that opened libedi with RTLD_LOCAL (a scripting language's
    // extension) has the host layer outside it: promote it first.
    dlopen("libedihost.so.1", RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL);
    std::string reason = "not found";
    for (const std::string &candidate : modulecandidates()) {
        mod.handle = dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (mod.handle != nullptr)
            break;
        const char *err = dlerror();
        reason = err != nullptr ? err : "not found";
    }
    if (mod.handle == nullptr)
        return reason;
    std::string why;
    if (lookup(mod.handle, "edifactread", mod.edifactread, why) &&
        lookup(mod.handle, "edifactwrite", mod.edifactwrite, why) &&
        lookup(mod.handle, "vdaread", mod.vdaread, why) &&
        lookup(mod.handle, "vdawrite", mod.vdawrite, why) &&
        lookup(mod.handle, "makerecord", mod.makerecord, why) &&
        lookup(mod.handle, "seg_sep", mod.seg_sep, why) &&
        lookup(mod.handle, "charsetB", mod.charsetB, why))
        return "";
    return why;
}

}  // namespace

std::recursive_mutex &modulelock()
{
    static std::recursive_mutex lock;
    return lock;
}

const Module *themodule(Report &rep)
{
    static Module mod;
    static std::string failure = load(mod);
    if (!failure.empty()) {
        rep.fail("", "edi: cannot load module: " + failure);
        return nullptr;
    }
    return &mod;
}

}  // namespace edi
