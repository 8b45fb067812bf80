#include "locations.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

// EDI_REL_LIBDIR and EDI_REL_DATADIR are the library and data folders of
// the install layout, relative to the folder of installed programs.
#ifndef EDI_REL_LIBDIR
#define EDI_REL_LIBDIR "../lib"
#endif
#ifndef EDI_REL_DATADIR
#define EDI_REL_DATADIR "../share/ediprot"
#endif

namespace edi {

namespace {

const char kModuleName[] = "libediprot.so.1";

bool isfile(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool isdir(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::string fromenv(const char *name)
{
    const char *value = getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

std::string programdir()
{
    std::string buf(4096, '\0');
    ssize_t n = readlink("/proc/self/exe", buf.data(), buf.size() - 1);
    if (n <= 0)
        return "";
    buf.resize(static_cast<size_t>(n));
    size_t slash = buf.rfind('/');
    return slash == std::string::npos ? "" : buf.substr(0, slash == 0 ? 1 : slash);
}

std::vector<std::string> modulecandidates()
{
    std::vector<std::string> out;
    if (std::string env = fromenv("EDIPROT_MODULE"); !env.empty()) {
        out.push_back(env);
        return out;
    }
    std::string dir = programdir();
    if (!dir.empty()) {
        for (const std::string &path : {dir + "/" + kModuleName,
                                        dir + "/" EDI_REL_LIBDIR "/" + kModuleName})
            if (isfile(path))
                out.push_back(path);
    }
    out.push_back(kModuleName);
    return out;
}

std::string datadir()
{
    if (std::string env = fromenv("EDIPROT_DATA"); !env.empty())
        return env;
    std::string dir = programdir();
    if (dir.empty())
        return "";
    for (const std::string &path : {dir + "/" EDI_REL_DATADIR, dir + "/share/ediprot"})
        if (isdir(path))
            return path;
    return "";
}

}  // namespace edi
