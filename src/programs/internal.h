// Module-private declarations: state, limits and the operations that the
// subsystems share.  Nothing here is exported from libediprot.so.
#ifndef EDIPROT_INTERNAL_H
#define EDIPROT_INTERNAL_H

#include <stdio.h>

#include "debug.h"
#include "ediprot.h"

namespace ediprot {

// ---- limits of the data model -------------------------------------------

// One EDIFACT segment with its terminator (segment reader), one element or
// component text, one value after conversion, one loop string.
constexpr int kTextMax = 8192;
// One VDA field value with its terminator: edilen is at most 255.
constexpr int kFieldMax = 256;
// One element of a VDA record path with its terminator.
constexpr int kPathElemMax = 64;
// Loop depths that a VDA read can number.
constexpr int kLoopDepths = 10;
// Width of a VDA record; the reach of the blank test.
constexpr int kVdaWidth = 128;

// ---- source position for the host services ------------------------------

// The `file` argument of strsav, msprintf and readconfig: always "ediprot".
extern char srcname[];

#define EDI_STRSAV(s) strsav(ediprot::srcname, __LINE__, const_cast<char *>(s))
#define EDI_MSPRINTF(fmt, ...) \
    msprintf(ediprot::srcname, __LINE__, 0, const_cast<char *>(fmt), __VA_ARGS__)

// ---- module state (initial values in state.cpp) -------------------------

// Running number of segment nodes; 0 per file, raised before each use.
extern int tagcnt;
// Next segment of the message being filled; NULL when its input has ended.
extern datatree_t *xdata;
// Mandatory elements found missing in the current output file.
extern int errcnt;
// Running number behind the default function "unhcnt".
extern int nunhcnt;
// Running number behind "seccnt"; set to 1 at every $UNH tag node written.
extern int sectioncnt;

// One default function that a configuration node can name in deffunc.
struct builtinfuncs_t {
    const char *name;
    char *(*func)(void);
};
// "unhcnt", "seccnt", and a closing row of NULLs.
extern builtinfuncs_t funcs[3];

// Record counter of the VDA writer; rows in trailer order, closed by NULL.
struct vdarecs_t {
    const char *tag;
    int cnt;
    int len;
};
extern vdarecs_t recs[9];

// ---- tree helpers (tree/) -----------------------------------------------

// A new node from malloc, zero-filled as a whole.  Aborts with a message
// when memory runs out: no caller could go on without it.
datatree_t *newnode(void);
// Lookup of the input side: first component against head alone, case-blind.
datatree_t *searchpath(datatree_t *head, const char *path);
// Lookup of the output side: path and loop numbers over the chain `tree`.
// When `complete` is not NULL it receives 1 if the node returned is the
// one the whole path names, 0 if the search ran out of tree first.
datatree_t *searchlooppath(const char *path, const char *loop,
                           datatree_t *tree, int *complete = nullptr);
// Component `cde` of element `dst` of the node at `path`, with messages.
datatree_t *searchtagval(datatree_t *tree, const char *path, int dst, int cde);
// 1 if tree or anything below it (not its siblings) holds data.
int hasdata(datatree_t *tree);
// Deep copy of a chain without values; NULL for NULL.
datatree_t *copysubtree(datatree_t *head);
// The data node of instance `lb` of a configuration loop node,
// or NULL when the data tree has no loop node of its own for that number
// (also where a childless node above the loop would answer every number).
// Used by both writers to end a loop's enumeration.
// `path` is pathfornode of the loop node (NULL gives NULL), `looptag` its name.
datatree_t *searchloopinstance(const char *path, const char *lb,
                               datatree_t *head, const char *looptag);

// ---- value conversion (convert/) ----------------------------------------

// Tree form to file form; result in a static buffer until the next call.
char *edinodeconvert(datatree_t *ep, char *udata);
// File form to tree form; result in a static buffer until the next call.
// May change udata in place (et_sdate).
char *edirevconvert(datatree_t *ep, unsigned char *udata);
// Default function by name (case-blind), "" for an unknown name.
char *execdeffunc(char *name);
char *unhcnt(void);
char *seccnt(void);
// Steps 1 to 7 of the value rule for the configuration node tp: the value
// from the data tree, a default function or the default text, reporting a
// missing mandatory element.  NULL or "" means the element has no value;
// the caller converts a value with edinodeconvert.
char *resolvevalue(datatree_t *tp, datatree_t *head, const char *lb);

// ---- EDIFACT input (edifact/) -------------------------------------------

datatree_t *mknode(const char *what, const char *name, const char *value);
datatree_t *makeelem(char *str, int sep, const char *what);
datatree_t *maketag(char *segbuf);
// Reads every segment of fp.  Returns the root of the flat chain, or NULL
// (after its message, with everything released) when a segment overflows
// the segment buffer.
datatree_t *readseg(FILE *fp, const char *fn);
int xydatatohead(datatree_t *out, int lvl);
void copytag(datatree_t *idst, datatree_t *isrc);
// Prunes empty loop nodes of the chain held by the link *headp.
int searchemptyloop(datatree_t **headp);

// ---- EDIFACT output (edifact/) ------------------------------------------

int editraverse(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop);
int writeeditag(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop);

// ---- VDA (vda/) ---------------------------------------------------------

datatree_t *findsatz(datatree_t *in, const char *satz);
int insrecord(datatree_t **head, datatree_t *record, const char *path,
              int *loops, int lvl);
int vdatraverse(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop);
void writevdarecord(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop);
void initrecs(void);
void incrrecs(const char *tag);
void writevda519(FILE *fp);

}  // namespace ediprot

#endif
