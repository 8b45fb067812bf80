#include "trees/valueloss.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "trees/samename.h"

namespace edi {

namespace {

// The writer's service characters (its UNA is always :+.? ').
bool servicechar(char c)
{
    return c == '\'' || c == '+' || c == ':' || c == '?';
}

// The configuration child of `parent` named `name`, the first if several
// are: the writer finds a value through the names from the message node
// down.  A short list of children is searched in place; a long one is
// indexed on first use.
class Children {
public:
    const datatree_t *find(const datatree_t *parent, const char *name)
    {
        int seen = 0;
        for (const datatree_t *c = parent->child; c != nullptr; c = c->next) {
            if (++seen > kShort)
                return indexed(parent, name);
            if (c->xmltag != nullptr && samename(c->xmltag, name))
                return c;
        }
        return nullptr;
    }

private:
    static constexpr int kShort = 16;
    using Index = std::unordered_map<std::string_view, const datatree_t *>;

    const datatree_t *indexed(const datatree_t *parent, const char *name)
    {
        auto [at, fresh] = byparent_.try_emplace(parent);
        Index &index = at->second;
        if (fresh)
            for (const datatree_t *c = parent->child; c != nullptr; c = c->next)
                if (c->xmltag != nullptr)
                    index.emplace(c->xmltag, c);
        auto found = index.find(name);
        return found != index.end() ? found->second : nullptr;
    }

    std::unordered_map<const datatree_t *, Index> byparent_;
};

// The module's longest converted value (kTextMax - 1, convert/edinodeconvert.cpp).
constexpr size_t kResultMax = 8191;

}  // namespace

std::string valuechange(const char *value, const datatree_t *cf, const char *charset, bool &cut,
                        Above127 above)
{
    cut = false;
    size_t length = 0;
    std::string blanked;
    bool dropped = false;
    for (const char *p = value; *p != '\0'; p++) {
        unsigned char c = static_cast<unsigned char>(*p);
        if (c & 0x80) {
            if (above == Above127::dropped)
                dropped = true;
            else if (above == Above127::kept || (c & 0xC0) != 0x80)
                length++;  // a character (UTF-8: its first byte)
            continue;
        }
        length += servicechar(static_cast<char>(c)) ? 2 : 1;
        if (charset != nullptr && charset[c] != static_cast<char>(c) &&
            blanked.find(static_cast<char>(c)) == std::string::npos)
            blanked += static_cast<char>(c);
    }
    std::string why;
    bool text = cf->editype == et_none || cf->editype == et_string || cf->editype == et_time;
    int given = cf->edimaxlen > 0 ? cf->edimaxlen : cf->edilen;
    size_t limit = given > 0 ? std::min(static_cast<size_t>(given), kResultMax) : 0;
    if (text && limit > 0 && length > limit) {
        why = std::to_string(length) + " characters (release characters counted) cut to " +
              std::to_string(limit);
        cut = true;
    } else if (text && limit == 0 && length > 0) {
        why = "written as nothing: the configuration gives the element no length "
              "(edimaxlen or edilen)";
        cut = true;
    }
    if (!blanked.empty()) {
        std::string shown;
        for (char c : blanked) {
            char buf[8];
            snprintf(buf, sizeof buf, c >= 0x20 && c < 0x7f ? "%c" : "\\x%02x", c);
            shown += buf;
        }
        why += (why.empty() ? "'" : "; '") + shown + "' written as blank";
    }
    if (dropped)
        why += (why.empty() ? "" : "; ") + std::string("bytes above 127 left out");
    return why;
}

namespace {

// A tag node: marked so by a read, or by its name, as the writer knows it
// (a tree written by hand carries no marks).
bool istag(const datatree_t *tp)
{
    return tp->iseditag != 0 || (tp->xmltag != nullptr && tp->xmltag[0] == '$');
}

// One message's walk.  The values among a node's children are looked at
// before anything below them, then the children are walked in order.
struct Walk {
    Children &children;
    const char *charset;
    Above127 above;
    std::string message;  // "message N, "
    std::vector<ValueChange> &lines;
    // The names from the first tag node down to the node walked.
    std::vector<const char *> names;
    std::vector<const datatree_t *> confs;  // per child of the node walked, stacked

    void node(const datatree_t *dp, const datatree_t *conf)
    {
        const size_t base = confs.size();
        for (const datatree_t *c = dp->child; c != nullptr; c = c->next) {
            const datatree_t *cf = c->xmltag != nullptr ? children.find(conf, c->xmltag) : nullptr;
            confs.push_back(cf);  // NULL: the writer never reaches it
            if (cf == nullptr || c->data == nullptr || c->data[0] == '\0' || c->child != nullptr)
                continue;
            bool cut = false;
            std::string why = valuechange(c->data, cf, charset, cut, above);
            if (!why.empty())
                lines.push_back(ValueChange{message + where(c) + ": " + why, cut});
        }
        size_t i = base;
        for (const datatree_t *c = dp->child; c != nullptr; c = c->next, i++) {
            if (confs[i] == nullptr)
                continue;
            const bool named = !names.empty() || istag(c);
            if (named)
                names.push_back(c->xmltag);
            node(c, confs[i]);
            if (named)
                names.pop_back();
        }
        confs.resize(base);
    }

    // "$TAG.COMPOSITE.ELEMENT"; a value outside any tag is named by nothing.
    std::string where(const datatree_t *c) const
    {
        if (names.empty() && !istag(c))
            return "";
        std::string w;
        for (const char *n : names)
            w += std::string(n) + ".";
        return w + c->xmltag;
    }
};

}  // namespace

std::vector<ValueChange> valueloss(const datatree_t *first, const datatree_t *last, int number,
                                   const datatree_t *config, const char *charset, Above127 above)
{
    Children children;
    std::vector<ValueChange> lines;
    Walk walk{children, charset, above, "", lines, {}, {}};
    for (const datatree_t *m = first; m != nullptr; m = m->next, number++) {
        const datatree_t *mconf = m->xmltag != nullptr ? children.find(config, m->xmltag) : nullptr;
        if (mconf != nullptr) {
            walk.message = "message " + std::to_string(number) + ", ";
            walk.node(m, mconf);
        }
        if (m == last)
            break;
    }
    return lines;
}

}  // namespace edi
