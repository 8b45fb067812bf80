// What a write would lose, said before the module writes: the values of
// the tree that have no place in the configuration the writer walks, and
// the values it would cut to their length.  Either fails the write unless
// the caller accepts the loss (edi_write_options.keep_going); then each is
// a warning and the output is written.
#ifndef EDI_LOSSES_H
#define EDI_LOSSES_H

#include <functional>
#include <string>
#include <vector>

#include "ediprot.h"
#include "settings.h"
#include "trees/unwritten.h"
#include "trees/valueloss.h"

namespace edi {

class Report;

// The first this many findings of a list are shown by the edi command;
// the rest are details (--verbose) behind a line that counts them.
constexpr size_t kShownFindings = 20;
// At most this many values are named one by one; a larger loss is counted.
constexpr size_t kNamedFindings = 1000;

// The values of `head`'s tree that the writer walking `config` would leave
// out.  Root children named '#...' (the library's envelope and group
// nodes, docs/json.md) are no part of the walk and not looked at.
std::vector<Unwritten> leftout(const datatree_t *head, const datatree_t *config, Writer w);

// The values the VDA writer, walking `config`, writes other than `head`'s
// tree holds them ("*TRANSMISSION.$S511.customer: 24 characters ... cut to
// 9").
std::vector<ValueChange> vdachanges(const datatree_t *head, const datatree_t *config,
                                    const char *charset);

// Names each value of `lost` (EDIFACT: "message N, PATH", `number` giving
// a message node's number; VDA: the path), then one sentence; `hint` is
// added to it.  Kind EDI_FINDING_LEFT_OUT, errors, and a failure behind
// them; warnings with opt.keepgoing.  True when the write fails for them.
bool reportleftout(const std::vector<Unwritten> &lost, Writer w, const Settings &opt,
                   const std::function<int(const datatree_t *)> &number, const std::string &hint,
                   Report &rep);

// Names each value written other than the tree holds it (kind
// EDI_FINDING_CHANGED), then one sentence.  A cut is an error and fails the
// write unless opt.keepgoing; other changes are warnings.  True when the
// write fails for them.
bool reportchanges(const std::vector<ValueChange> &changes, Writer w, const Settings &opt,
                   Report &rep);

// The sentence that says why a tree whose root is named other than the
// configuration's loses every value, or "" when the names agree.
std::string roothint(const datatree_t *tree, const datatree_t *config);

}  // namespace edi

#endif
