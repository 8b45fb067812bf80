// Module-level state: the exported service characters and character
// tables, and the private counters and tables that carry over between
// calls.  Loading the library gives them these values; nothing resets them
// but the entry points named in the comments.  They are defined together
// here and declared where they belong: the service characters and tables
// in ediprot.h, the shared counters in state.h, the rest in the header of
// the subsystem that uses them.
#include "state.h"

#include "convert/convert.h"
#include "edifact/edifact.h"
#include "vda/vda.h"

// Reset per file by edifactread (all five) and edifactwrite (all but float_sep).
EDIPROT_API char seg_sep = '\'';
EDIPROT_API char dst_sep = '+';
EDIPROT_API char cmp_sep = ':';
EDIPROT_API char float_sep = '.';
EDIPROT_API char escape = '?';

namespace {

// Output character table: the character itself where it may stand in a
// written value, a blank elsewhere.  Indexed by code 0..127, NUL at 128.
char tableB[129] =
    /* 0x00 */ "                "
    /* 0x10 */ "                "
    /* 0x20 */ " !\"# %&'()*+,-./"
    /* 0x30 */ "0123456789:;<=>?"
    /* 0x40 */ " ABCDEFGHIJKLMNO"
    /* 0x50 */ "PQRSTUVWXYZ     "
    /* 0x60 */ " abcdefghijklmno"
    /* 0x70 */ "pqrstuvwxyz     ";

// The same table with lower-case letters mapped to upper case.
char tableA[129] =
    /* 0x00 */ "                "
    /* 0x10 */ "                "
    /* 0x20 */ " !\"# %&'()*+,-./"
    /* 0x30 */ "0123456789:;<=>?"
    /* 0x40 */ " ABCDEFGHIJKLMNO"
    /* 0x50 */ "PQRSTUVWXYZ     "
    /* 0x60 */ " ABCDEFGHIJKLMNO"
    /* 0x70 */ "PQRSTUVWXYZ     ";

}  // namespace

EDIPROT_API char *charsetA = tableA;
EDIPROT_API char *charsetB = tableB;

namespace ediprot {

char srcname[] = "ediprot";

int tagcnt = 0;
datatree_t *xdata = nullptr;
int errcnt = 0;
int nunhcnt = 0;
int sectioncnt = 0;

builtinfuncs_t funcs[3] = {
    {"unhcnt", unhcnt},
    {"seccnt", seccnt},
    {nullptr, nullptr},
};

// Trailer order: S515 stands last, behind S519.
vdarecs_t recs[9] = {
    {"S511", 0, 7}, {"S512", 0, 7}, {"S513", 0, 7}, {"S514", 0, 7},
    {"S517", 0, 7}, {"S518", 0, 7}, {"S519", 0, 7}, {"S515", 0, 7},
    {nullptr, 0, 0},
};

}  // namespace ediprot
