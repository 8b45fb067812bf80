// Trace facility shared by every subsystem of the module.
//
// A trace point of level n writes when the top four bits of the host's
// `tracelevel`, taken as an unsigned number, are greater than n.  Each line
// starts with the prefix "HH:MM:SS.mmm (ediprot       :LINE): " in local
// time.  Plain messages (failures) are written with fprintf(stderr, ...)
// directly and never go through here.
#ifndef EDIPROT_DEBUG_H
#define EDIPROT_DEBUG_H

#include <stdio.h>

#include "ediprot.h"

namespace ediprot {

// True when a trace point of `level` is to write (top four bits of tracelevel).
// Inline: the writers pass trace points millions of times.
inline bool trace_on(int level)
{
    unsigned top = static_cast<unsigned>(tracelevel) >> 28;
    return level >= 0 && top > static_cast<unsigned>(level);
}
// True for the one trace point that looks at the low four bits instead.
inline bool trace_low_on(int level)
{
    unsigned low = static_cast<unsigned>(tracelevel) & 0xFu;
    return level >= 0 && low > static_cast<unsigned>(level);
}
// Writes the trace prefix for source line `line` to stderr.
void trace_prefix(int line);

}  // namespace ediprot

#define TRACE(level, ...)                          \
    do {                                           \
        if (ediprot::trace_on(level)) {            \
            ediprot::trace_prefix(__LINE__);       \
            fprintf(stderr, __VA_ARGS__);          \
        }                                          \
    } while (0)

// Trace point guarded by the low four bits of tracelevel.
#define TRACE_LOW(level, ...)                      \
    do {                                           \
        if (ediprot::trace_low_on(level)) {        \
            ediprot::trace_prefix(__LINE__);       \
            fprintf(stderr, __VA_ARGS__);          \
        }                                          \
    } while (0)

// A dump: the prefix followed by the host's printdata of `tree`.
#define TRACE_DUMP(level, tree)                             \
    do {                                                    \
        if (ediprot::trace_on(level)) {                     \
            ediprot::trace_prefix(__LINE__);                \
            printdata((tree), 0, stderr, __LINE__);         \
        }                                                   \
    } while (0)

#endif
