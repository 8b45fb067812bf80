// Values between file form and tree form, the default functions that a
// configuration node can name, and the value rule of the writers.  The
// EDIFACT and the VDA paths both use them: the two formats differ in the
// syntax around a value, not in the value itself.
#ifndef EDIPROT_CONVERT_H
#define EDIPROT_CONVERT_H

#include "ediprot.h"

namespace ediprot {

// ---- conversion ---------------------------------------------------------

// Tree form to file form; result in a static buffer until the next call.
char *edinodeconvert(datatree_t *ep, char *udata);
// File form to tree form; result in a static buffer until the next call.
// May change udata in place (et_sdate).
char *edirevconvert(datatree_t *ep, unsigned char *udata);

// ---- default functions --------------------------------------------------

// One default function that a configuration node can name in deffunc.
struct builtinfuncs_t {
    const char *name;
    char *(*func)(void);
};
// "unhcnt", "seccnt", and a closing row of NULLs (defined in state.cpp).
extern builtinfuncs_t funcs[3];

// Default function by name (case-blind), "" for an unknown name.
char *execdeffunc(char *name);
char *unhcnt(void);
char *seccnt(void);

// ---- value rule ---------------------------------------------------------

// Steps 1 to 7 of the value rule for the configuration node tp: the value
// from the data tree, a default function or the default text, reporting a
// missing mandatory element.  NULL or "" means the element has no value;
// the caller converts a value with edinodeconvert.
char *resolvevalue(datatree_t *tp, datatree_t *head, const char *lb);
// The same rule for the data node `dnode` that the lookup of tp's path
// found (NULL: none), for a writer that found it itself.
char *resolvefound(datatree_t *tp, datatree_t *dnode);

}  // namespace ediprot

#endif
