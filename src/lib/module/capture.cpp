#include "module/capture.h"

#include <sys/mman.h>
#include <unistd.h>

namespace edi {

StderrCapture::StderrCapture(bool on)
{
    if (!on)
        return;
    fflush(stderr);
    // In memory where the system offers it: a file on disk for every call
    // into the module costs more than many a call itself.
    int fd = memfd_create("edi-capture", MFD_CLOEXEC);
    tmp_ = fd >= 0 ? fdopen(fd, "w+") : nullptr;
    if (tmp_ == nullptr && fd >= 0)
        close(fd);
    if (tmp_ == nullptr)
        tmp_ = tmpfile();
    if (tmp_ == nullptr)
        return;
    saved_ = dup(2);
    if (saved_ < 0 || dup2(fileno(tmp_), 2) < 0) {
        if (saved_ >= 0)
            close(saved_);
        saved_ = -1;
        fclose(tmp_);
        tmp_ = nullptr;
        return;
    }
    // stderr is unbuffered: a module line per record (vdawrite's "dnode")
    // would be a system call each.  While the lines go to the file they
    // are buffered; restore() flushes them before reading the file.
    setvbuf(stderr, buffer_, _IOFBF, sizeof buffer_);
}

StderrCapture::~StderrCapture()
{
    restore();
}

void StderrCapture::restore()
{
    if (tmp_ == nullptr)
        return;
    fflush(stderr);
    setvbuf(stderr, nullptr, _IONBF, 0);
    dup2(saved_, 2);
    close(saved_);
    rewind(tmp_);
    std::string line;
    int c;
    while ((c = getc(tmp_)) != EOF) {
        if (c == '\n') {
            lines_.push_back(line);
            line.clear();
        } else {
            line += static_cast<char>(c);
        }
    }
    if (!line.empty())
        lines_.push_back(line);
    fclose(tmp_);
    tmp_ = nullptr;
}

std::vector<std::string> StderrCapture::lines()
{
    restore();
    return lines_;
}

void printprefixed(const std::string &name, const std::vector<std::string> &lines)
{
    for (const std::string &l : lines)
        fprintf(stderr, "%s: %s\n", name.c_str(), l.c_str());
}

}  // namespace edi
