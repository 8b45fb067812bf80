#include "renumber.h"

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

// For each configuration node in order, every data sibling of the same name
// in order; a loop takes the next number per occurrence and one more for
// the writer's try that finds none.  Tag nodes' children are no loops.
// The data siblings are grouped by name first, so that a long chain (many
// occurrences, or a configuration of many siblings) is not searched once
// per configuration node.
void number(const datatree_t *conf, datatree_t *data)
{
    std::unordered_map<std::string_view, std::vector<datatree_t *>> byname;
    for (datatree_t *dp = data; dp != nullptr; dp = dp->next)
        if (dp->xmltag != nullptr)
            byname[dp->xmltag].push_back(dp);
    // Where two configuration siblings share a name, each data node goes
    // to the one whose contents it fits.
    std::unordered_map<std::string_view, int> namesakes;
    for (const datatree_t *cp = conf; cp != nullptr; cp = cp->next)
        if (cp->xmltag != nullptr)
            namesakes[cp->xmltag]++;
    int i = 0;
    for (const datatree_t *cp = conf; cp != nullptr; cp = cp->next) {
        if (cp->xmltag == nullptr)
            continue;
        bool isloop = cp->xmltag[0] == '*', istag = cp->xmltag[0] == '$';
        auto found = byname.find(cp->xmltag);
        if (found != byname.end()) {
            const bool shared = namesakes[cp->xmltag] > 1;
            for (datatree_t *dp : found->second) {
                if (isloop && shared && owner(conf, dp) != cp)
                    continue;
                // An occurrence without any value is left out, as the
                // reader prunes it: 0 is a number the writer never looks for.
                if (isloop && !holdsdata(dp)) {
                    dp->loopcnt = 0;
                    continue;
                }
                if (isloop)
                    dp->loopcnt = ++i;
                if (!istag && cp->child != nullptr)
                    number(cp->child, dp->child);
            }
        }
        if (isloop)
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
