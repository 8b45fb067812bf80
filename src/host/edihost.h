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
 *
 * printdata writes the tree text of its tree only while the top four bits
 * of tracelevel are set ("(null)" for a NULL tree), and nothing otherwise.
 * readconfig is edihost_readtree.  Details: docs/host-layer.md.
 */
#ifndef EDIHOST_H
#define EDIHOST_H

#include <stdio.h>

#include "ediprot.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Writes `tree` (the node, everything below it and behind it in its
 * chain) in the tree text format to `fp` (docs/tree-format.md): one line
 * per node, two blanks of indentation per level, the name and then every
 * field that is not 0 / NULL.  Works without recursion at any depth or
 * length.  The stream is flushed.  Returns 0, or -1 when a write failed.
 * A NULL tree writes nothing. */
int edihost_writetree(FILE *fp, const datatree_t *tree);

/* Reads a tree text file.  Every node gets `line` and `file` (a private
 * copy of `fn`) of its definition and its parent link; top-level nodes
 * form a chain.  On a malformed text writes one line "FILE:LINE: reason"
 * to stderr, on an unreadable file "FILE: <system reason>", and returns
 * NULL with nothing left allocated.  Release the result with
 * freedatatree. */
datatree_t *edihost_readtree(const char *fn);

/* Parses a tree text of `len` bytes held in memory; `name` stands in the
 * messages and in the `file` field of the nodes.  Same result as
 * edihost_readtree. */
datatree_t *edihost_parsetree(const char *text, size_t len, const char *name);

/* Loads a service-configuration file (one entry per line: KEY then
 * fromconffile=, toconffile=, transconffile=, postaction=, onedokpost=,
 * commitall=) and appends its entries to the list that getservconf
 * searches (exact key comparison).  Relative configuration paths are
 * taken relative to the folder of `fn`.  A key that is already in the
 * file or in the list is an error.  Returns 0, or -1 with "FILE:LINE:
 * reason" (or "FILE: <system reason>") on stderr and the list unchanged. */
int edihost_loadservconf(const char *fn);

/* Empties the list that getservconf searches and frees its entries; any
 * entry that getservconf returned before is gone.  Also run at exit. */
void edihost_clearservconf(void);

/* Makes tmpfopen(name, mode) with a mode that begins with 'r' read the
 * `len` bytes at `data` instead of the file `name` (exact comparison of the
 * name).  A host hands the module a prepared working copy of a file this
 * way, and the module's messages still name the file.  `data` is not
 * copied and must stay valid until edihost_clearinput; a new call replaces
 * the previous one.  Other names and modes open files as before. */
void edihost_setinput(const char *name, const char *data, size_t len);
void edihost_clearinput(void);

/* The stream for `name` set by edihost_setinput, or NULL when `name` or
 * `mode` is not the one set. */
FILE *edihost_openinput(const char *name, const char *mode);

/* The shared copy of the name `s` (NULL for NULL): one copy per distinct
 * name, owned by the host until the process ends and never freed.  Every
 * node's `file` is such a copy, so copynodeparms shares the pointer instead
 * of duplicating the name into each of the millions of nodes a fill makes,
 * and freedatatree leaves `file` alone. */
char *edihost_internname(const char *s);

/* Makes about `bytes` of memory ready in one call for the nodes of the
 * trees that this thread parses next (edihost_parsetree, edihost_readtree):
 * their nodes, names and values are taken from it until it is full, then
 * from malloc as always.  The memory is one mapping backed by large
 * pages where the system grants them: for a tree of millions of nodes this
 * saves most of the page faults, which on some virtual machines are most
 * of a read's time.  A node takes about 160 bytes with a short name and
 * value.
 * freedatatree releases such trees as any other, and the memory goes back
 * to the system once every node taken from it is freed; until then it is
 * held whole.  A host that frees or reallocates a parsed node's texts
 * itself, with free(), must not use this.  A new call ends the previous
 * reservation of the thread, and so does the thread's end; 0 bytes just
 * ends it.  Returns 0, or -1 when the system refused the memory or
 * `bytes` is beyond half the address space; the thread's previous
 * reservation is ended all the same. */
int edihost_reservenodes(size_t bytes);

/* Aborts with "edihost: out of memory". */
void edihost_outofmemory(void);

#ifdef __cplusplus
}
#endif

#endif
