// Default functions that a configuration node can name in `deffunc`, and
// their counters.
#include <stdio.h>
#include <strings.h>

#include "../debug.h"
#include "../state.h"
#include "convert.h"

namespace ediprot {

char *execdeffunc(char *name)
{
    static char empty[1] = "";  // callers must not change it
    builtinfuncs_t *fp = funcs;
    while (fp->name != nullptr && strcasecmp(fp->name, name) != 0)
        fp++;
    if (fp->func != nullptr)
        return fp->func();
    empty[0] = '\0';
    return empty;
}

char *unhcnt(void)
{
    static char unh[256];
    nunhcnt++;
    snprintf(unh, sizeof unh, "%d", nunhcnt);
    TRACE(1, "unhcnt %s\n", unh);
    return unh;
}

char *seccnt(void)
{
    static char unh[256];
    sectioncnt++;
    snprintf(unh, sizeof unh, "%d", sectioncnt);
    TRACE(1, "sectioncnt %s\n", unh);
    return unh;
}

}  // namespace ediprot
