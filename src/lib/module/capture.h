// The module writes its messages to stderr as plain lines.  The command
// catches them during a call, so that it can put the input file's name in
// front of each and add a sentence of its own.
#ifndef EDI_CAPTURE_H
#define EDI_CAPTURE_H

#include <stdio.h>

#include <string>
#include <vector>

namespace edi {

class StderrCapture {
public:
    // Diverts file descriptor 2 to a temporary file; with `on` false (or
    // when that fails) stderr stays as it is and lines() is empty.
    explicit StderrCapture(bool on);
    ~StderrCapture();
    StderrCapture(const StderrCapture &) = delete;
    StderrCapture &operator=(const StderrCapture &) = delete;

    // Restores stderr and returns what was written meanwhile, line by line.
    std::vector<std::string> lines();

private:
    void restore();
    FILE *tmp_ = nullptr;
    char buffer_[1 << 16];
    int saved_ = -1;
    std::vector<std::string> lines_;
};

// Writes "NAME: line" for each line to stderr.
void printprefixed(const std::string &name, const std::vector<std::string> &lines);

}  // namespace edi

#endif
