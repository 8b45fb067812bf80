// The library's own settings of one operation, taken from the options a
// caller gives through edi.h.
#ifndef EDI_SETTINGS_H
#define EDI_SETTINGS_H

#include <string>

namespace edi {

struct Settings {
    bool permessage = false;   // each message read as a working copy of its own
    int parts = 1, part = 0;   // with permessage: only messages n, (n - 1) % parts == part
    bool raw = false;          // the module gets the input untouched
    bool keepgoing = false;    // segments or records left out of a read, values
                               // left out or cut on write, are no failure
    int trace = -1;            // module trace level, -1 for none
    std::string servconf;      // a service configuration is in force
    std::string directories;   // the directory data folder; "" the default
    // Writing.
    std::string message;       // TYPE:DIRECTORY when the UNH names none
    std::string sender, recipient, reference;
    bool test = false;
    // The envelope of what is written, over what the tree carries.
    std::string syntax;          // UNOC:3
    std::string applicationref;  // UNB 0026
    bool ackrequest = false;     // UNB 0031
    std::string group;           // UNG 0038: one functional group around the messages
    bool exact = false;        // the module's output untouched
    std::string name;          // the tree, in findings
    std::string output;        // the output, in findings
};

}  // namespace edi

#endif
