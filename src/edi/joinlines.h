// Interchanges broken into lines: a copy without the line breaks.
#ifndef EDI_JOINLINES_H
#define EDI_JOINLINES_H

#include <string>

namespace edi {

// A joined copy of one input file: every CR and LF byte left out, written
// to a private temporary folder under the input's own base name.  The copy
// and its folder are removed when the object goes.
class JoinedCopy {
public:
    // Makes the copy; on failure writes "edi: <file>: <reason>" and path()
    // is empty.
    explicit JoinedCopy(const std::string &input);
    ~JoinedCopy();
    JoinedCopy(const JoinedCopy &) = delete;
    JoinedCopy &operator=(const JoinedCopy &) = delete;

    const std::string &path() const { return path_; }

private:
    std::string folder_, path_;
};

}  // namespace edi

#endif
