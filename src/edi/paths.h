// Folders on the command line: several inputs read into a folder.
#ifndef EDI_PATHS_H
#define EDI_PATHS_H

#include <string>

namespace edi {

// The output name for `input` when OUT is a folder: OUT/<base name>.<ext>.
std::string infolder(const std::string &folder, const std::string &input,
                     const std::string &ext);

bool isfolder(const std::string &path);

}  // namespace edi

#endif
