#include "text/envelopeout.h"

#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "text/segments.h"

namespace edi {

namespace {

// The service characters of a text, the repetition separator with them.
struct Chars {
    Syntax sx;
    char rep = ' ';
};

Chars charsof(const std::string &una6)
{
    Chars c;
    if (una6.size() >= 6) {
        c.sx.cmp = una6[0];
        c.sx.dst = una6[1];
        c.sx.dec = una6[2];
        c.sx.rel = una6[3];
        c.rep = una6[4];
        c.sx.seg = una6[5];
        c.sx.una = true;
    }
    return c;
}

std::string released(const std::string &v, const Chars &c)
{
    std::string out;
    out.reserve(v.size() + 2);
    for (char ch : v) {
        if (ch == c.sx.cmp || ch == c.sx.dst || ch == c.sx.rel || ch == c.sx.seg ||
            (c.rep != ' ' && ch == c.rep))
            out += c.sx.rel;
        out += ch;
    }
    return out;
}

// Pieces of `v` cut at `sep` where it is not released.
std::vector<std::string_view> split(std::string_view v, char sep, char rel)
{
    std::vector<std::string_view> out;
    size_t from = 0;
    for (size_t i = 0; i < v.size(); i++) {
        if (v[i] == rel) {
            i++;
            continue;
        }
        if (v[i] == sep) {
            out.push_back(v.substr(from, i - from));
            from = i + 1;
        }
    }
    out.push_back(v.substr(from));
    return out;
}

// A service segment from its values, trailing empty elements and
// components left out.
std::string segmentof(const char *tag, const SegmentValues &els, const Chars &c)
{
    std::vector<std::string> texts;
    for (const std::vector<std::string> &comps : els) {
        size_t n = comps.size();
        while (n > 0 && comps[n - 1].empty())
            n--;
        std::string e;
        for (size_t i = 0; i < n; i++)
            e += (i > 0 ? std::string(1, c.sx.cmp) : "") + released(comps[i], c);
        texts.push_back(e);
    }
    while (!texts.empty() && texts.back().empty())
        texts.pop_back();
    std::string out = tag;
    for (const std::string &t : texts)
        out += c.sx.dst + t;
    return out + c.sx.seg;
}

}  // namespace

std::string setenvelope(const std::string &text, const OutEnvelope &env)
{
    int version = atoi(segmentvalue(env.unb, 0, 1).c_str());
    Chars c;
    c.rep = version >= 4 ? '*' : ' ';
    std::string out;
    out.reserve(text.size() + 256);
    size_t msg = 0, g = 0;
    bool una = false;
    SegmentReader reader(text);
    for (Segment s; reader.next(s);) {
        if (s.tag == "UNA") {
            out += std::string("UNA:+.?") + c.rep + "'";
            una = true;
        } else if (s.tag == "UNB") {
            if (!una && c.rep != ' ')
                out += std::string("UNA:+.?") + c.rep + "'";
            out += segmentof("UNB", env.unb, c);
        } else if (s.tag == "UNH") {
            if (g < env.groups.size() && env.groups[g].first == msg)
                out += segmentof("UNG", env.groups[g].ung, c);
            out.append(text, s.begin, s.end - s.begin);
        } else if (s.tag == "UNT") {
            out.append(text, s.begin, s.end - s.begin);
            if (g < env.groups.size() && env.groups[g].last == msg) {
                const OutEnvelope::Group &gr = env.groups[g];
                out += segmentof("UNE",
                                 {{std::to_string(gr.last - gr.first + 1)}, {segmentvalue(gr.ung, 4, 0)}},
                                 c);
                g++;
            }
            msg++;
        } else {
            out.append(text, s.begin, s.end - s.begin);
        }
    }
    return out;
}

std::string reseparate(const std::string &text, const std::string &una, bool keepuna)
{
    Chars to = charsof(una);
    Chars from;
    if (text.size() >= 9 && text.compare(0, 3, "UNA") == 0)
        from = charsof(text.substr(3, 6));
    bool same = from.sx.cmp == to.sx.cmp && from.sx.dst == to.sx.dst &&
                from.sx.rel == to.sx.rel && from.sx.seg == to.sx.seg && from.rep == to.rep &&
                from.sx.dec == to.sx.dec;
    std::string out;
    out.reserve(text.size() + 16);
    if (keepuna)
        out += "UNA" + una.substr(0, 6);
    SegmentReader reader(text);
    for (Segment s; reader.next(s);) {
        if (s.tag == "UNA")
            continue;
        if (same) {
            out.append(text, s.begin, s.end - s.begin);
            continue;
        }
        std::string_view body = segmentbody(text, s);
        std::vector<std::string_view> els = split(body, from.sx.dst, from.sx.rel);
        for (size_t e = 0; e < els.size(); e++) {
            if (e > 0)
                out += to.sx.dst;
            if (e == 0) {
                out += els[0];
                continue;
            }
            std::vector<std::string_view> reps =
                from.rep != ' ' ? split(els[e], from.rep, from.sx.rel)
                                : std::vector<std::string_view>{els[e]};
            for (size_t r = 0; r < reps.size(); r++) {
                if (r > 0)
                    out += to.rep;
                std::vector<std::string_view> comps = split(reps[r], from.sx.cmp, from.sx.rel);
                for (size_t k = 0; k < comps.size(); k++) {
                    if (k > 0)
                        out += to.sx.cmp;
                    out += released(unreleased(comps[k], from.sx.rel), to);
                }
            }
        }
        if (s.terminated)
            out += to.sx.seg;
    }
    return out;
}

std::vector<std::string> unbdate(long long when, int version)
{
    time_t t = static_cast<time_t>(when);
    struct tm tm;
    gmtime_r(&t, &tm);
    char date[48], hm[32];
    if (version >= 4)
        snprintf(date, sizeof date, "%04d%02d%02d", tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday);
    else
        snprintf(date, sizeof date, "%02d%02d%02d", tm.tm_year % 100, tm.tm_mon + 1, tm.tm_mday);
    snprintf(hm, sizeof hm, "%02d%02d", tm.tm_hour, tm.tm_min);
    return {date, hm};
}

}  // namespace edi
