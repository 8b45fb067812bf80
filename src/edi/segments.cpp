#include "segments.h"

#include <ctype.h>
#include <stdio.h>

namespace edi {

namespace {

std::vector<std::string> cut(std::string_view s, char sep, char rel)
{
    std::vector<std::string> out(1);
    for (size_t i = 0; i < s.size(); i++) {
        if (s[i] == sep && !released(s, i, 0, rel)) {
            out.emplace_back();
            continue;
        }
        out.back() += s[i];
    }
    return out;
}

}  // namespace

bool released(std::string_view text, size_t pos, size_t from, char rel)
{
    size_t run = 0;
    while (pos > from + run && text[pos - run - 1] == rel)
        run++;
    return run % 2 == 1;
}

Syntax syntaxof(std::string_view text)
{
    Syntax sx;
    if (text.size() >= 9 && text.substr(0, 3) == "UNA") {
        sx.cmp = text[3];
        sx.dst = text[4];
        sx.dec = text[5];
        sx.rel = text[6];
        sx.seg = text[8];
        sx.una = true;
    }
    return sx;
}

std::vector<Segment> cutsegments(std::string_view text)
{
    std::vector<Segment> segs;
    Syntax sx;
    size_t start = 0;
    auto add = [&](size_t end, bool term) {
        Segment s;
        s.begin = start;
        s.end = end;
        s.terminated = term;
        s.sx = sx;
        for (size_t i = start; i < end && i < start + 3; i++)
            s.tag += static_cast<char>(toupper(static_cast<unsigned char>(text[i])));
        segs.push_back(s);
        start = end;
    };
    while (start < text.size()) {
        if (text.size() - start >= 9 && text.substr(start, 3) == "UNA") {
            sx = syntaxof(text.substr(start));
            add(start + 9, true);
            continue;
        }
        size_t i = start;
        while (i < text.size() && (text[i] != sx.seg || released(text, i, start, sx.rel)))
            i++;
        if (i < text.size())
            add(i + 1, true);
        else
            add(text.size(), false);
    }
    return segs;
}

std::string_view segmentbody(std::string_view text, const Segment &s)
{
    return text.substr(s.begin, s.end - s.begin - (s.terminated ? 1 : 0));
}

std::vector<std::string> elementsof(std::string_view seg, const Syntax &sx)
{
    return cut(seg, sx.dst, sx.rel);
}

std::vector<std::string> componentsof(std::string_view elem, const Syntax &sx)
{
    return cut(elem, sx.cmp, sx.rel);
}

std::string printable(std::string_view s)
{
    std::string out;
    for (unsigned char c : s) {
        if (c >= 0x20 && c < 0x7f) {
            out += static_cast<char>(c);
        } else {
            char buf[8];
            snprintf(buf, sizeof buf, "\\x%02x", c);
            out += buf;
        }
    }
    return out;
}

}  // namespace edi
