// The two VDA record families the library knows by their record types:
// VDA 4905 delivery call-offs (511 to 519) and VDA 4913 delivery notes and
// transport data (711 to 719), with the bundled configuration of each and
// the layout of its trailer.
#ifndef EDI_VDA_LAYOUT_H
#define EDI_VDA_LAYOUT_H

#include <map>
#include <string>
#include <vector>

#include "ediprot.h"

namespace edi {

struct VdaFamily {
    const char *name;      // "VDA 4905"
    char digit;            // first digit of its record types: '5', '7'
    const char *config;    // the bundled configuration, in the data's configs/
    const char *header;    // "511"
    const char *trailer;   // "519"
    // The record types the trailer counts, in the order of its counters.
    std::vector<std::string> counted;
    const char *trailerversion;  // when no trailer was read
    size_t trailerfiller;        // blanks behind the counters
};

// A record node of a configuration or data tree: `$S` and the record
// type, as makerecord keys records ("$S512").
bool isrecordnode(const datatree_t *tp);

// The record nodes of a configuration by name ("$S512"), the first of each
// name, depth first.
std::map<std::string, const datatree_t *> recordnodes(const datatree_t *config);

// The family whose record types begin with `digit` ('5' or '7'), or NULL.
const VdaFamily *vdafamily(char digit);

// The family of a record type ("512"), or NULL.
const VdaFamily *familyoftype(const std::string &type);

// The family of a configuration or a data tree: that of the first record
// node ($Snnn) found in it, depth first; NULL when it has none.
const VdaFamily *familyoftree(const datatree_t *tree);

// The path of a family's bundled configuration ("" when the data folder
// is not found).
std::string bundledconfig(const VdaFamily &f);

// The trailer line (128 characters, no line end) of version `version`
// for records counted by type in `counts` (same order as f.counted).
std::string trailerline(const VdaFamily &f, const std::string &version,
                        const std::vector<size_t> &counts);

}  // namespace edi

#endif
