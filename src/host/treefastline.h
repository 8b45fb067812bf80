// The common line of the tree text format read in one pass: a bare name
// and bare key=value fields.  Large trees are almost all such lines, and
// reading them without building tokens first keeps a read of a tree file
// at the speed of copying it.
#ifndef EDIHOST_TREEFASTLINE_H
#define EDIHOST_TREEFASTLINE_H

#include "ediprot.h"

namespace edihost {

// Reads the line [cp, end) (the scan standing on the first byte of the
// name) into the zeroed node `tp`: its name and fields.  False, with `tp`
// left untouched, for any line that is not plainly well formed (quotes,
// unknown or repeated fields, bad numbers or words, stray bytes): the full
// reader then reads it and names the fault.
bool readplainline(const char *cp, const char *end, datatree_t *tp);

}  // namespace edihost

#endif
