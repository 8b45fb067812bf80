// Placeholder until the tree text format lands.
#include "edihost.h"

extern "C" {

int edihost_writetree(FILE *fp, const datatree_t *tree)
{
    (void)fp;
    (void)tree;
    return -1;
}

datatree_t *edihost_parsetree(const char *text, size_t len, const char *name)
{
    (void)text;
    (void)len;
    fprintf(stderr, "%s:0: tree text format not available\n", name);
    return nullptr;
}

datatree_t *edihost_readtree(const char *fn)
{
    return edihost_parsetree("", 0, fn);
}

void printdata(datatree_t *tree, int flag, FILE *stream, int line)
{
    (void)flag;
    (void)line;
    if (tracelevel != 0)
        edihost_writetree(stream, tree);
}

datatree_t *readconfig(char *conffile, int flag, char *file, int line)
{
    (void)flag;
    (void)file;
    (void)line;
    return edihost_readtree(conffile);
}

}
