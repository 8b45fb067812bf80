#include "write/writerepetitions.h"

#include <algorithm>

#include "directory/autoconfig.h"
#include "directory/repeats.h"
#include "text/segments.h"

namespace edi {

namespace {

bool same(const std::vector<ElementPlaces> &a, const std::vector<ElementPlaces> &b)
{
    for (size_t i = 0; i < std::min(a.size(), b.size()); i++)
        if (a[i].places != b[i].places)
            return false;
    return true;
}

// Every element of one place: no join.
std::vector<ElementPlaces> single(const std::vector<ElementPlaces> &places)
{
    std::vector<ElementPlaces> out;
    for (const ElementPlaces &p : places)
        out.insert(out.end(), p.places, ElementPlaces{p.name, 1});
    return out;
}

}  // namespace

RepetitionLayout writtenlayout(const std::vector<std::pair<const datatree_t *, const datatree_t *>> &written,
                               const std::string &given)
{
    RepetitionLayout all;
    for (const auto &[config, first] : written) {
        RepetitionLayout one = repetitionlayout(config);
        // Envelope nodes (#envelope, #group) stand in front of messages.
        const datatree_t *message = first;
        while (message != nullptr && message->xmltag != nullptr && message->xmltag[0] == '#')
            message = message->next;
        std::string err;
        std::string id = message != nullptr ? messageid(message, given, err) : "";
        std::map<std::string, std::vector<int>> maxima;
        if (!id.empty() && elementrepeats(id, maxima))
            confirmrepetitions(one, maxima);
        for (auto &[tag, places] : one) {
            auto it = all.find(tag);
            if (it == all.end())
                all.emplace(tag, places);
            else if (!same(it->second, places))
                it->second = single(it->second.size() >= places.size() ? it->second : places);
        }
    }
    return all;
}

std::string joinwritten(const std::string &text,
                        const std::vector<std::pair<const datatree_t *, const datatree_t *>> &written,
                        const std::string &given, const std::string &output, Report &rep)
{
    // Earlier syntax versions have no repetition separator: no layout needed.
    std::string_view una;
    int version = 0;
    SegmentReader reader(text);
    for (Segment s; version == 0 && reader.next(s);) {
        if (s.tag == "UNA")
            una = std::string_view(text).substr(s.begin, s.end - s.begin);
        else if (s.tag == "UNB")
            version = syntaxversion(una, segmentbody(text, s));
        else if (s.tag == "UNH")
            break;
    }
    if (version < 4)
        return text;
    size_t joined = 0;
    std::string out = joinrepetitions(text, writtenlayout(written, given), joined);
    if (joined > 0)
        rep.change(output, std::to_string(joined) + " repeated element" +
                               (joined == 1 ? "" : "s") +
                               " written with the repetition separator, its places joined");
    return out;
}

}  // namespace edi
