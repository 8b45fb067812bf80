// Placeholder: EDIFACT output is not built yet.
#include "../internal.h"

EDIPROT_API int edifactwrite(datatree_t *tree, char *outfile, char *enc,
                             char *ev, datatree_t *outcf, char *sender,
                             char *recipient, int editest)
{
    (void)tree; (void)enc; (void)ev; (void)outcf; (void)sender;
    (void)recipient; (void)editest;
    fprintf(stderr, "%s: EDIFACT output not available\n", outfile);
    return -1;
}
