// VDA internals that more than one file uses: the limits of a record line,
// the reader's record placement and the record writer with its counters.
// Everything here is about fixed-width records; the values themselves go
// through convert/.
#ifndef EDIPROT_VDA_H
#define EDIPROT_VDA_H

#include <stdio.h>

#include "ediprot.h"

namespace ediprot {

// ---- limits of a record -------------------------------------------------

// One VDA field value with its terminator: edilen is at most 255.
constexpr int kFieldMax = 256;
// One element of a VDA record path with its terminator.
constexpr int kPathElemMax = 64;
// Loop depths that a VDA read can number.
constexpr int kLoopDepths = 10;
// Width of a VDA record; the reach of the blank test.
constexpr int kVdaWidth = 128;

// ---- input --------------------------------------------------------------

datatree_t *findsatz(datatree_t *in, const char *satz);
int insrecord(datatree_t **head, datatree_t *record, const char *path,
              int *loops, int lvl);

// ---- output -------------------------------------------------------------

// Record counter of the VDA writer; rows in trailer order, closed by NULL
// (defined in state.cpp).
struct vdarecs_t {
    const char *tag;
    int cnt;
    int len;
};
extern vdarecs_t recs[9];

int vdatraverse(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop);
void writevdarecord(FILE *fp, datatree_t *head, datatree_t *outcf, const char *loop);
void initrecs(void);
void incrrecs(const char *tag);
void writevda519(FILE *fp);

}  // namespace ediprot

#endif
