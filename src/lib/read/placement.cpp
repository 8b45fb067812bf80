#include "read/placement.h"

#include <strings.h>

#include "text/segments.h"

namespace edi {

namespace {

bool hasvalue(const datatree_t *tp)
{
    // Iterative: configurations may nest deeply.
    std::vector<const datatree_t *> todo;
    for (const datatree_t *c = tp->child; c != nullptr; c = c->next)
        todo.push_back(c);
    while (!todo.empty()) {
        const datatree_t *n = todo.back();
        todo.pop_back();
        if (n->data != nullptr)
            return true;
        for (const datatree_t *c = n->child; c != nullptr; c = c->next)
            todo.push_back(c);
    }
    return false;
}

// The tags of the tag nodes that hold a value, in tree order: the order in
// which the reader placed their segments.
std::vector<std::string> placedtags(const datatree_t *tree)
{
    std::vector<std::string> tags;
    std::vector<const datatree_t *> todo{tree};
    while (!todo.empty()) {
        const datatree_t *n = todo.back();
        todo.pop_back();
        if (n->iseditag != 0) {
            if (n->xmltag != nullptr && hasvalue(n))
                tags.emplace_back(n->xmltag[0] == '\0' ? "" : n->xmltag + 1);
            continue;
        }
        std::vector<const datatree_t *> kids;
        for (const datatree_t *c = n->child; c != nullptr; c = c->next)
            kids.push_back(c);
        todo.insert(todo.end(), kids.rbegin(), kids.rend());
    }
    return tags;
}

}  // namespace

std::vector<LeftOut> leftout(const std::string &text, const datatree_t *tree)
{
    std::vector<LeftOut> out;
    std::vector<std::string> placed = tree != nullptr ? placedtags(tree) : std::vector<std::string>{};
    std::vector<Segment> segs = cutsegments(text);
    size_t j = 0;
    int message = 0;
    size_t position = 0;
    for (size_t i = 0; i < segs.size(); i++) {
        const Segment &s = segs[i];
        if (s.tag == "UNA" || s.tag == "UNB" || s.tag == "UNZ")
            continue;
        if (s.tag == "UNH") {
            message++;
            position = 0;
        }
        position++;
        if (j < placed.size() && strncasecmp(placed[j].c_str(), s.tag.c_str(), 3) == 0) {
            j++;
            continue;
        }
        // A segment placed on a tag node that stores nothing (no elements
        // in the segment or in the configuration) shows by its successor
        // being placed; behind a lost segment nothing of the message is.
        bool next = i + 1 < segs.size() && segs[i + 1].tag != "UNH" && segs[i + 1].tag != "UNZ";
        if (elementsof(segmentbody(text, s), s.sx).size() < 2 ||
            (next && j < placed.size() &&
             strncasecmp(placed[j].c_str(), segs[i + 1].tag.c_str(), 3) == 0))
            continue;
        // Nothing of this message is placed from here on.
        LeftOut lo{message, position, s.tag, 0};
        for (; i < segs.size(); i++) {
            if (segs[i].tag == "UNZ" || (segs[i].tag == "UNH" && lo.count > 0)) {
                i--;
                break;
            }
            lo.count++;
            if (segs[i].tag == "UNT")
                break;
        }
        out.push_back(lo);
    }
    return out;
}

std::string unknowntag(const std::string &text, const datatree_t *config)
{
    std::vector<std::string> known;
    std::vector<const datatree_t *> todo{config};
    while (!todo.empty()) {
        const datatree_t *n = todo.back();
        todo.pop_back();
        if (n->iseditag != 0 && n->xmltag != nullptr && n->xmltag[0] != '\0')
            known.emplace_back(n->xmltag + 1);
        for (const datatree_t *c = n->child; c != nullptr; c = c->next)
            todo.push_back(c);
    }
    for (const Segment &s : cutsegments(text)) {
        if (s.tag == "UNA" || s.tag == "UNB" || s.tag == "UNZ")
            continue;
        bool found = false;
        for (const std::string &k : known)
            found = found || strncasecmp(k.c_str(), s.tag.c_str(), 3) == 0;
        if (!found)
            return s.tag;
    }
    return "";
}

}  // namespace edi
