// The ISO 8859 tables behind the single-byte character sets; the data are
// generated (scripts/gencharsets.py writes charsettables.cpp).
#ifndef EDI_CHARSETTABLES_H
#define EDI_CHARSETTABLES_H

#include <stddef.h>
#include <stdint.h>

namespace edi {

// Bytes 0x80-0xFF of one part of ISO 8859 (bytes below 0x80 are ASCII in
// every part); 0 where the part has no character.
struct Iso8859Half {
    int part;
    uint16_t upper[128];
};

constexpr size_t iso8859parts = 10;
// ISO 8859-1 to 8859-9, then 8859-15.
extern const Iso8859Half iso8859halves[iso8859parts];

}  // namespace edi

#endif
