#include "text/minimal.h"

#include <vector>

#include "text/segments.h"

namespace edi {

namespace {

// One segment in minimal form, by its elements and components as lists.
std::string plainsegment(std::string_view body, const Syntax &sx)
{
    std::vector<std::string> els = elementsof(body, sx);
    std::string seg;
    size_t last = 0;  // elements up to the last that holds anything
    std::vector<std::string> shaped;
    for (size_t e = 0; e < els.size(); e++) {
        std::vector<std::string> cs = componentsof(els[e], sx);
        while (cs.size() > 1 && cs.back().empty())
            cs.pop_back();
        std::string el;
        for (size_t c = 0; c < cs.size(); c++)
            el += (c > 0 ? std::string(1, sx.cmp) : "") + cs[c];
        if (!el.empty() || e == 0)
            last = e;
        shaped.push_back(std::move(el));
    }
    for (size_t e = 0; e <= last && e < shaped.size(); e++)
        seg += (e > 0 ? std::string(1, sx.dst) : "") + shaped[e];
    return seg + sx.seg;
}

// The same, appended to `out` in one pass over the segment's bytes.  An
// element is its text up to the end of its last component that holds
// anything (its first component at least); the segment ends behind the
// last element that holds anything (its tag at least).  Only for service
// characters that differ from each other: then a character is released
// when an odd run of release characters stands in front of it, counted in
// the segment or in its element alike.
void onepass(std::string_view body, const Syntax &sx, std::string &out)
{
    const size_t n = body.size();
    size_t keep = out.size();  // the output up to the last element kept
    size_t run = 0;            // release characters directly in front of i
    size_t i = 0;
    for (size_t e = 0;; e++) {
        const size_t begin = i;
        size_t comp = i;  // where the component at hand begins
        size_t end = i;   // behind the last component that holds anything
        for (; i < n; i++) {
            const char c = body[i];
            const bool separates = run % 2 == 0;
            if (c == sx.dst && separates)
                break;
            if (c == sx.cmp && separates) {
                if (i > comp)
                    end = i;
                comp = i + 1;
            }
            run = c == sx.rel ? run + 1 : 0;
        }
        if (i > comp)
            end = i;
        if (e > 0)
            out += sx.dst;
        out.append(body.data() + begin, end - begin);
        if (end > begin || e == 0)
            keep = out.size();
        if (i == n)
            break;
        i++;  // the element separator
        run = 0;
    }
    out.resize(keep);
    out += sx.seg;
}

}  // namespace

std::string minimalform(const std::string &text, size_t &count, bool plain)
{
    count = 0;
    std::string out;
    out.reserve(text.size());
    SegmentReader sr(text);
    Segment s;
    while (sr.next(s)) {
        std::string_view whole(text.data() + s.begin, s.end - s.begin);
        if (s.tag == "UNA" || !s.terminated) {
            out.append(whole);
            continue;
        }
        const Syntax &sx = s.sx;
        const size_t start = out.size();
        if (plain || sx.cmp == sx.dst || sx.cmp == sx.rel || sx.dst == sx.rel)
            out += plainsegment(segmentbody(text, s), sx);
        else
            onepass(segmentbody(text, s), sx, out);
        if (std::string_view(out).substr(start) != whole)
            count++;
    }
    return out;
}

}  // namespace edi
