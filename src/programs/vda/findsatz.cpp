// findsatz: the configuration node of a VDA record key.
#include <string.h>

#include "vda.h"

namespace ediprot {

// The key ("S511") is compared with each name from its second character
// on, so "$S511" answers it whatever its first character.  A node is
// tested before everything below it, and everything below it before its
// next sibling: the first hit in that order wins.
datatree_t *findsatz(datatree_t *in, const char *satz)
{
    for (datatree_t *sp = in; sp != nullptr; sp = sp->next) {
        if (sp->xmltag[0] != '\0' && strcmp(sp->xmltag + 1, satz) == 0)
            return sp;
        if (sp->child != nullptr) {
            datatree_t *haveit = findsatz(sp->child, satz);
            if (haveit != nullptr)
                return haveit;
        }
    }
    return nullptr;
}

}  // namespace ediprot
