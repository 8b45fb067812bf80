/* Compiled as strict C99: the public header must be valid C.  Reports the
 * layout of the shared records as a C compiler sees it. */
#include <stddef.h>

#include "ediprot.h"

size_t c_layout(int which);

size_t c_layout(int which)
{
    switch (which) {
    case 0: return sizeof(datatree_t);
    case 1: return offsetof(datatree_t, data);
    case 2: return offsetof(datatree_t, loopcnt);
    case 3: return offsetof(datatree_t, iseditag);
    case 4: return offsetof(datatree_t, editype);
    case 5: return offsetof(datatree_t, file);
    case 6: return offsetof(datatree_t, parent);
    case 7: return offsetof(datatree_t, next);
    case 8: return sizeof(envelope_t);
    case 9: return offsetof(envelope_t, servconftag);
    case 10: return offsetof(envelope_t, onedokpost);
    case 11: return sizeof(servconf_t);
    case 12: return offsetof(servconf_t, fromconffile);
    case 13: return offsetof(servconf_t, next);
    case 14: return sizeof(editype_t);
    default: return 0;
    }
}
