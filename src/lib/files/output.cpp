#include "files/output.h"

#include "findings/report.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace edi {

namespace {

// A file that could not be made or written: "edi: PATH: reason", as the
// edi command has always said it.
bool fail(Report &rep, const std::string &path, const char *reason)
{
    rep.fail("", "edi: " + path + ": " + reason);
    return false;
}

// A new temporary file "PATH.XXXXXX" beside `path`, with the mode a new
// file gets (mkstemp makes it private); its descriptor, or -1 with errno.
int besidefile(const std::string &path, std::string &tmp)
{
    tmp = path + ".XXXXXX";
    int fd = mkstemp(tmp.data());
    if (fd < 0)
        return -1;
    mode_t mask = umask(0);
    umask(mask);
    fchmod(fd, 0666 & ~mask);
    return fd;
}

// Writes all of text to fp and closes it (stdout is only flushed); 0, or
// the errno of the first failure.
int putall(FILE *fp, const std::string &text)
{
    int err = 0;
    if (fwrite(text.data(), 1, text.size(), fp) != text.size() || fflush(fp) != 0)
        err = errno != 0 ? errno : EIO;
    if (fp != stdout && fclose(fp) != 0 && err == 0)
        err = errno != 0 ? errno : EIO;
    return err;
}

}  // namespace

bool writewhole(const std::string &path, const std::string &text, Report &rep)
{
    if (path.empty() || path == "-") {
        int err = putall(stdout, text);
        return err == 0 || fail(rep, "stdout", strerror(err));
    }
    // A device or pipe (/dev/null, /dev/stdout, a fifo) is written in place:
    // renaming a temporary file onto it would replace it with a plain file.
    struct stat st;
    if (stat(path.c_str(), &st) == 0 && !S_ISREG(st.st_mode) && !S_ISDIR(st.st_mode)) {
        FILE *fp = fopen(path.c_str(), "w");
        if (fp == nullptr)
            return fail(rep, path, strerror(errno));
        int err = putall(fp, text);
        return err == 0 || fail(rep, path, strerror(err));
    }
    // A file is written under a temporary name and renamed into place, so
    // that it is there whole or not at all.
    std::string tmp;
    int fd = besidefile(path, tmp);
    if (fd < 0)
        return fail(rep, path, strerror(errno));
    FILE *fp = fdopen(fd, "w");
    if (fp == nullptr) {
        int err = errno;
        close(fd);
        unlink(tmp.c_str());
        return fail(rep, path, strerror(err));
    }
    int err = putall(fp, text);
    if (err == 0 && rename(tmp.c_str(), path.c_str()) != 0)
        err = errno;
    if (err != 0) {
        unlink(tmp.c_str());
        return fail(rep, path, strerror(err));
    }
    return true;
}

namespace {

// A private folder under $TMPDIR (or /tmp), or "".
std::string scratchfolder()
{
    const char *tmp = getenv("TMPDIR");
    std::string f = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/edi-XXXXXX";
    return mkdtemp(f.data()) != nullptr ? f : "";
}

}  // namespace

OutputFile::OutputFile(const std::string &path, Report &rep) : path_(path), rep_(rep)
{
    struct stat st;
    bool special = path.empty() || path == "-" ||
                   (stat(path.c_str(), &st) == 0 && !S_ISREG(st.st_mode) && !S_ISDIR(st.st_mode));
    if (special) {
        folder_ = scratchfolder();
        if (folder_.empty())
            fail(rep_, "temporary folder", strerror(errno));
        else
            name_ = folder_ + "/output";
        return;
    }
    std::string tmp;
    int fd = besidefile(path, tmp);
    if (fd < 0) {
        fail(rep_, path, strerror(errno));
        return;
    }
    close(fd);
    name_ = tmp;
    beside_ = true;
}

OutputFile::~OutputFile()
{
    if (!name_.empty())
        unlink(name_.c_str());
    if (!folder_.empty())
        rmdir(folder_.c_str());
}

bool OutputFile::keep()
{
    if (name_.empty())
        return false;
    if (!beside_) {
        std::string text;
        return readwhole(name_, text, rep_) && writewhole(path_, text, rep_);
    }
    if (rename(name_.c_str(), path_.c_str()) != 0)
        return fail(rep_, path_, strerror(errno));
    name_.clear();
    return true;
}

bool readwhole(const std::string &path, std::string &text, Report &rep)
{
    // An input's name comes first, as in every message about an input.
    auto fail = [&path, &rep](const char *reason) {
        rep.fail(path, std::string("cannot be read: ") + reason);
        return false;
    };
    FILE *fp = fopen(path.c_str(), "rb");
    if (fp == nullptr)
        return fail(strerror(errno));
    char buf[65536];
    size_t n;
    text.clear();
    // Room for a regular file at once, so that a large one is not copied
    // again at every growth of the string.
    struct stat st;
    if (fstat(fileno(fp), &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0)
        text.reserve(static_cast<size_t>(st.st_size));
    while ((n = fread(buf, 1, sizeof buf, fp)) > 0)
        text.append(buf, n);
    bool ok = !ferror(fp);
    fclose(fp);
    if (!ok)
        return fail(stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode) ? "it is a folder"
                                                                        : "read error");
    return true;
}

InputText::InputText(const std::string &path, Report &rep)
{
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat st;
    if (fd >= 0 && fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0) {
        mapped_ = static_cast<size_t>(st.st_size);
        map_ = mmap(nullptr, mapped_, PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
        if (map_ == MAP_FAILED)
            map_ = nullptr;
    }
    if (fd >= 0)
        close(fd);
    if (map_ != nullptr) {
        text = std::string_view(static_cast<const char *>(map_), mapped_);
        ok = true;
        return;
    }
    // Pipes, devices, empty files, and anything that cannot be mapped.
    ok = readwhole(path, read_, rep);
    text = read_;
}

InputText::~InputText()
{
    if (map_ != nullptr)
        munmap(map_, mapped_);
}

Scratch::Scratch(const char *name) : folder(scratchfolder())
{
    if (!folder.empty())
        file = folder + "/" + name;
}

Scratch::~Scratch()
{
    if (!file.empty())
        unlink(file.c_str());
    if (!folder.empty())
        rmdir(folder.c_str());
}

}  // namespace edi
