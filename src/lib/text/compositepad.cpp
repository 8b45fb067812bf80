#include "text/compositepad.h"

#include <map>
#include <vector>

#include "text/segments.h"
#include "text/tagnodes.h"

namespace edi {

namespace {

void collect(const datatree_t *config, CompositePlaces &out)
{
    eachtagnode(config, [&out](const std::string &tag, const datatree_t *n) {
        std::vector<bool> mine{false};
        for (const datatree_t *e = n->child; e != nullptr; e = e->next)
            mine.push_back(e->child != nullptr);
        auto it = out.find(tag);
        if (it == out.end()) {
            out.emplace(tag, mine);
            return;
        }
        std::vector<bool> &all = it->second;
        for (size_t i = 0; i < all.size(); i++)
            all[i] = all[i] && i < mine.size() && mine[i];
    });
}

}  // namespace

CompositePlaces compositeplaces(const datatree_t *config)
{
    CompositePlaces places;
    if (config != nullptr)
        collect(config, places);
    return places;
}

std::string padcomposites(const std::string &text, const datatree_t *config, size_t &count)
{
    count = 0;
    if (config == nullptr)
        return text;
    return padcomposites(text, compositeplaces(config), count);
}

std::string padcomposites(const std::string &text, const CompositePlaces &composites,
                          size_t &count)
{
    count = 0;
    std::string out;
    out.reserve(text.size() + text.size() / 16);
    for (const Segment &s : cutsegments(text)) {
        auto it = composites.find(s.tag);
        std::string_view body = segmentbody(text, s);
        if (it == composites.end() || s.tag == "UNA" || body.size() < 4 ||
            body[3] != s.sx.dst) {
            out.append(text, s.begin, s.end - s.begin);
            continue;
        }
        // Cut at unreleased element separators, as the reader does.
        const std::vector<bool> &comp = it->second;
        size_t element = 0, start = 0;
        for (size_t i = 0; i <= body.size(); i++) {
            bool end = i == body.size() || (body[i] == s.sx.dst && !released(body, i, 0, s.sx.rel));
            if (!end)
                continue;
            std::string_view el = body.substr(start, i - start);
            out.append(el);
            if (element > 0 && element < comp.size() && comp[element] &&
                el.find(s.sx.cmp) == std::string_view::npos) {
                out += s.sx.cmp;
                count++;
            }
            if (i < body.size())
                out += body[i];
            element++;
            start = i + 1;
        }
        out.append(text, s.begin + body.size(), s.end - s.begin - body.size());
    }
    return out;
}

}  // namespace edi
