#include "vda/layout.h"

#include <stdio.h>

#include "module/locations.h"

namespace edi {

namespace {

const VdaFamily families[] = {
    {"VDA 4905", '5', "vda4905.tree", "511", "519",
     {"511", "512", "513", "514", "517", "518", "519", "515"}, "02", 67},
    {"VDA 4913", '7', "vda4913.tree", "711", "719",
     {"711", "712", "713", "714", "715", "716", "718", "719", "717"}, "02", 60},
};

}  // namespace

bool isrecordnode(const datatree_t *tp)
{
    const char *n = tp->xmltag;
    return n != nullptr && n[0] == '$' && n[1] == 'S' && n[2] != '\0';
}

std::map<std::string, const datatree_t *> recordnodes(const datatree_t *config)
{
    std::map<std::string, const datatree_t *> out;
    std::vector<const datatree_t *> todo{config->child};
    while (!todo.empty()) {
        const datatree_t *tp = todo.back();
        todo.pop_back();
        for (; tp != nullptr; tp = tp->next) {
            if (isrecordnode(tp))
                out.emplace(tp->xmltag, tp);
            else if (tp->child != nullptr)
                todo.push_back(tp->child);
        }
    }
    return out;
}

const VdaFamily *vdafamily(char digit)
{
    for (const VdaFamily &f : families)
        if (f.digit == digit)
            return &f;
    return nullptr;
}

const VdaFamily *familyoftype(const std::string &type)
{
    if (type.size() != 3 || type[1] != '1' || type[2] < '1' || type[2] > '9')
        return nullptr;
    return vdafamily(type[0]);
}

const VdaFamily *familyoftree(const datatree_t *tree)
{
    std::vector<const datatree_t *> todo{tree};
    while (!todo.empty()) {
        const datatree_t *tp = todo.back();
        todo.pop_back();
        for (; tp != nullptr; tp = tp->next) {
            if (isrecordnode(tp))
                if (const VdaFamily *f = familyoftype(tp->xmltag + 2))
                    return f;
            if (tp->child != nullptr) {
                // Depth first, in order: the rest of this chain comes after.
                if (tp->next != nullptr)
                    todo.push_back(tp->next);
                todo.push_back(tp->child);
                break;
            }
        }
    }
    return nullptr;
}

std::string bundledconfig(const VdaFamily &f)
{
    std::string data = datadir();
    return data.empty() ? "" : data + "/configs/" + f.config;
}

std::string trailerline(const VdaFamily &f, const std::string &version,
                        const std::vector<size_t> &counts)
{
    std::string line = std::string(f.trailer) + (version.size() == 2 ? version : f.trailerversion);
    for (size_t i = 0; i < f.counted.size(); i++) {
        char buf[32];
        snprintf(buf, sizeof buf, "%07zu", i < counts.size() ? counts[i] % 10000000 : 0);
        line += buf;
    }
    line.append(f.trailerfiller, ' ');
    return line;
}

}  // namespace edi
