// The working copy that tmpfopen hands out in place of a named file.
#include <stdio.h>
#include <string.h>

#include <string>

#include "edihost.h"

namespace {

struct WorkingInput {
    std::string name;
    const char *data = nullptr;
    size_t len = 0;
    bool set = false;
};

WorkingInput &current()
{
    static WorkingInput wi;
    return wi;
}

}  // namespace

extern "C" {

void edihost_setinput(const char *name, const char *data, size_t len)
{
    WorkingInput &wi = current();
    wi.name = name != nullptr ? name : "";
    wi.data = data;
    wi.len = len;
    wi.set = name != nullptr;
}

void edihost_clearinput(void)
{
    edihost_setinput(nullptr, nullptr, 0);
}

FILE *edihost_openinput(const char *name, const char *mode)
{
    const WorkingInput &wi = current();
    if (!wi.set || name == nullptr || mode == nullptr || mode[0] != 'r' || wi.name != name)
        return nullptr;
    // A memory stream of no bytes is refused by some C libraries; an empty
    // working copy reads as the empty device does.
    if (wi.len == 0)
        return fopen("/dev/null", "r");
    return fmemopen(const_cast<char *>(wi.data), wi.len, "r");
}

}  // extern "C"
