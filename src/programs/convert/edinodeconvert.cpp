// Placeholder until output conversion lands: returns the text unchanged.
#include <string.h>

#include "../internal.h"

namespace ediprot {

char *edinodeconvert(datatree_t *ep, char *udata)
{
    (void)ep;
    static char buf[kTextMax];
    memset(buf, 0, sizeof buf);
    if (udata != nullptr)
        strncpy(buf, udata, sizeof buf - 1);
    return buf;
}

}  // namespace ediprot
