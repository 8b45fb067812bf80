/*
 * edihost.h - our host layer: the services that libediprot.so resolves from
 * the process that loads it (declared in ediprot.h), plus the tree text
 * format and the service-configuration list that those services rest on.
 *
 * A host program links libedihost.so; libediprot.so then finds strsav,
 * msprintf, copynodeparms, setparents, freedatatree, pathfornode,
 * printdata, readconfig, getservconf, tmpfopen and tracelevel in it.
 * Out of memory in any service writes "edihost: out of memory" and aborts:
 * the module uses their results without a test.
 */
#ifndef EDIHOST_H
#define EDIHOST_H

#include <stdio.h>

#include "ediprot.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Writes `tree` (the node, everything below it and behind it in its
 * chain) in the tree text format to `fp`.  Returns 0, or -1 when a write
 * failed. */
int edihost_writetree(FILE *fp, const datatree_t *tree);

/* Reads a tree text file.  Every node gets `line` and `file` of its
 * definition and its parent link.  On a malformed or unreadable file
 * writes "FILE:LINE: reason" to stderr and returns NULL (no partial
 * tree).  Release the result with freedatatree. */
datatree_t *edihost_readtree(const char *fn);

/* Parses a tree text held in memory; `name` stands in the messages and in
 * the `file` field of the nodes.  Same result as edihost_readtree. */
datatree_t *edihost_parsetree(const char *text, size_t len, const char *name);

/* Loads a service-configuration file and adds its entries to the list
 * that getservconf searches.  Relative configuration paths in it are taken
 * relative to the folder of `fn`.  Returns 0, or -1 with "FILE:LINE:
 * reason" (or the perror line) on stderr and the list left unchanged. */
int edihost_loadservconf(const char *fn);

/* Empties the list that getservconf searches. */
void edihost_clearservconf(void);

/* Aborts with "edihost: out of memory". */
void edihost_outofmemory(void);

#ifdef __cplusplus
}
#endif

#endif
