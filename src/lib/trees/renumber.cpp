#include "trees/renumber.h"

#include <string.h>

#include <string_view>
#include <unordered_map>
#include <vector>

namespace edi {

namespace {

bool holdsdata(const datatree_t *tp)
{
    for (const datatree_t *c = tp->child; c != nullptr; c = c->next)
        if (c->data != nullptr || holdsdata(c))
            return true;
    return false;
}

// True if the data node `dp` can be an occurrence of the configuration
// node `cp`: the names of its children, each run of one name taken once,
// come in the order of `cp`'s children.
bool fits(const datatree_t *dp, const datatree_t *cp)
{
    const datatree_t *c = cp->child;
    const char *last = nullptr;
    for (const datatree_t *d = dp->child; d != nullptr; d = d->next) {
        if (d->xmltag == nullptr || (last != nullptr && strcmp(last, d->xmltag) == 0))
            continue;
        last = d->xmltag;
        while (c != nullptr && (c->xmltag == nullptr || strcmp(c->xmltag, d->xmltag) != 0))
            c = c->next;
        if (c == nullptr)
            return false;
        c = c->next;
    }
    return true;
}

// The configuration sibling that owns the data node `dp` among the loops
// named like it, from `first` on: the first whose contents it fits (two
// sibling loops of one name are told apart by what they hold), else the
// first of them.
const datatree_t *owner(const datatree_t *first, const datatree_t *dp)
{
    const datatree_t *any = nullptr;
    for (const datatree_t *cp = first; cp != nullptr; cp = cp->next) {
        if (cp->xmltag == nullptr || strcmp(cp->xmltag, dp->xmltag) != 0)
            continue;
        if (any == nullptr)
            any = cp;
        if (fits(dp, cp))
            return cp;
    }
    return any;
}

void number(const datatree_t *conf, datatree_t *data);

// Numbers the data node `dp` as an occurrence of the configuration node
// `cp`, and what is below it.  `shared`: a sibling of `cp` bears its name.
void occurrence(const datatree_t *conf, const datatree_t *cp, datatree_t *dp, bool shared,
                int &i)
{
    bool isloop = cp->xmltag[0] == '*', istag = cp->xmltag[0] == '$';
    if (isloop && shared && owner(conf, dp) != cp)
        return;
    // An occurrence without any value is left out, as the reader prunes
    // it: 0 is a number the writer never looks for.
    if (isloop && !holdsdata(dp)) {
        dp->loopcnt = 0;
        return;
    }
    if (isloop)
        dp->loopcnt = ++i;
    if (!istag && cp->child != nullptr)
        number(cp->child, dp->child);
}

// Chains at most this long are matched name by name; longer ones through
// an index, so that a long chain (many occurrences, or a configuration of
// many siblings) is not searched once per configuration node.
constexpr size_t kShort = 64;

size_t length(const datatree_t *tp, size_t limit)
{
    size_t n = 0;
    for (; tp != nullptr && n <= limit; tp = tp->next)
        n++;
    return n;
}

bool namesake(const datatree_t *conf, const datatree_t *cp)
{
    for (const datatree_t *other = conf; other != nullptr; other = other->next)
        if (other != cp && other->xmltag != nullptr && strcmp(other->xmltag, cp->xmltag) == 0)
            return true;
    return false;
}

// For each configuration node in order, every data sibling of the same name
// in order; a loop takes the next number per occurrence and one more for
// the writer's try that finds none.  Tag nodes' children are no loops.
void number(const datatree_t *conf, datatree_t *data)
{
    int i = 0;
    if (length(conf, kShort) * length(data, kShort) <= kShort * kShort / 4) {
        for (const datatree_t *cp = conf; cp != nullptr; cp = cp->next) {
            if (cp->xmltag == nullptr)
                continue;
            const bool shared = cp->xmltag[0] == '*' && namesake(conf, cp);
            for (datatree_t *dp = data; dp != nullptr; dp = dp->next)
                if (dp->xmltag != nullptr && strcmp(dp->xmltag, cp->xmltag) == 0)
                    occurrence(conf, cp, dp, shared, i);
            if (cp->xmltag[0] == '*')
                ++i;
        }
        return;
    }
    std::unordered_map<std::string_view, std::vector<datatree_t *>> byname;
    for (datatree_t *dp = data; dp != nullptr; dp = dp->next)
        if (dp->xmltag != nullptr)
            byname[dp->xmltag].push_back(dp);
    std::unordered_map<std::string_view, int> namesakes;
    for (const datatree_t *cp = conf; cp != nullptr; cp = cp->next)
        if (cp->xmltag != nullptr)
            namesakes[cp->xmltag]++;
    for (const datatree_t *cp = conf; cp != nullptr; cp = cp->next) {
        if (cp->xmltag == nullptr)
            continue;
        auto found = byname.find(cp->xmltag);
        if (found != byname.end())
            for (datatree_t *dp : found->second)
                occurrence(conf, cp, dp, namesakes[cp->xmltag] > 1, i);
        if (cp->xmltag[0] == '*')
            ++i;
    }
}

}  // namespace

void renumbertree(const datatree_t *config, datatree_t *tree)
{
    number(config->child, tree->child);
}

void renumbermessage(const datatree_t *config, datatree_t *message)
{
    for (const datatree_t *cm = config->child; cm != nullptr; cm = cm->next)
        if (cm->xmltag != nullptr && message->xmltag != nullptr &&
            strcmp(cm->xmltag, message->xmltag) == 0) {
            number(cm->child, message->child);
            return;
        }
}

}  // namespace edi
