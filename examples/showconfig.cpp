// Reads configuration files in the tree text format and prints them back
// with the tree writer: a quick check that a configuration is well formed.
#include <stdio.h>

#include "edihost.h"

int main(int argc, char **argv)
{
    if (argc < 2) {
        fprintf(stderr, "usage: showconfig FILE...\n");
        return 2;
    }
    int rc = 0;
    for (int i = 1; i < argc; i++) {
        datatree_t *tree = edihost_readtree(argv[i]);
        if (tree == nullptr) {
            rc = 1;
            continue;
        }
        printf("# %s\n", argv[i]);
        if (edihost_writetree(stdout, tree) != 0)
            rc = 1;
        freedatatree(tree);
    }
    return rc;
}
