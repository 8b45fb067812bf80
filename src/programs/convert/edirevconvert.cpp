// Placeholder until input conversion lands: returns the text unchanged.
#include <string.h>

#include "../internal.h"

namespace ediprot {

char *edirevconvert(datatree_t *ep, unsigned char *udata)
{
    (void)ep;
    static char buf[kTextMax];
    memset(buf, 0, sizeof buf);
    if (udata != nullptr)
        strncpy(buf, reinterpret_cast<char *>(udata), sizeof buf - 1);
    return buf;
}

}  // namespace ediprot
