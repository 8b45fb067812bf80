// Validation of a VDA record file against its configuration: what a
// partner's system checks before it books a call-off or a delivery note.
#ifndef EDI_VDA_VALIDATE_H
#define EDI_VDA_VALIDATE_H

#include <string>

#include "ediprot.h"

namespace edi {

class Report;

// Adds one finding per fault of the file `input` (its `bytes`) to `rep`
// and returns their number: a record of another length than 128, a record
// type the configuration does not know, a numeric field (edialign=right)
// that holds other than digits, a date (a field named ...date... of 6
// digits, YYMMDD) or time (...time..., HHMM) that is none, a mandatory
// field left blank, a record out of the configuration's order or one that
// begins a group without the group's first record, a transmission without
// its trailer, and trailer counters that differ from the records.
int validatevda(const std::string &input, const std::string &bytes, const datatree_t *config,
                Report &rep);

}  // namespace edi

#endif
