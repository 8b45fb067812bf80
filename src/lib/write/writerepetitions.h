// The repeated elements of what a write gives: the layout the writer's
// output is joined with where the interchange is of syntax version 4
// (text/repetitions.h).
#ifndef EDI_WRITEREPETITIONS_H
#define EDI_WRITEREPETITIONS_H

#include <string>
#include <utility>
#include <vector>

#include "ediprot.h"
#include "findings/report.h"
#include "settings.h"
#include "text/repetitions.h"

namespace edi {

// One layout for the messages written with several configurations, each
// given with the first tree node it wrote: a configuration's runs count
// where the directory its message names (by `given`, --message, or the
// message's UNH) confirms them.  A tag whose layouts disagree gets no
// repeated element.
RepetitionLayout writtenlayout(const std::vector<std::pair<const datatree_t *, const datatree_t *>> &written,
                               const std::string &given);

// The writer's output `text` with the places of repeated elements joined
// (joinrepetitions) after the layout of `written`; the change is noted
// for `output`.
std::string joinwritten(const std::string &text,
                        const std::vector<std::pair<const datatree_t *, const datatree_t *>> &written,
                        const std::string &given, const std::string &output, Report &rep);

// The same for the writer's pieces: anything with a configuration
// (`config`) and the first tree node it wrote (`first`).
template <class Pieces>
std::string joinwritten(const std::string &text, const Pieces &pieces, const Settings &opt,
                        Report &rep)
{
    std::vector<std::pair<const datatree_t *, const datatree_t *>> written;
    for (const auto &p : pieces)
        written.emplace_back(p.config, p.first);
    return joinwritten(text, written, opt.message, opt.output, rep);
}

}  // namespace edi

#endif
