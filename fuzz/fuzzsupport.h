// Shared pieces of the fuzz entries: the input as a file, the bundled
// configurations loaded once per process, and the check that stops a run
// when an entry point breaks its promise.
#ifndef EDIPROT_FUZZSUPPORT_H
#define EDIPROT_FUZZSUPPORT_H

#include <stddef.h>
#include <stdint.h>

#include "ediprot.h"

namespace fuzzsupport {

// Writes the input to a private file in the temporary folder ($TMPDIR or
// /tmp; the same name on every call of this process) and returns its name.
char *asfile(const uint8_t *data, size_t size);
// A private name in the temporary folder for output files of this process.
char *outname();
// Removes the files of asfile and outname, if present.
void removefiles();
// A bundled configuration file of configs/, read once and kept for the
// life of the process.
datatree_t *config(const char *name);
// A configuration of the fuzz folder (fuzz/NAME), read once and kept.
datatree_t *fuzzconfig(const char *name);
// The path of a file of the fuzz folder (fuzz/NAME), kept for the life of
// the process: for interfaces that take configuration files by name.
const char *fuzzpath(const char *name);
// Loads fuzz/servconf.conf once.
void loadservconf();
// Reads a whole file; false when it cannot be opened.
bool readwhole(const char *fn, char **buf, size_t *len);
// Stops the process with `what` on stderr unless `ok`: an entry point did
// something its interface rules out.
void expect(bool ok, const char *what);

}  // namespace fuzzsupport

#endif
