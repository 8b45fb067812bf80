#include "joinlines.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>

#include "output.h"

namespace edi {

// A line break is never part of an EDIFACT value: the syntax character
// sets have no control characters.  The reader, though, counts line
// breaks as characters of the segment that follows them, so a file with
// one segment a line must lose them before it is read.
JoinedCopy::JoinedCopy(const std::string &input)
{
    std::string text;
    if (!readwhole(input, text))
        return;
    text.erase(std::remove_if(text.begin(), text.end(),
                              [](char c) { return c == '\r' || c == '\n'; }),
               text.end());
    const char *tmp = getenv("TMPDIR");
    std::string folder = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") +
                         "/edi-join-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) {
        perror(folder.c_str());
        return;
    }
    folder_ = folder;
    size_t slash = input.find_last_of('/');
    std::string path = folder_ + "/" + (slash == std::string::npos ? input : input.substr(slash + 1));
    if (writewhole(path, text))
        path_ = path;
}

JoinedCopy::~JoinedCopy()
{
    if (!path_.empty())
        unlink(path_.c_str());
    if (!folder_.empty())
        rmdir(folder_.c_str());
}

}  // namespace edi
