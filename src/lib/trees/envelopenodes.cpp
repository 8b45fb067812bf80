#include "trees/envelopenodes.h"

#include <stdlib.h>
#include <string.h>

#include "nodestore.h"
#include "text/segments.h"

namespace edi {

namespace {

// An element of a service segment: its name and, for a composite, the
// names of its components.
struct Element {
    const char *name;
    std::vector<const char *> components;
};

const std::vector<Element> &unblayout()
{
    static const std::vector<Element> l = {
        {"S001", {"0001", "0002", "0080", "0133"}},
        {"S002", {"0004", "0007", "0008", "0042"}},
        {"S003", {"0010", "0007", "0014", "0046"}},
        {"S004", {"0017", "0019"}},
        {"0020", {}},
        {"S005", {"0022", "0025"}},
        {"0026", {}},
        {"0029", {}},
        {"0031", {}},
        {"0032", {}},
        {"0035", {}},
    };
    return l;
}

const std::vector<Element> &unglayout()
{
    static const std::vector<Element> l = {
        {"0038", {}},
        {"S006", {"0040", "0007"}},
        {"S007", {"0044", "0007"}},
        {"S004", {"0017", "0019"}},
        {"0048", {}},
        {"0051", {}},
        {"S008", {"0052", "0054", "0057"}},
        {"0058", {}},
    };
    return l;
}

const std::vector<Element> &unzlayout()
{
    static const std::vector<Element> l = {{"0036", {}}, {"0020", {}}};
    return l;
}

const std::vector<Element> &unelayout()
{
    static const std::vector<Element> l = {{"0060", {}}, {"0048", {}}};
    return l;
}

datatree_t *node(const std::string &name, const std::string *value)
{
    datatree_t *tp = edihost::newnode();
    tp->xmltag = edihost::newtext(name.data(), name.size());
    if (value != nullptr)
        tp->data = edihost::newtext(value->data(), value->size());
    return tp;
}

void append(datatree_t *parent, datatree_t *child)
{
    datatree_t **at = &parent->child;
    while (*at != nullptr)
        at = &(*at)->next;
    *at = child;
    child->parent = parent;
}

// Names past the layout: elements E12, E13, ...; components C5, C6, ...
std::string elementname(const std::vector<Element> &layout, size_t i)
{
    return i < layout.size() ? layout[i].name : "E" + std::to_string(i + 1);
}

std::string componentname(const std::vector<Element> &layout, size_t i, size_t c)
{
    if (i < layout.size() && c < layout[i].components.size())
        return layout[i].components[c];
    return "C" + std::to_string(c + 1);
}

bool composite(const std::vector<Element> &layout, size_t i)
{
    return i < layout.size() && !layout[i].components.empty();
}

// The node of one service segment: element 0 (the tag) left out, empty
// elements and components left out.
datatree_t *segmentnode(const char *tag, const std::vector<Element> &layout,
                        const std::string &una, const std::string &seg)
{
    Syntax sx = syntaxof(una.empty() ? seg : una + seg);
    std::string_view body(seg);
    if (!body.empty() && body.back() == sx.seg)
        body.remove_suffix(1);
    datatree_t *top = node(tag, nullptr);
    std::vector<std::string> els = elementsof(body, sx);
    for (size_t e = 1; e < els.size(); e++) {
        size_t i = e - 1;
        std::vector<std::string> comps = componentsof(els[e], sx);
        bool anyvalue = false;
        for (const std::string &c : comps)
            anyvalue = anyvalue || !c.empty();
        if (!anyvalue)
            continue;
        if (!composite(layout, i) && comps.size() == 1) {
            std::string v = unreleased(comps[0], sx.rel);
            append(top, node(elementname(layout, i), &v));
            continue;
        }
        datatree_t *el = node(elementname(layout, i), nullptr);
        for (size_t c = 0; c < comps.size(); c++) {
            if (comps[c].empty())
                continue;
            std::string v = unreleased(comps[c], sx.rel);
            append(el, node(componentname(layout, i, c), &v));
        }
        append(top, el);
    }
    return top;
}

const datatree_t *childnamed(const datatree_t *tp, const char *name)
{
    for (const datatree_t *c = tp != nullptr ? tp->child : nullptr; c != nullptr; c = c->next)
        if (c->xmltag != nullptr && strcmp(c->xmltag, name) == 0)
            return c;
    return nullptr;
}

// Position of `name` in the layout, by its name or its E<n> form; -1 if
// neither.
long positionof(const std::vector<Element> &layout, const char *name, bool element, size_t el)
{
    if (element) {
        for (size_t i = 0; i < layout.size(); i++)
            if (strcmp(layout[i].name, name) == 0)
                return static_cast<long>(i);
    } else if (el < layout.size()) {
        const std::vector<const char *> &cs = layout[el].components;
        for (size_t c = 0; c < cs.size(); c++)
            if (strcmp(cs[c], name) == 0)
                return static_cast<long>(c);
    }
    char lead = element ? 'E' : 'C';
    if (name[0] != lead || name[1] < '1' || name[1] > '9')
        return -1;
    char *end = nullptr;
    long n = strtol(name + 1, &end, 10);
    return *end == '\0' && n >= 1 && n <= 99 ? n - 1 : -1;
}

SegmentValues valuesof(const datatree_t *seg, const std::vector<Element> &layout)
{
    SegmentValues out;
    for (const datatree_t *e = seg != nullptr ? seg->child : nullptr; e != nullptr; e = e->next) {
        if (e->xmltag == nullptr)
            continue;
        long i = positionof(layout, e->xmltag, true, 0);
        if (i < 0)
            continue;
        if (out.size() <= static_cast<size_t>(i))
            out.resize(i + 1);
        std::vector<std::string> &comps = out[i];
        if (e->child == nullptr) {
            comps.assign(1, e->data != nullptr ? e->data : "");
            continue;
        }
        for (const datatree_t *c = e->child; c != nullptr; c = c->next) {
            long k = c->xmltag != nullptr ? positionof(layout, c->xmltag, false, i) : -1;
            if (k < 0)
                continue;
            if (comps.size() <= static_cast<size_t>(k))
                comps.resize(k + 1);
            comps[k] = c->data != nullptr ? c->data : "";
        }
    }
    return out;
}

}  // namespace

bool isenvelopenode(const datatree_t *tp)
{
    return tp != nullptr && tp->xmltag != nullptr && tp->xmltag[0] == '#';
}

datatree_t *envelopenode(const std::string &una, const std::string &unb,
                         const std::string &unz, const std::string &charset)
{
    datatree_t *env = node(envelopenodename, nullptr);
    if (una.size() >= 9) {
        std::string chars = una.substr(3, 6);
        datatree_t *u = node("UNA", &chars);
        const char *names[] = {"component", "element", "decimal", "release", "repetition",
                               "terminator"};
        for (size_t i = 0; i < 6; i++) {
            std::string c(1, chars[i]);
            append(u, node(names[i], &c));
        }
        append(env, u);
    }
    if (!charset.empty())
        append(env, node("charset", &charset));
    append(env, segmentnode("UNB", unblayout(), una, unb));
    if (!unz.empty())
        append(env, segmentnode("UNZ", unzlayout(), una, unz));
    return env;
}

datatree_t *groupnode(const std::string &una, const std::string &ung, const std::string &une)
{
    datatree_t *g = segmentnode("UNG", unglayout(), una, ung);
    edihost::freetext(g->xmltag);
    g->xmltag = edihost::newtext(groupnodename, strlen(groupnodename));
    if (!une.empty())
        append(g, segmentnode("UNE", unelayout(), una, une));
    return g;
}

std::string segmentvalue(const SegmentValues &els, size_t e, size_t c)
{
    return e < els.size() && c < els[e].size() ? els[e][c] : "";
}

SegmentValues unbvalues(const datatree_t *envelope)
{
    return valuesof(childnamed(envelope, "UNB"), unblayout());
}

SegmentValues ungvalues(const datatree_t *group)
{
    return valuesof(group, unglayout());
}

std::string unaof(const datatree_t *envelope)
{
    const datatree_t *u = childnamed(envelope, "UNA");
    return u != nullptr && u->data != nullptr ? u->data : "";
}

std::string charsetof(const datatree_t *envelope)
{
    const datatree_t *c = childnamed(envelope, "charset");
    return c != nullptr && c->data != nullptr ? c->data : "";
}

}  // namespace edi
