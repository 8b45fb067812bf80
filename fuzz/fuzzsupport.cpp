#include "fuzzsupport.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
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

std::string &inname()
{
    static std::string name = privatename(".in");
    return name;
}

std::string &outfile()
{
    static std::string name = privatename(".out");
    return name;
}

}  // namespace

char *asfile(const uint8_t *data, size_t size)
{
    std::string &name = inname();
    FILE *fp = fopen(name.c_str(), "wb");
    expect(fp != nullptr, "cannot create the input file in the temporary folder");
    expect(size == 0 || fwrite(data, 1, size, fp) == size, "cannot write the input file");
    fclose(fp);
    return name.data();
}

char *outname()
{
    return outfile().data();
}

void removefiles()
{
    unlink(inname().c_str());
    unlink(outfile().c_str());
}

namespace {

// The configurations read so far; freed when the process ends, so that the
// leak check at exit sees nothing of them.
struct configcache {
    std::map<std::string, datatree_t *> trees;
    ~configcache()
    {
        for (auto &entry : trees)
            freedatatree(entry.second);
        edihost_clearservconf();
    }
};

configcache cache;

}  // namespace

// A tree file below the source folder, read once and kept under its path.
static datatree_t *loadonce(const std::string &relative)
{
    std::map<std::string, datatree_t *> &loaded = cache.trees;
    auto it = loaded.find(relative);
    if (it != loaded.end())
        return it->second;
    std::string path = std::string(EDIPROT_CONFIGS) + "/../" + relative;
    datatree_t *tree = edihost_readtree(path.c_str());
    expect(tree != nullptr, "a configuration of the fuzz entries does not read");
    loaded[relative] = tree;
    return tree;
}

datatree_t *config(const char *name)
{
    return loadonce(std::string("configs/") + name);
}

datatree_t *fuzzconfig(const char *name)
{
    return loadonce(std::string("fuzz/") + name);
}

const char *fuzzpath(const char *name)
{
    static std::map<std::string, std::string> paths;
    std::string &path = paths[name];
    if (path.empty())
        path = std::string(EDIPROT_CONFIGS) + "/../fuzz/" + name;
    return path.c_str();
}

void loadservconf()
{
    static bool done = false;
    if (!done) {
        std::string path = std::string(EDIPROT_CONFIGS) + "/../fuzz/servconf.conf";
        expect(edihost_loadservconf(path.c_str()) == 0, "fuzz/servconf.conf does not load");
        done = true;
    }
}

bool readwhole(const char *fn, char **buf, size_t *len)
{
    FILE *fp = fopen(fn, "rb");
    if (fp == nullptr)
        return false;
    char *text = nullptr;
    size_t size = 0, capacity = 0;
    char chunk[4096];
    size_t n;
    while ((n = fread(chunk, 1, sizeof chunk, fp)) > 0) {
        // Grown by doubling: a writer's output of tens of MB (a tree of many
        // wide fields) is read in linear time, not copied once per chunk.
        if (size + n + 1 > capacity) {
            capacity = std::max(2 * capacity, size + n + 1);
            text = static_cast<char *>(realloc(text, capacity));
            expect(text != nullptr, "out of memory");
        }
        memcpy(text + size, chunk, n);
        size += n;
    }
    fclose(fp);
    if (text == nullptr)
        text = static_cast<char *>(calloc(1, 1));
    text[size] = '\0';
    *buf = text;
    *len = size;
    return true;
}

void expect(bool ok, const char *what)
{
    if (ok)
        return;
    fprintf(stderr, "fuzz entry: %s\n", what);
    fflush(stderr);
    abort();
}

}  // namespace fuzzsupport
