// Helpers of the VDA tests: configuration trees built in code, files in a
// temporary folder, and the lines of a written file.
#ifndef EDIPROT_VDATEST_H
#define EDIPROT_VDATEST_H

#include <initializer_list>
#include <string>
#include <vector>

#include "internal.h"
#include "testsupport.h"

namespace vdatest {

// A configuration field of `len` characters.
datatree_t *field(const char *name, int len, editype_t type = et_string,
                  ediforce_t force = ef_none);

// Sets tracelevel for the life of the object.
struct TraceLevel {
    explicit TraceLevel(unsigned v) : saved(tracelevel) { tracelevel = static_cast<int>(v); }
    ~TraceLevel() { tracelevel = saved; }
    int saved;
};

// Names (and loop numbers of loop nodes, as "*A(3)") of the children of tp.
std::string children(const datatree_t *tp);

// The lines of a text, each without its CR LF; fails the test on a line
// without CR LF.
std::vector<std::string> crlflines(const std::string &text);

// The trailer that the writer appends for the given counters, in the
// order S511 S512 S513 S514 S517 S518 S519 S515.
std::string trailer(std::initializer_list<int> counts);

// Writes `bytes` to a new file in a temporary folder and returns its name.
std::string tempfile(const std::string &bytes, const std::string &name = "in.vda");

// Reads the configuration file `name` below configs/; fails the test if
// it does not parse.
datatree_t *loadconfig(const std::string &name);

// vdaread of `fn` with configuration `cf`; stderr goes to *err if given.
datatree_t *read(const std::string &fn, datatree_t *cf, std::string *err = nullptr);

// vdawrite of `tree` with configuration `cf` into a new temporary file;
// returns the file's bytes (rc and stderr through the pointers).
std::string write(datatree_t *tree, datatree_t *cf, int *rc = nullptr,
                  std::string *err = nullptr);

}  // namespace vdatest

#endif
