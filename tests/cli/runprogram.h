// Runs the edi program as a user would and collects what it did.
#ifndef EDIPROT_RUNPROGRAM_H
#define EDIPROT_RUNPROGRAM_H

#include <string>
#include <vector>

struct RunResult {
    int status = -1;      // exit status, or -1 when killed by a signal
    int signal = 0;       // the signal that ended it, 0 if none
    std::string out, err;
};

// Runs edi with `args`; `env` entries (NAME=VALUE) come before, and so
// take the place of, those of the test's own environment.
RunResult runedi(const std::vector<std::string> &args, const std::vector<std::string> &env = {});

#endif
