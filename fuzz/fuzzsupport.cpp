#include "fuzzsupport.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <map>
#include <string>

#include "edihost.h"

namespace fuzzsupport {

namespace {

std::string privatename(const char *suffix)
{
    const char *dir = getenv("TMPDIR");
    return std::string(dir != nullptr && *dir ? dir : "/tmp") + "/ediprot-fuzz-" +
           std::to_string(getpid()) + suffix;
}

}  // namespace

char *asfile(const uint8_t *data, size_t size)
{
    static std::string name = privatename(".in");
    FILE *fp = fopen(name.c_str(), "wb");
    if (fp == nullptr)
        abort();
    if (size > 0 && fwrite(data, 1, size, fp) != size)
        abort();
    fclose(fp);
    return name.data();
}

char *outname()
{
    static std::string name = privatename(".out");
    return name.data();
}

datatree_t *config(const char *name)
{
    static std::map<std::string, datatree_t *> loaded;
    auto it = loaded.find(name);
    if (it != loaded.end())
        return it->second;
    std::string path = std::string(EDIPROT_CONFIGS) + "/" + name;
    datatree_t *tree = edihost_readtree(path.c_str());
    if (tree == nullptr)
        abort();
    loaded[name] = tree;
    return tree;
}

void loadservconf()
{
    static bool done = false;
    if (!done) {
        std::string path = std::string(EDIPROT_CONFIGS) + "/servconf.conf";
        if (edihost_loadservconf(path.c_str()) != 0)
            abort();
        done = true;
    }
}

void quiet()
{
    static bool done = false;
    if (!done && getenv("EDIPROT_FUZZ_VERBOSE") == nullptr) {
        int fd = open("/dev/null", O_WRONLY);
        if (fd >= 0) {
            dup2(fd, 2);
            close(fd);
        }
    }
    done = true;
}

}  // namespace fuzzsupport
