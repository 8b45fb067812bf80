#include "trees/compacttree.h"
#include "trees/jsoncharset.h"

#include <string.h>

#include <stdexcept>

#include "nodestore.h"

namespace edi {

namespace {

// Deeper trees are refused, as the full JSON form refuses them: both
// recurse once per level.
constexpr int kMaxDepth = 10000;

datatree_t *copynode(const datatree_t *tp)
{
    datatree_t *cp = edihost::newnode();
    if (tp->xmltag != nullptr)
        cp->xmltag = edihost::newtext(tp->xmltag, strlen(tp->xmltag));
    if (tp->data != nullptr)
        cp->data = edihost::newtext(tp->data, strlen(tp->data));
    cp->loopcnt = tp->loopcnt;
    return cp;
}

// The copy of `tp` with its children that carry data, or NULL when
// nothing below it (itself included) has a value and `keep` is false.
datatree_t *prune(const datatree_t *tp, bool keep, int depth)
{
    if (depth > kMaxDepth)
        throw std::runtime_error("tree deeper than 10000 levels");
    datatree_t *kids = nullptr, **slot = &kids;
    try {
        for (const datatree_t *c = tp->child; c != nullptr; c = c->next)
            if ((*slot = prune(c, false, depth + 1)) != nullptr)
                slot = &(*slot)->next;
    } catch (...) {
        if (kids != nullptr)
            freedatatree(kids);
        throw;
    }
    if (kids == nullptr && tp->data == nullptr && !keep)
        return nullptr;
    datatree_t *cp = copynode(tp);
    cp->child = kids;
    return cp;
}

// ---- JSON ----------------------------------------------------------------

bool ispair(const datatree_t *tp)
{
    return tp->data != nullptr && tp->loopcnt == 0 && tp->child == nullptr;
}

// A node with only a name and a value is the pair ["NAME","VALUE"], any
// other an object.  Pairs stay on the line of what comes before them; in
// the layout of several lines each object child starts a line of its own,
// one blank deeper per level.
void putnode(std::string &out, const datatree_t *tp, bool oneline, int depth)
{
    if (depth > kMaxDepth)
        throw std::runtime_error("tree deeper than 10000 levels");
    jsonenvelope(tp);
    const std::string name = jsonquote(tp->xmltag != nullptr ? tp->xmltag : "");
    if (ispair(tp)) {
        out += '[' + name + ',' + jsonquote(tp->data) + ']';
        return;
    }
    out += "{\"name\":" + name;
    if (tp->data != nullptr)
        out += ",\"data\":" + jsonquote(tp->data);
    if (tp->loopcnt != 0)
        out += ",\"loopcnt\":" + std::to_string(tp->loopcnt);
    if (tp->child != nullptr) {
        out += ",\"children\":[";
        for (const datatree_t *c = tp->child; c != nullptr; c = c->next) {
            if (c != tp->child)
                out += ',';
            if (!oneline && !ispair(c)) {
                out += '\n';
                out.append(static_cast<size_t>(depth) + 2, ' ');
            }
            putnode(out, c, oneline, depth + 1);
        }
        out += ']';
    }
    out += '}';
}

}  // namespace

datatree_t *compactcopy(const datatree_t *tree)
{
    datatree_t *roots = nullptr, **slot = &roots;
    try {
        for (const datatree_t *tp = tree; tp != nullptr; tp = tp->next) {
            *slot = prune(tp, true, 0);
            slot = &(*slot)->next;
        }
    } catch (...) {
        if (roots != nullptr)
            freedatatree(roots);
        throw;
    }
    for (datatree_t *tp = roots; tp != nullptr; tp = tp->next)
        setparents(tp, 0);
    return roots;
}

void compactnodes(std::string &out, const datatree_t *tree, bool oneline)
{
    if (tree == nullptr) {
        out += "null";
        return;
    }
    if (tree->next == nullptr) {
        putnode(out, tree, oneline, 0);
        return;
    }
    out += '[';
    for (const datatree_t *tp = tree; tp != nullptr; tp = tp->next) {
        if (tp != tree)
            out += ',';
        if (!oneline)
            out += "\n ";
        putnode(out, tp, oneline, 0);
    }
    out += ']';
}

std::string compactjson(const datatree_t *tree, const char *key, const JsonMeta &meta,
                        bool oneline)
{
    JsonDecoding latin1(Charset::iso8859_1);  // until an envelope names its set
    const char *colon = oneline ? ":" : ": ";
    const std::string sep = oneline ? "," : ",\n ";
    std::string out = oneline ? "{" : "{\n ";
    out += std::string("\"format\"") + colon + "\"ediprot-tree\"" + sep;
    out += std::string("\"version\"") + colon + "1" + sep;
    out += std::string("\"form\"") + colon + "\"compact\"" + sep;
    if (key != nullptr)
        out += std::string("\"key\"") + colon + jsonquote(key) + sep;
    for (const auto &[name, texts] : meta) {
        out += jsonquote(name.c_str()) + colon + "[";
        for (size_t i = 0; i < texts.size(); i++)
            out += (i > 0 ? "," : "") + jsonquote(texts[i].c_str());
        out += "]" + sep;
    }
    out += std::string("\"tree\"") + colon;
    datatree_t *copy = compactcopy(tree);
    try {
        compactnodes(out, copy, oneline);
    } catch (...) {
        if (copy != nullptr)
            freedatatree(copy);
        throw;
    }
    if (copy != nullptr)
        freedatatree(copy);
    out += oneline ? "}\n" : "\n}\n";
    return out;
}

}  // namespace edi
