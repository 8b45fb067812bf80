// The working copy's repetitions on places of their own (repetitions.h).
#include <string_view>

#include "text/repetitions.h"
#include "text/segments.h"

namespace edi {

namespace {

// `s` cut at each `sep` that is not released; the pieces keep their
// release characters.
std::vector<std::string_view> cut(std::string_view s, char sep, char rel)
{
    std::vector<std::string_view> out;
    size_t start = 0;
    for (size_t i = 0; i <= s.size(); i++) {
        if (i < s.size() && (s[i] != sep || released(s, i, 0, rel)))
            continue;
        out.push_back(s.substr(start, i - start));
        start = i + 1;
    }
    return out;
}

bool envelope(const std::string &tag)
{
    return tag == "UNA" || tag == "UNB" || tag == "UNZ" || tag == "UNG" || tag == "UNE";
}

}  // namespace

std::string splitrepetitions(const std::string &text, const RepetitionLayout &layout,
                             RepetitionSplit &notes)
{
    notes = RepetitionSplit{};
    std::string out;
    out.reserve(text.size() + text.size() / 16);
    std::string_view una;
    char sep = 0;
    int message = 0;
    size_t position = 0;
    SegmentReader reader(text);
    for (Segment s; reader.next(s);) {
        std::string_view body = segmentbody(text, s);
        std::string_view whole(text.data() + s.begin, s.end - s.begin);
        if (s.tag == "UNA")
            una = whole;
        if (s.tag == "UNB") {
            sep = repetitionseparator(una, whole);
            notes.separator = notes.separator != 0 ? notes.separator : sep;
            una = {};
        }
        if (s.tag == "UNH") {
            message++;
            position = 0;
        }
        position += envelope(s.tag) ? 0 : 1;
        auto it = layout.find(s.tag);
        if (sep == 0 || envelope(s.tag) || it == layout.end() || body.size() < 4 ||
            body[3] != s.sx.dst) {
            out.append(whole);
            continue;
        }
        const std::vector<ElementPlaces> &places = it->second;
        std::vector<std::string_view> els = cut(body, s.sx.dst, s.sx.rel);
        std::string seg(els[0]);
        bool changed = false;
        for (size_t e = 1; e < els.size(); e++) {
            if (e > places.size()) {
                // No place in the configuration: the element stays whole.
                seg += s.sx.dst;
                seg += els[e];
                continue;
            }
            const ElementPlaces &p = places[e - 1];
            std::vector<std::string_view> reps = cut(els[e], sep, s.sx.rel);
            if (reps.size() > 1) {
                notes.split++;
                changed = true;
            }
            if (reps.size() > p.places) {
                notes.toomany.push_back(
                    TooManyRepetitions{message, position, s.tag, e, p.name, reps.size(), p.places});
                reps.resize(p.places);
            }
            for (std::string_view r : reps) {
                seg += s.sx.dst;
                seg += r;
            }
            // Empty places keep every element behind at its own place.
            if (reps.size() < p.places && e + 1 < els.size()) {
                seg.append(p.places - reps.size(), s.sx.dst);
                changed = true;
            }
        }
        if (!changed) {
            out.append(whole);
            continue;
        }
        notes.segments++;
        out += seg;
        out.append(whole.substr(body.size()));
    }
    return out;
}

}  // namespace edi
