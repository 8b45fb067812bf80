// One input file of read and vda-read: its working copies, the module's
// calls, the combined result and what the command explains to the user.
#ifndef EDI_READINPUT_H
#define EDI_READINPUT_H

#include <string>
#include <vector>

#include "ediprot.h"
#include "module.h"
#include "options.h"

namespace edi {

struct ReadResult {
    datatree_t *tree = nullptr;         // owned by the caller; NULL on failure
    std::vector<std::string> keys;      // one per working copy the module keyed
    std::vector<std::string> changes;   // what the working copies changed
};

// Reads an EDIFACT interchange file.  Failure lines on stderr begin with
// `input`.  With opt.raw the module gets the file's bytes untouched.  With
// one configuration (NULL: the module chooses) every working copy is read
// with it; with several, each with the one whose message node bears the
// working copy's message type (`*ORDERS` for ORDERS:D:96A:UN).
ReadResult readedifactinput(const Module &mod, const Options &opt,
                            const std::vector<datatree_t *> &configs, const std::string &input);

// Reads a VDA record file; records the module could not place make it fail
// unless opt.keepgoing.
ReadResult readvdainput(const Module &mod, const Options &opt, datatree_t *config,
                        const std::string &input);

// The normal single-file path: the module reads `text` under the name
// `name` (messages name the user's file) with the configuration the
// command chooses for it.
datatree_t *readworkingcopy(const Module &mod, const Options &opt, datatree_t *config,
                            const std::string &name, const std::string &text, envelope_t **ev);

}  // namespace edi

#endif
