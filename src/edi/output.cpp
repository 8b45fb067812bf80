#include "output.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

namespace edi {

namespace {

bool fail(const std::string &path, const char *reason)
{
    fprintf(stderr, "edi: %s: %s\n", path.c_str(), reason);
    return false;
}

}  // namespace

bool writewhole(const std::string &path, const std::string &text)
{
    if (path.empty() || path == "-") {
        if (fwrite(text.data(), 1, text.size(), stdout) != text.size() || fflush(stdout) != 0)
            return fail("stdout", strerror(errno));
        return true;
    }
    std::string tmp = path + ".XXXXXX";
    int fd = mkstemp(tmp.data());
    if (fd < 0)
        return fail(path, strerror(errno));
    // mkstemp makes the file private; give it the mode a new file gets.
    mode_t mask = umask(0);
    umask(mask);
    fchmod(fd, 0666 & ~mask);
    FILE *fp = fdopen(fd, "w");
    if (fp == nullptr) {
        int err = errno;
        close(fd);
        unlink(tmp.c_str());
        return fail(path, strerror(err));
    }
    bool ok = fwrite(text.data(), 1, text.size(), fp) == text.size();
    ok = (fflush(fp) == 0) && ok;
    int err = errno;
    ok = (fclose(fp) == 0) && ok;
    if (!ok || rename(tmp.c_str(), path.c_str()) != 0) {
        if (ok)
            err = errno;
        unlink(tmp.c_str());
        return fail(path, strerror(err != 0 ? err : EIO));
    }
    return true;
}

std::string infolder(const std::string &folder, const std::string &input,
                     const std::string &ext)
{
    size_t slash = input.find_last_of('/');
    std::string base = slash == std::string::npos ? input : input.substr(slash + 1);
    return folder + "/" + base + "." + ext;
}

bool isfolder(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool readwhole(const std::string &path, std::string &text)
{
    FILE *fp = fopen(path.c_str(), "rb");
    if (fp == nullptr)
        return fail(path, strerror(errno));
    char buf[65536];
    size_t n;
    text.clear();
    while ((n = fread(buf, 1, sizeof buf, fp)) > 0)
        text.append(buf, n);
    bool ok = !ferror(fp);
    fclose(fp);
    if (!ok)
        return fail(path, "read error");
    return true;
}

}  // namespace edi
