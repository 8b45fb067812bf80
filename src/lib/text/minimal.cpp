#include "text/minimal.h"

#include <vector>

#include "text/segments.h"

namespace edi {

std::string minimalform(const std::string &text, size_t &count)
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
        std::vector<std::string> els = elementsof(segmentbody(text, s), s.sx);
        std::string seg;
        size_t last = 0;  // elements up to the last that holds anything
        std::vector<std::string> shaped;
        for (size_t e = 0; e < els.size(); e++) {
            std::vector<std::string> cs = componentsof(els[e], s.sx);
            while (cs.size() > 1 && cs.back().empty())
                cs.pop_back();
            std::string el;
            for (size_t c = 0; c < cs.size(); c++)
                el += (c > 0 ? std::string(1, s.sx.cmp) : "") + cs[c];
            if (!el.empty() || e == 0)
                last = e;
            shaped.push_back(std::move(el));
        }
        for (size_t e = 0; e <= last && e < shaped.size(); e++)
            seg += (e > 0 ? std::string(1, s.sx.dst) : "") + shaped[e];
        seg += s.sx.seg;
        if (seg != whole)
            count++;
        out += seg;
    }
    return out;
}

}  // namespace edi
