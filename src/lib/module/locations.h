// Where libedi finds the module and its data: relative to the library's
// own file, so that a build folder, an installed prefix and an unpacked
// package all work without a path fixed at build time, whichever program
// loads the library.
#ifndef EDI_LOCATIONS_H
#define EDI_LOCATIONS_H

#include <string>
#include <vector>

namespace edi {

// The folder that holds libedi itself ("" when it cannot be told).
std::string librarydir();

// The module files to try, in order: $EDIPROT_MODULE if set; the module
// beside libedi (a build folder, or the library folder of an install);
// finally the bare name, for the loader's own search path.
std::vector<std::string> modulecandidates();

// The folder of the installed data (configurations, directories):
// $EDIPROT_DATA if set; the data folder of the prefix libedi is installed
// in; the data staged in a build folder ("share/ediprot" beside libedi).
// The first that exists; "" when none does.
std::string datadir();

}  // namespace edi

#endif
