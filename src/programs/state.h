// What the subsystems share: the limit of one text, the source name that
// goes with every call of the host services, and the counters that more
// than one subsystem steps or resets.  The service characters and the
// character tables belong to the public interface and are declared in
// ediprot.h.  All of them are defined in state.cpp; nothing declared here
// is exported from libediprot.so.
#ifndef EDIPROT_STATE_H
#define EDIPROT_STATE_H

#include "ediprot.h"

namespace ediprot {

// ---- limit of the data model --------------------------------------------

// One EDIFACT segment with its terminator (segment reader), one element or
// component text, one value after conversion, one loop string.
constexpr int kTextMax = 8192;

// ---- source position for the host services ------------------------------

// The `file` argument of strsav, msprintf and readconfig: always "ediprot".
extern char srcname[];

#define EDI_STRSAV(s) strsav(ediprot::srcname, __LINE__, const_cast<char *>(s))
#define EDI_MSPRINTF(fmt, ...) \
    msprintf(ediprot::srcname, __LINE__, 0, const_cast<char *>(fmt), __VA_ARGS__)

// ---- counters shared by the value rule and the writers ------------------

// Mandatory elements found missing in the current output file.
extern int errcnt;
// Running number behind the default function "unhcnt".
extern int nunhcnt;
// Running number behind "seccnt"; set to 1 at every $UNH tag node written.
extern int sectioncnt;

}  // namespace ediprot

#endif
