#include "module/locations.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <dlfcn.h>

// EDI_REL_DATADIR is the data folder of the install layout, relative to
// the folder of installed libraries.
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

std::string librarydir()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void *>(&librarydir), &info) == 0 || info.dli_fname == nullptr)
        return "";
    char *real = realpath(info.dli_fname, nullptr);
    std::string path = real != nullptr ? real : info.dli_fname;
    free(real);
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash == 0 ? 1 : slash);
}

std::vector<std::string> modulecandidates()
{
    std::vector<std::string> out;
    if (std::string env = fromenv("EDIPROT_MODULE"); !env.empty()) {
        out.push_back(env);
        return out;
    }
    std::string dir = librarydir();
    if (!dir.empty() && isfile(dir + "/" + kModuleName))
        out.push_back(dir + "/" + kModuleName);
    out.push_back(kModuleName);
    return out;
}

std::string datadir()
{
    if (std::string env = fromenv("EDIPROT_DATA"); !env.empty())
        return env;
    std::string dir = librarydir();
    if (dir.empty())
        return "";
    for (const std::string &path : {dir + "/" EDI_REL_DATADIR, dir + "/share/ediprot"})
        if (isdir(path))
            return path;
    return "";
}

}  // namespace edi
