// Command line of the edi program.
#ifndef EDI_OPTIONS_H
#define EDI_OPTIONS_H

#include <string>
#include <vector>

namespace edi {

// Exit status of the program.
enum Exit { exit_ok = 0, exit_failed = 1, exit_usage = 2 };

struct Options {
    std::string command;              // read, write, vda-read, vda-write, validate, ack
    std::vector<std::string> inputs;  // INPUT files, or the TREE file
    std::string servconf;             // --servconf FILE
    std::string config;               // --config FILE
    std::string format = "tree";      // --format tree|json|ndjson, else from the name of OUT
    bool formatgiven = false;         // --format was given
    bool full = false;                // --full or --form full: every field of every node
    std::vector<std::string> given;   // the options given, by their main name
    std::string output;               // -o OUT
    std::string sender, recipient;    // --sender, --recipient
    bool havesender = false, haverecipient = false;
    bool test = false;                // --test
    std::string syntax, applicationref, group;  // --syntax, --application-ref, --group
    bool ackrequest = false;          // --ack-request
    bool joinlines = false;           // --join-lines (what read always does now)
    bool raw = false;                 // --raw: the module gets the file as it is
    bool verbose = false;             // --verbose: report what the working copy changed
    bool keepgoing = false;           // --keep-going: records left out are no failure
    bool exact = false;               // --exact: the module's output untouched
    std::string reference;            // --reference REF for UNB and UNZ
    int jobs = 0;                     // -j N: N processes; 0 without -j
    int parts = 0, part = 0;          // a worker's share of one input's messages
    std::vector<std::string> configs; // every --config given, in order
    std::string message;              // --message TYPE:DIRECTORY (write without --config)
    bool validate = false;            // --validate (read), or the command validate
    std::string report;               // --report FILE (read): the findings as JSON
    size_t maxerrors = 0;             // --max-errors N: findings of an input; 0 all
    bool errorsonly = false;          // --errors-only (ack)
    int trace = -1;                   // --trace LEVEL, -1 if not given
    bool help = false, version = false;
};

// Parses argv.  On a usage error writes "edi: <reason>" and a hint to
// stderr and returns false.
bool parseoptions(int argc, char **argv, Options &opt);

// The help text of the program, or of one command.
const char *helptext(const std::string &command);

}  // namespace edi

#endif
