// Writing an interchange: the module writes each run of messages of one
// type with its configuration, the library joins the runs into one
// interchange and corrects what a partner checks (counts, control
// reference).
#ifndef EDI_WRITEEDIFACT_H
#define EDI_WRITEEDIFACT_H

#include <string>
#include <vector>

#include "ediprot.h"
#include "module/module.h"
#include "settings.h"

namespace edi {

class Report;

enum WriteStatus { write_ok = 0, write_failed = 1, write_refused = 2 };

// Writes `tree` (a root whose children are messages) with `configs`
// (outbound configurations, taken over and released; none: generated per
// message type) into `result`.  The tree's loops are renumbered in place.
WriteStatus writeedifact(const Module &mod, const Settings &opt, datatree_t *tree,
                         std::vector<datatree_t *> configs, std::string &result, Report &rep);

// Writes a VDA record file from `tree` with `config` into `result`: the
// module writes it to a file of its own, named `opt.output` in its
// messages.
WriteStatus writevda(const Module &mod, const Settings &opt, datatree_t *tree,
                     datatree_t *config, std::string &result, Report &rep);

}  // namespace edi

#endif
