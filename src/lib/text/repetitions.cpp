#include "text/repetitions.h"

#include <stdlib.h>

#include <algorithm>

#include "text/segments.h"
#include "text/tagnodes.h"

namespace edi {

namespace {

// True if `name` is the next node of the run `run`: X_2 behind X, X_3
// behind X_2 ...
bool continues(const ElementPlaces &run, const std::string &name)
{
    std::string next = run.name + "_" + std::to_string(run.places + 1);
    return name == next;
}

std::vector<ElementPlaces> placesof(const datatree_t *tagnode)
{
    std::vector<ElementPlaces> out;
    for (const datatree_t *e = tagnode->child; e != nullptr; e = e->next) {
        std::string name = e->xmltag != nullptr ? e->xmltag : "";
        if (!out.empty() && continues(out.back(), name))
            out.back().places++;
        else
            out.push_back(ElementPlaces{name, 1});
    }
    return out;
}

// Every node of `places` an element of one place.
std::vector<ElementPlaces> flat(const std::vector<ElementPlaces> &places)
{
    std::vector<ElementPlaces> out;
    for (const ElementPlaces &p : places)
        for (size_t r = 0; r < p.places; r++)
            out.push_back(ElementPlaces{r == 0 ? p.name : p.name + "_" + std::to_string(r + 1), 1});
    return out;
}

size_t nodes(const std::vector<ElementPlaces> &places)
{
    size_t n = 0;
    for (const ElementPlaces &p : places)
        n += p.places;
    return n;
}

}  // namespace

RepetitionLayout repetitionlayout(const datatree_t *config)
{
    RepetitionLayout layout;
    std::map<std::string, bool> disagree;
    if (config == nullptr)
        return layout;
    eachtagnode(config, [&](const std::string &tag, const datatree_t *n) {
        std::vector<ElementPlaces> mine = placesof(n);
        auto it = layout.find(tag);
        if (it == layout.end()) {
            layout.emplace(tag, std::move(mine));
            return;
        }
        std::vector<ElementPlaces> &have = it->second;
        for (size_t i = 0; i < std::min(have.size(), mine.size()); i++)
            disagree[tag] = disagree[tag] || have[i].places != mine[i].places;
        if (nodes(mine) > nodes(have))
            have = std::move(mine);
    });
    for (auto &[tag, yes] : disagree)
        if (yes)
            layout[tag] = flat(layout[tag]);
    return layout;
}

void confirmrepetitions(RepetitionLayout &layout,
                        const std::map<std::string, std::vector<int>> &maxima)
{
    for (auto &[tag, places] : layout) {
        auto m = maxima.find(tag);
        if (m == maxima.end())
            continue;
        // The nodes one by one, each with the length of the run it begins
        // (0 inside a run).
        std::vector<ElementPlaces> single = flat(places);
        std::vector<size_t> run;
        for (const ElementPlaces &p : places)
            for (size_t r = 0; r < p.places; r++)
                run.push_back(r == 0 ? p.places : 0);
        std::vector<ElementPlaces> out;
        size_t at = 0;
        auto take = [&](bool repeats) {
            size_t k = repeats && run[at] > 1 ? run[at] : 1;
            out.push_back(ElementPlaces{single[at].name, k});
            at += k;
        };
        for (int max : m->second) {
            if (at >= single.size())
                break;
            take(max > 1);
        }
        // Nodes behind the directory's elements keep their runs.
        while (at < single.size())
            take(true);
        places = std::move(out);
    }
}

int syntaxversion(std::string_view una, std::string_view unb)
{
    Syntax sx = syntaxof(una);
    if (!unb.empty() && unb.back() == sx.seg)
        unb.remove_suffix(1);
    std::vector<std::string> els = elementsof(unb, sx);
    if (els.size() < 2)
        return 0;
    std::vector<std::string> id = componentsof(els[1], sx);
    std::string version = id.size() > 1 ? unreleased(id[1], sx.rel) : "";
    if (version.empty() || version.size() > 2 ||
        version.find_first_not_of("0123456789") != std::string::npos)
        return 0;
    return atoi(version.c_str());
}

char repetitionseparator(std::string_view una, std::string_view unb)
{
    Syntax sx = syntaxof(una);
    if (sx.una) {
        char c = una[7];
        bool other = c == sx.cmp || c == sx.dst || c == sx.dec || c == sx.rel || c == sx.seg;
        return c == ' ' || other ? 0 : c;
    }
    return syntaxversion(una, unb) >= 4 ? '*' : 0;
}

}  // namespace edi
