/* Reads a VDA record file with a configuration tree and prints the result
 * in the tree text format: links the module and the host layer as any
 * host program does. */
#include <stdio.h>

#include "edihost.h"

int main(int argc, char **argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: consumer CONFIG VDAFILE\n");
        return 2;
    }
    datatree_t *config = edihost_readtree(argv[1]);
    if (config == NULL)
        return 1;
    datatree_t *tree = vdaread(argv[2], NULL, config, NULL);
    int status = tree != NULL && edihost_writetree(stdout, tree) == 0 ? 0 : 1;
    freedatatree(tree);
    freedatatree(config);
    return status;
}
