// Where the edi program finds its module and its data: relative to its own
// location, so that a build folder, an installed prefix and an unpacked
// package all work without a path fixed at build time.
#ifndef EDI_LOCATIONS_H
#define EDI_LOCATIONS_H

#include <string>
#include <vector>

namespace edi {

// The folder that holds the running program ("" when it cannot be told).
std::string programdir();

// The module files to try, in order: $EDIPROT_MODULE if set; the module
// beside the program (a build folder); the module in the library folder of
// the prefix the program is installed in; finally the bare name, for the
// loader's own search path.
std::vector<std::string> modulecandidates();

// The folder of the installed data (configurations, directories):
// $EDIPROT_DATA if set; the data folder of the prefix the program is
// installed in; the data staged in a build folder ("share/ediprot" beside
// the program).  The first that exists; "" when none does.
std::string datadir();

}  // namespace edi

#endif
