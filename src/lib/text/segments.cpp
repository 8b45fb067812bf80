#include "text/segments.h"

#include <ctype.h>
#include <stdio.h>
#include <string.h>

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

bool SegmentReader::next(Segment &s)
{
    if (start_ >= text_.size())
        return false;
    size_t end;
    bool term = true;
    if (text_.size() - start_ >= 9 && text_.substr(start_, 3) == "UNA") {
        sx_ = syntaxof(text_.substr(start_));
        end = start_ + 9;
    } else {
        const char *base = text_.data();
        size_t i = start_;
        for (;;) {
            const void *hit = memchr(base + i, sx_.seg, text_.size() - i);
            i = hit != nullptr ? static_cast<size_t>(static_cast<const char *>(hit) - base)
                               : text_.size();
            if (i == text_.size() || !released(text_, i, start_, sx_.rel))
                break;
            i++;
        }
        term = i < text_.size();
        end = term ? i + 1 : text_.size();
    }
    s.begin = start_;
    s.end = end;
    s.terminated = term;
    s.sx = sx_;
    s.tag.clear();
    for (size_t i = start_; i < end && i < start_ + 3; i++)
        s.tag += static_cast<char>(toupper(static_cast<unsigned char>(text_[i])));
    start_ = end;
    return true;
}

std::vector<Segment> cutsegments(std::string_view text)
{
    std::vector<Segment> segs;
    SegmentReader reader(text);
    for (Segment s; reader.next(s);)
        segs.push_back(s);
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

std::string unreleased(std::string_view v, char rel)
{
    std::string r;
    for (size_t i = 0; i < v.size(); i++)
        r += v[i] == rel && i + 1 < v.size() ? v[++i] : v[i];
    return r;
}

}  // namespace edi
