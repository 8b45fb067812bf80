// Placeholder: VDA input is not built yet.
#include "../internal.h"

EDIPROT_API datatree_t *vdaread(char *fn, envelope_t **evpp,
                                datatree_t *inhead, servconf_t *sc)
{
    (void)evpp; (void)inhead; (void)sc;
    fprintf(stderr, "%s: VDA input not available\n", fn);
    return nullptr;
}

EDIPROT_API datatree_t *makerecord(char *buf, datatree_t **spp,
                                   datatree_t *inhead)
{
    (void)buf; (void)inhead;
    if (spp != nullptr)
        *spp = nullptr;
    return nullptr;
}

EDIPROT_API void printloops(int *loops)
{
    fprintf(stderr, "LOOPS: ");
    for (int i = 0; i < 5; i++)
        fprintf(stderr, "%d ", loops[i]);
    fprintf(stderr, "\n");
}
