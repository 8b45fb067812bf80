// The library's own settings of one operation, taken from the options a
// caller gives through edi.h.
#ifndef EDI_SETTINGS_H
#define EDI_SETTINGS_H

#include <string>

namespace edi {

struct Settings {
    bool raw = false;          // the module gets the input untouched
    bool keepgoing = false;    // segments or records left out are no failure
    int trace = -1;            // module trace level, -1 for none
    std::string servconf;      // a service configuration is in force
    std::string directories;   // the directory data folder; "" the default
    // Writing.
    std::string message;       // TYPE:DIRECTORY when the UNH names none
    std::string sender, recipient, reference;
    bool test = false;
    bool exact = false;        // the module's output untouched
    std::string name;          // the tree, in findings
    std::string output;        // the output, in findings
};

}  // namespace edi

#endif
