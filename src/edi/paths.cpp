#include "paths.h"

#include <sys/stat.h>

namespace edi {

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

}  // namespace edi
