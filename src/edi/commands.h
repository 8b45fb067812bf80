// The commands of the edi program: options to the library's calls, its
// findings to stderr (or stdout for validate), its status to exit codes.
#ifndef EDI_COMMANDS_H
#define EDI_COMMANDS_H

#include <stdio.h>

#include <string>
#include <vector>

#include "edi.h"
#include "options.h"

namespace edi {

Exit readcommand(const Options &opt);   // read, vda-read
Exit writecommand(const Options &opt);  // write, vda-write
// validate: findings against the directories on stdout; exit 1 if any.
Exit validatecommand(const Options &opt);
// ack: a CONTRL for each input; exit 1 if anything was rejected.
Exit ackcommand(const Options &opt);

// "FILE: TEXT" (or TEXT alone) for a finding the user is to see: details
// only with --verbose, their summaries only without.
void printfinding(const edi_finding *f, bool verbose, FILE *out);
void printfindings(const edi_result *res, bool verbose, FILE *out);

// The library's read options for the command's (`configs`, pointers to
// opt.configs, must outlive them).
edi_options readoptions(const Options &opt, const std::vector<const char *> &configs);

}  // namespace edi

#endif
