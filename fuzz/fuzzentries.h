// One entry per way into the module, run by the fuzz targets (fuzzmain.cpp)
// and, once a finding is kept under fuzz/regressions, by its replay test.
// Each entry takes arbitrary bytes, frees all it made, leaves no file
// behind, and stops the process (fuzzsupport::expect) when an entry point
// breaks its interface.
// The result counts the calls that accepted the input (a tree came back or
// a file was written), so that a test can tell a good input was taken.
#ifndef EDIPROT_FUZZENTRIES_H
#define EDIPROT_FUZZENTRIES_H

#include <stddef.h>
#include <stdint.h>

namespace fuzzentry {

// The bytes as an EDIFACT file, read twice: with the bundled ORDERS
// configuration handed in, and with the configuration found through the
// service configurations.  Result 0..2.
int edifactread(const uint8_t *data, size_t size);
// A configuration of its own: a tree text, a line "%%" (or "%%+" to run
// with every trace point on), then the file, read with edifactread and with
// vdaread under that configuration.  0..2.
int configread(const uint8_t *data, size_t size);
// The bytes as a VDA record file, read with configs/vda4905.tree.  0..1.
int vdaread(const uint8_t *data, size_t size);
// The bytes, up to a NUL, as one VDA line for makerecord.  0..1.
int makerecord(const uint8_t *data, size_t size);
// The bytes as a tree text; what parses must come back unchanged through
// the writer and the parser.  0..1.
int treetext(const uint8_t *data, size_t size);
// The bytes as the JSON form of a tree; what imports must come back
// unchanged through the export and the import.  0..1.
int json(const uint8_t *data, size_t size);
// Byte 0 chooses, the rest is a tree text handed to edifactwrite and
// vdawrite: as the data tree with the bundled configurations (bit 0 clear),
// or as data and configuration at once (bit 0 set); bit 1 set runs with
// every trace point on.  0..2.
int writers(const uint8_t *data, size_t size);
// The bytes as an interchange through libedi (edi.h): edi_open_memory and
// edi_next to the end.  A first byte 0x80..0xBF is no part of the input
// but chooses: bit 0 raw, bit 1 without keep_going, bits 2-3 the
// configuration (fuzz/small.tree, the service configuration
// fuzz/servconf.conf, small.tree twice, none: generated from
// fuzz/directories), bits 4 and 5 both set: edi_read_memory as well, with
// the same options.  Without that byte: small.tree, keep going, no whole
// read.  0..2.
int libread(const uint8_t *data, size_t size);

}  // namespace fuzzentry

#endif
