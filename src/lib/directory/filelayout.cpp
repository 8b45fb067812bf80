#include "directory/filelayout.h"

#include <map>

#include "text/segments.h"

namespace edi {

namespace {

// The longest value a segment can hold: outbound values are never cut.
const char *const nocut = " edimaxlen=8191";

std::string twodigits(size_t n)
{
    std::string digits = std::to_string(n);
    return n < 10 ? digits.insert(0, 1, '0') : digits;
}

// True if the element holds components as the module cuts them: its first
// component separator decides, released or not.
bool composite(const std::string &el, const Syntax &sx)
{
    size_t p = el.find(sx.cmp);
    return p != std::string::npos && !released(el, p, 0, sx.rel);
}

// Tag node names in order: $DTM, $DTM_2, ...
struct TagNames {
    std::map<std::string, int> seen;
    std::string next(const std::string &tag)
    {
        int n = ++seen[tag];
        std::string name = "$" + tag;
        if (n > 1)
            name.append("_").append(std::to_string(n));
        return name;
    }
};

void line(std::string &out, int depth, const std::string &text)
{
    out.append(size_t(depth) * 2, ' ');
    out += text;
    out += '\n';
}

}  // namespace

std::vector<Unit> splitmessages(const Unit &u)
{
    if (u.source != nullptr) {
        // The envelope pass found the messages: cut along its places.
        std::vector<Unit> parts;
        for (size_t m = 0; cuttable(u) && m < u.places.size(); m++)
            parts.push_back(messagepart(u, m));
        return parts.empty() ? std::vector<Unit>{u} : parts;
    }
    // One pass that keeps only the places of UNH, UNT and UNZ: a unit of a
    // large interchange is not cut into a list of all its segments.
    size_t headend = u.text.size(), trailer = u.text.size();
    std::vector<std::pair<size_t, size_t>> msgs;  // byte ranges of UNH ... UNT
    bool open = false;
    SegmentReader reader(u.text);
    for (Segment s; reader.next(s);) {
        if (s.tag == "UNH") {
            if (open)
                return {u};
            open = true;
            headend = std::min(headend, s.begin);
            msgs.emplace_back(s.begin, s.end);
        } else if (s.tag == "UNT" && open) {
            open = false;
            msgs.back().second = s.end;
        } else if (s.tag == "UNZ" && !open) {
            trailer = s.begin;
        }
    }
    if (open || msgs.size() < 2)
        return {u};
    std::string head = u.text.substr(0, headend);
    std::string tail = trailer < u.text.size() ? u.text.substr(trailer) : "";
    std::vector<Unit> out;
    for (size_t m = 0; m < msgs.size(); m++) {
        Unit one = messageframe(u, m);
        one.text = head + u.text.substr(msgs[m].first, msgs[m].second - msgs[m].first) + tail;
        out.push_back(std::move(one));
    }
    return out;
}

std::string layoutfromtext(const std::string &text)
{
    std::vector<Segment> segs = cutsegments(text);
    size_t i = 0;
    while (i < segs.size() && segs[i].tag != "UNH")
        i++;
    std::string body;
    TagNames names;
    std::string type;
    for (; i < segs.size(); i++) {
        const Segment &s = segs[i];
        std::vector<std::string> els = elementsof(segmentbody(text, s), s.sx);
        if (s.tag.size() < 3 || s.tag == "UNZ" || (s.tag == "UNH" && !body.empty()))
            break;
        if (s.tag == "UNH" && els.size() > 2)
            type = componentsof(els[2], s.sx)[0];
        line(body, 2, names.next(s.tag) + " iseditag=1");
        for (size_t e = 1; e < els.size(); e++) {
            std::string name = s.tag + twodigits(e);
            line(body, 3, name);
            if (composite(els[e], s.sx)) {
                size_t parts = componentsof(els[e], s.sx).size();
                for (size_t c = 1; c <= parts; c++)
                    line(body, 4, name + twodigits(c));
            }
        }
        if (s.tag == "UNT")
            break;
    }
    return "# Inbound " + type + ", layout taken from the message itself.\nedi\n  *" + type +
           "\n" + body;
}

std::string layoutfromtree(const datatree_t *message)
{
    std::string out = "# Outbound, layout taken from the tree itself.\nedi\n";
    line(out, 1, message->xmltag != nullptr ? message->xmltag : "*");
    for (const datatree_t *seg = message->child; seg != nullptr; seg = seg->next) {
        if (seg->xmltag == nullptr || seg->xmltag[0] != '$')
            continue;
        line(out, 2, std::string(seg->xmltag) + " iseditag=1");
        for (const datatree_t *el = seg->child; el != nullptr; el = el->next) {
            if (el->xmltag == nullptr)
                continue;
            if (el->child == nullptr) {
                line(out, 3, el->xmltag + std::string(nocut));
                continue;
            }
            line(out, 3, el->xmltag);
            for (const datatree_t *c = el->child; c != nullptr; c = c->next)
                if (c->xmltag != nullptr)
                    line(out, 4, c->xmltag + std::string(nocut));
        }
    }
    return out;
}

}  // namespace edi
