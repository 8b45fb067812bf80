// The writer's repeated places joined with the repetition separator
// (repetitions.h).
#include "text/repetitions.h"
#include "text/segments.h"

namespace edi {

namespace {

// The separator an output interchange of syntax version 4 uses: UNA's
// fifth character where it is no blank, else '*'; 0 for an earlier
// version, or when the character would be one of the other separators.
char outputseparator(std::string_view una, std::string_view unb)
{
    if (syntaxversion(una, unb) < 4)
        return 0;
    Syntax sx = syntaxof(una);
    char c = sx.una && una[7] != ' ' ? una[7] : '*';
    bool other = c == sx.cmp || c == sx.dst || c == sx.dec || c == sx.rel || c == sx.seg;
    return other ? 0 : c;
}

std::string joined(const std::vector<std::string> &parts, char sep)
{
    std::string out;
    for (size_t i = 0; i < parts.size(); i++) {
        if (i > 0)
            out += sep;
        out += parts[i];
    }
    return out;
}

// One repetition without its trailing empty components.
std::string minimal(const std::string &element, const Syntax &sx)
{
    std::vector<std::string> comps = componentsof(element, sx);
    while (comps.size() > 1 && comps.back().empty())
        comps.pop_back();
    return joined(comps, sx.cmp);
}

// `body` with a release character in front of each separator `sep` that
// has none: every such character the writer wrote is a value's.
std::string releasevalues(std::string_view body, char sep, char rel)
{
    std::string out;
    for (size_t i = 0; i < body.size(); i++) {
        if (body[i] == sep && !released(body, i, 0, rel))
            out += rel;
        out += body[i];
    }
    return out;
}

}  // namespace

std::string joinrepetitions(const std::string &text, const RepetitionLayout &layout,
                            size_t &count)
{
    count = 0;
    std::vector<Segment> segs = cutsegments(text);
    std::string out;
    out.reserve(text.size());
    char sep = 0;
    for (size_t i = 0; i < segs.size(); i++) {
        const Segment &s = segs[i];
        std::string_view whole(text.data() + s.begin, s.end - s.begin);
        bool unbnext = i + 1 < segs.size() && segs[i + 1].tag == "UNB";
        if (s.tag == "UNA") {
            std::string una(whole);
            sep = unbnext ? outputseparator(una, segmentbody(text, segs[i + 1])) : 0;
            // The UNA declares the separator the segments use.
            if (sep != 0 && una.size() >= 9)
                una[7] = sep;
            out += una;
            continue;
        }
        if (s.tag == "UNB" && (i == 0 || segs[i - 1].tag != "UNA"))
            sep = outputseparator("", segmentbody(text, s));
        if (sep == 0) {
            out.append(whole);
            continue;
        }
        std::string body = releasevalues(segmentbody(text, s), sep, s.sx.rel);
        std::string tail(whole.substr(segmentbody(text, s).size()));
        auto it = layout.find(s.tag);
        std::vector<std::string> els = elementsof(body, s.sx);
        if (it == layout.end() || s.tag == "UNB" || els.size() < 2) {
            out += body + tail;
            continue;
        }
        std::vector<std::string> kept{els[0]};
        size_t e = 1;
        for (const ElementPlaces &p : it->second) {
            if (e >= els.size())
                break;
            if (p.places == 1) {
                kept.push_back(els[e++]);
                continue;
            }
            std::vector<std::string> reps;
            size_t present = 0;
            for (size_t r = 0; r < p.places && e < els.size(); r++, e++) {
                reps.push_back(minimal(els[e], s.sx));
                present += reps.back().empty() ? 0 : 1;
            }
            while (!reps.empty() && reps.back().empty())
                reps.pop_back();
            count += present > 1 ? 1 : 0;
            kept.push_back(joined(reps, sep));
        }
        kept.insert(kept.end(), els.begin() + static_cast<long>(e), els.end());
        out += joined(kept, s.sx.dst) + tail;
    }
    return out;
}

}  // namespace edi
