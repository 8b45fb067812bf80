// Placeholder: EDIFACT input is not built yet.
#include "../internal.h"

EDIPROT_API datatree_t *edifactread(char *fn, envelope_t **evpp,
                                    datatree_t *inhead, servconf_t *sc)
{
    (void)evpp;
    (void)inhead;
    (void)sc;
    fprintf(stderr, "%s: EDIFACT input not available\n", fn);
    fprintf(stderr, "edifactread failed\n");
    return nullptr;
}
