// Shared pieces of the fuzz targets: the input as a file, and the bundled
// configurations loaded once per process.
#ifndef EDIPROT_FUZZSUPPORT_H
#define EDIPROT_FUZZSUPPORT_H

#include <stddef.h>
#include <stdint.h>

#include "ediprot.h"

namespace fuzzsupport {

// Writes the input to a private temporary file (the same one on every
// call of this process) and returns its name.
char *asfile(const uint8_t *data, size_t size);
// A private name for output files of this process.
char *outname();
// A bundled configuration file of configs/, read once and kept.
datatree_t *config(const char *name);
// Loads configs/servconf.conf once.
void loadservconf();
// Quiet stderr: the module's messages are expected and only slow a run.
void quiet();

}  // namespace fuzzsupport

#endif
